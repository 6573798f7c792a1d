#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <kernel/SharedClassProperties.h>
#include <kernel/SharedSerialisable.h>

using Kernel::Consolidated;
using Kernel::Counted;

namespace {

/// A value whose hash is poor on purpose, so that unequal values meet in the table.
class Number : public Kernel::SharedSerialisable
{
public:
    static const Kernel::SharedClassProperties& GetProperties()
    {
        static const auto& properties = *new Kernel::SharedClassProperties;
        return properties;
    }
    static Consolidated<Number> Create(int value)
    {
        return Kernel::SharedClassProperties::ConsolidateObjectSacrifice(
            Counted<Number>(new Number(value)));
    }

    void AccumulateHash(Kernel::HashAccumulator& hash) const override { hash.Add(m_value % 2); }
    const Kernel::SharedClassProperties& GetObjectSharedClassProperties() const override
    {
        return GetProperties();
    }

    explicit Number(int value) : m_value(value) {}
    int GetValue() const { return m_value; }

protected:
    bool CompareMembers(const SharedSerialisable& other) const override
    {
        return m_value == dynamic_cast<const Number&>(other).m_value;
    }

private:
    int m_value;
};

/// Another class with the same hash and members.
class OtherNumber : public Number
{
public:
    using Number::Number;
    const Kernel::SharedClassProperties& GetObjectSharedClassProperties() const override
    {
        static const auto& properties = *new Kernel::SharedClassProperties;
        return properties;
    }
};

TEST(Consolidation, OneObjectPerValueAndClass)
{
    const Consolidated<Number> two = Number::Create(2);
    EXPECT_EQ(two, Number::Create(2));
    EXPECT_TRUE(two->IsConsolidated());

    const Consolidated<Number> four = Number::Create(4); // same hash
    EXPECT_NE(two.Get(), four.Get());
    EXPECT_EQ(four->GetValue(), 4);

    const auto other = Kernel::SharedClassProperties::ConsolidateObjectSacrifice(
        Counted<Number>(new OtherNumber(2)));
    EXPECT_NE(two, other);
    EXPECT_FALSE(two->Equals(*other));
}

TEST(Consolidation, CopyOfCanonicalObjectIsAFreshValue)
{
    const Consolidated<Number> six = Number::Create(6);
    Counted<Number> copy(new Number(*six));
    EXPECT_FALSE(copy->IsConsolidated());
    EXPECT_TRUE(copy->Equals(*six));
    copy.Reset(); // must leave the entry of the original alone
    EXPECT_EQ(six, Number::Create(6));
    for (int value = 8; value < 30; value += 2) // and so must others of its hash
        Number::Create(value);
    EXPECT_EQ(six, Number::Create(6));
}

TEST(Consolidation, TableForgetsReleasedValues)
{
    const std::size_t before = Number::GetProperties().GetInstanceCount();
    {
        const Consolidated<Number> a = Number::Create(1001);
        const Consolidated<Number> b = Number::Create(1002);
        EXPECT_EQ(Number::GetProperties().GetInstanceCount(), before + 2);
    }
    EXPECT_EQ(Number::GetProperties().GetInstanceCount(), before);
}

TEST(Consolidation, ManyThreadsMakeAndDropTheSameValues)
{
    constexpr int Threads = 4;
    constexpr int Rounds = 3000;
    std::atomic<int> wrong{0};
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < Threads; ++t) {
            threads.emplace_back([&wrong] {
                for (int i = 0; i < Rounds; ++i) {
                    const int value = 2000 + i % 5;
                    const Consolidated<Number> a = Number::Create(value);
                    const Consolidated<Number> b = Number::Create(value); // while a lives: the same
                    if (a != b || a->GetValue() != value)
                        ++wrong;
                }
            });
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Number::GetProperties().GetInstanceCount(), 0U);
}

} // namespace
