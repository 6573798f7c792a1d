// renderer_benchmarks: the library beside other rasterisers. Takes the options of Google Benchmark;
// --check draws everything once and compares the pictures instead; --draw NAME COUNT draws one
// benchmark again and again without measuring, for profilers.

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include <benchmark/benchmark.h>

#include <kernel/Dispatch.h>

#include "Cases.h"
#include "Check.h"
#include "FormatCases.h"
#include "LineCases.h"
#include "Peer.h"
#include "SavedCases.h"
#include "TextCases.h"

namespace {

using namespace Benchmarks;

void Measure(benchmark::State& state, const Case& item, const PeerEntry& entry)
{
    const Scene scene = item.makeScene();
    if (scene.IsEmpty())
        return state.SkipWithError("nothing is drawn");
    const auto peer = entry.make(scene);
    peer->Draw();
    for (auto _ : state)
        peer->Draw();
    if (item.shapes > 0.0)
        state.counters["shapes"] =
            benchmark::Counter(item.shapes, benchmark::Counter::kIsIterationInvariantRate);
    else
        state.counters["left_out"] = scene.leftOut;
}

std::vector<Case> MakeCases()
{
    std::vector<Case> cases = MakeShapeCases();
    const auto add = [&](const char* folder) {
        for (Case& item : MakeDrawingCases(folder))
            if (std::none_of(cases.begin(), cases.end(),
                             [&](const Case& other) { return other.name == item.name; }))
                cases.push_back(std::move(item));
    };
    add(BENCHMARKS_DRAWINGS);
    if (const char* folder = std::getenv("RENDERER_BENCHMARK_DRAWINGS"))
        add(folder);
    return cases;
}

/// Draws a page that the library alone can draw. \return whether there is one of that name.
template<class Page, class Item>
bool DrawPage(const std::vector<Item>& items, std::string_view name, int count)
{
    for (const Item& item : items) {
        if (name != item.name + "/renderer")
            continue;
        Page page(item);
        for (int i = 0; i < count; ++i)
            page.Draw();
        return true;
    }
    return false;
}

/// \return whether there is a benchmark of that name.
bool DrawOnly(const std::vector<Case>& cases, std::string_view name, int count)
{
    for (const Case& item : cases) {
        for (const PeerEntry& entry : Peers) {
            if (name != item.name + '/' + entry.name)
                continue;
            const Scene scene = item.makeScene();
            const auto peer = entry.make(scene);
            for (int i = 0; i < count; ++i)
                peer->Draw();
            return true;
        }
    }
    return DrawPage<FormatPage>(MakeFormatCases(), name, count) ||
           DrawPage<LinePage>(MakeLineCases(), name, count);
}

/// The library alone: other rasterisers have neither these formats nor modes.
void RegisterFormats()
{
    for (const FormatCase& item : MakeFormatCases())
        benchmark::RegisterBenchmark((item.name + "/renderer").c_str(), [item](benchmark::State&
                                                                                   state) {
            FormatPage page(item);
            page.Draw();
            for (auto _ : state)
                page.Draw();
            state.counters["pixels_per_ns"] = benchmark::Counter(
                FormatPage::Pixels * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
        })->Unit(benchmark::kMicrosecond);
}

void RegisterLines()
{
    for (const LineCase& item : MakeLineCases())
        benchmark::RegisterBenchmark((item.name + "/renderer").c_str(),
                                     [item](benchmark::State& state) {
                                         LinePage page(item);
                                         page.Draw();
                                         for (auto _ : state)
                                             page.Draw();
                                     })
            ->Unit(benchmark::kMicrosecond);
}

void Register(const std::vector<Case>& cases)
{
    for (const Case& item : cases)
        for (const PeerEntry& entry : Peers)
            if (item.inCairo || entry.name != std::string_view("cairo"))
                benchmark::RegisterBenchmark(
                    (item.name + '/' + entry.name).c_str(),
                    [&item, &entry](benchmark::State& state) { Measure(state, item, entry); })
                    ->Unit(benchmark::kMicrosecond);
}

} // namespace

int main(int argc, char** argv)
{
    Kernel::Dispatch::SetThreadLimit(1); // like the others
    const std::vector<Case> cases = MakeCases();
    if (argc == 2 && argv[1] == std::string_view("--check"))
        return CheckPeers(cases) ? 0 : 1;
    if (argc == 4 && argv[1] == std::string_view("--draw"))
        return DrawOnly(cases, argv[2], std::atoi(argv[3])) ? 0 : 1;
    Register(cases);
    RegisterFormats();
    RegisterLines();
    RegisterSaved();
    RegisterText();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
