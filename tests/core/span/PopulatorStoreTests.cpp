#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <renderer/core/span/PopulatorStore.h>

namespace Renderer {

namespace {

struct Witness
{
    Witness(std::vector<int>& log, int name) : log(log), name(name)
    {
        if (name < 0)
            throw std::runtime_error("refused");
    }
    ~Witness() { log.push_back(name); }
    std::vector<int>& log;
    int name;
};

TEST(PopulatorStore, DestroysWhatItMadeTheLatestFirst)
{
    std::vector<int> log;
    {
        PopulatorStore store;
        store.Emplace<Witness>(log, 1);
        EXPECT_THROW(store.Emplace<Witness>(log, -1), std::runtime_error);
        store.Emplace<Witness>(log, 2);
        store.Reset();
        EXPECT_EQ(log, (std::vector<int>{2, 1}));
        store.Emplace<Witness>(log, 3);
    }
    EXPECT_EQ(log, (std::vector<int>{2, 1, 3}));
}

TEST(PopulatorStore, KeepsItsMemoryAndAlignsObjects)
{
    struct alignas(64) Wide
    {
        int value;
    };
    PopulatorStore store;
    std::size_t capacity = 0;
    for (int call = 0; call < 3; ++call) {
        std::vector<const Wide*> wides;
        for (int i = 0; i < 200; ++i) {
            store.Emplace<char>('x');
            wides.push_back(&store.Emplace<Wide>(i));
            store.AllocateArray<double>(i == 100 ? 20000 : 100)[0] = 1.0;
        }
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ(wides[std::size_t(i)]->value, i); // nothing overlaps, nothing moves
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wides[std::size_t(i)]) % 64, 0U);
        }
        if (call > 0) {
            EXPECT_EQ(store.GetCapacity(), capacity);
        }
        capacity = store.GetCapacity();
        store.Reset();
    }
}

} // namespace

} // namespace Renderer
