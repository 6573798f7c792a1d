#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/Countable.h>
#include <kernel/Counted.h>
#include <kernel/CriticalSectionSpin.h>

using Kernel::Counted;

namespace {

struct Base : virtual Kernel::Countable
{
    explicit Base(int& alive) : m_alive(&alive) { ++*m_alive; }
    Base(const Base& other) : Countable(other), m_alive(other.m_alive) { ++*m_alive; }
    Base& operator=(const Base&) = default;
    ~Base() override { --*m_alive; }
    int* m_alive;
};

struct Derived : Base
{
    using Base::Base;
};

static_assert(std::is_convertible_v<Counted<Derived>, Counted<Base>>);
static_assert(std::is_convertible_v<Counted<Derived>, Counted<const Base>>);
static_assert(!std::is_convertible_v<Counted<Base>, Counted<Derived>>);
static_assert(!std::is_convertible_v<Counted<const Base>, Counted<Base>>);

TEST(Counted, LastReferenceDeletes)
{
    int alive = 0;
    Counted<Derived> first(new Derived(alive));
    {
        const Counted<const Base> second = first; // base and const at once
        EXPECT_EQ(first->GetReferenceCount(), 2U);
        first.Reset();
        EXPECT_EQ(alive, 1);
        EXPECT_EQ(second->GetReferenceCount(), 1U);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Counted, AssignmentAndMoveKeepTheCountRight)
{
    int alive = 0;
    Counted<Base> a(new Base(alive));
    Counted<Base> b(new Base(alive));
    a = b;
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(b->GetReferenceCount(), 2U);
    a = *&a; // to itself
    EXPECT_EQ(b->GetReferenceCount(), 2U);
    b = std::move(a);
    EXPECT_EQ(b->GetReferenceCount(), 1U);
    EXPECT_FALSE(a); // NOLINT: a moved-from reference is empty
    Counted<const Base> c = Counted<Derived>(new Derived(alive));
    EXPECT_EQ(c->GetReferenceCount(), 1U);
    c = nullptr;
    EXPECT_EQ(alive, 1);
}

TEST(Counted, CopyOfAnObjectHasItsOwnCount)
{
    int alive = 0;
    const Counted<Base> original(new Base(alive));
    const Counted<Base> copy(new Base(*original));
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    *copy = *original;
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    EXPECT_EQ(original->GetReferenceCount(), 1U);
}

TEST(Counted, TryRetainFailsOnceTheCountIsZero)
{
    int alive = 0;
    const auto object = std::make_unique<Base>(alive);
    EXPECT_FALSE(object->TryRetain());
    object->Retain();
    EXPECT_TRUE(object->TryRetain());
    EXPECT_EQ(object->GetReferenceCount(), 2U);
    Counted<Base>::Adopt(object.get()).Detach(); // neither adds nor drops one
    EXPECT_EQ(object->GetReferenceCount(), 2U);
}

TEST(CriticalSectionSpin, ProtectsAgainstManyThreads)
{
    Kernel::CriticalSectionSpin lock;
    int value = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int k = 0; k < 20000; ++k) {
                    const std::lock_guard guard(lock);
                    ++value;
                }
            });
        }
    }
    EXPECT_EQ(value, 80000);
    EXPECT_TRUE(lock.try_lock());
    EXPECT_FALSE(lock.try_lock());
    lock.unlock();
}

} // namespace
