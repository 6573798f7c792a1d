#include "SavedCases.h"

#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <kernel/MemoryOutStream.h>
#include <kernel/SerialiseFile.h>

#include <kernel/saved/SavedSamples.h>

namespace Benchmarks {
namespace {

constexpr int Objects = 50'000;
constexpr int ItemsPerObject = 6;

Kernel::Consolidated<Samples::Cloud> MakeCloud()
{
    std::vector<Kernel::Consolidated<Samples::Point>> points;
    for (int i = 0; i < Objects; ++i)
        points.push_back(Samples::Point::Create(i, 0.5 * i, -i));
    return Samples::Cloud::Create(std::move(points));
}

std::vector<unsigned char> Save(const Kernel::Consolidated<Samples::Cloud>& cloud)
{
    Kernel::MemoryOutStream out;
    Kernel::SerialiseToStream(out, cloud);
    return out.TakeData();
}

void Count(benchmark::State& state)
{
    using benchmark::Counter;
    state.counters["objects"] = Counter(Objects, Counter::kIsIterationInvariantRate);
    state.counters["items"] = Counter(Objects * ItemsPerObject, Counter::kIsIterationInvariantRate);
}

void Write(benchmark::State& state)
{
    const auto cloud = MakeCloud();
    for (auto _ : state)
        benchmark::DoNotOptimize(Save(cloud));
    Count(state);
}

/// Every object is new; releasing them is not measured.
void Read(benchmark::State& state)
{
    const Kernel::InSerialiserFile file(Save(MakeCloud()));
    for (auto _ : state) {
        auto cloud = file.ParseWithChecks<Samples::Cloud>();
        state.PauseTiming();
        cloud = nullptr;
        state.ResumeTiming();
    }
    Count(state);
}

} // namespace

void RegisterSaved()
{
    benchmark::RegisterBenchmark("Saved/write", Write)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Saved/read", Read)->Unit(benchmark::kMillisecond);
}

} // namespace Benchmarks
