// The cost of a forwarder after its first use, against a direct call through
// a plain function pointer to the same host function. Both loops run inside
// the plug-in's test image, where the forwarder is called as the plug-in's
// own code calls it.
#include "hostsim/plugin.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// The host function: this program plays the host application, whose own
// symbols serve when no engine bundle is loaded.
extern "C" __attribute__((visibility("default"), noinline)) int16_t
FX_GetWindowCount(uint32_t ver) {
    benchmark::ClobberMemory();
    return static_cast<int16_t>(ver & 7);
}

namespace {

using CountFn = int16_t (*)(uint32_t);
using ForwarderLoop = int64_t (*)(int64_t);
using PointerLoop = int64_t (*)(CountFn, int64_t);
constexpr int64_t kBatch = 1000;

struct Bound {
    hostsim::Plugin plugin{CAPOCHORDS_PROBE_BUNDLE, true};
    ForwarderLoop forwarderLoop = nullptr;
    PointerLoop pointerLoop = nullptr;
    Bound() {
        auto m = plugin.function<int (*)(int, char**)>("main");
        forwarderLoop = plugin.function<ForwarderLoop>("capochords_probe_forwarder_loop");
        pointerLoop = plugin.function<PointerLoop>("capochords_probe_pointer_loop");
        char arg0[] = "bench";
        char* argv[] = {arg0, nullptr};
        if (!m || !forwarderLoop || !pointerLoop || m(1, argv) != 1) {
            std::fprintf(stderr, "cannot bind the test image: %s\n", plugin.error().c_str());
            std::exit(1);
        }
        forwarderLoop(1);  // first use: binds
    }
};

Bound& bound() {
    static Bound b;
    return b;
}

void BM_DirectCall(benchmark::State& state) {
    PointerLoop loop = bound().pointerLoop;
    for (auto _ : state) benchmark::DoNotOptimize(loop(&FX_GetWindowCount, kBatch));
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_DirectCall);

void BM_ForwarderCall(benchmark::State& state) {
    ForwarderLoop loop = bound().forwarderLoop;
    for (auto _ : state) benchmark::DoNotOptimize(loop(kBatch));
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_ForwarderCall);

}  // namespace

BENCHMARK_MAIN();
