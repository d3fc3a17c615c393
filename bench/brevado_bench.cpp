// The capo chord run over a large simulated score (30 staves, 500 measures,
// 4 chord symbols in every staff-measure), inside a fresh copy of the
// plug-in's test image bound to the simulated host with its call log off.
//
// Counters: chords per second; host calls per chord, counted by the host,
// against the count the walk implies; and, for the first run, the host's
// time measured apart: the very same sequence of host calls, captured once,
// replayed straight into the engine without the plug-in (BM_HostReplay).
// The plug-in's share is 1 - replay time / run time.
#include "hostsim/document.h"
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

namespace doc = hostsim::doc;
namespace score = hostsim::score;
using hostsim::Fx;

constexpr int kStaves = 30;
constexpr int kMeasures = 500;
constexpr int kChordsPerStaffMeasure = 4;
constexpr int64_t kStaffMeasures = int64_t{kStaves} * kMeasures;
constexpr int64_t kChords = kStaffMeasures * kChordsPerStaffMeasure;
constexpr uint32_t kVersion = 0x19500000u;

using BrevadoFn = short (*)(void*, short, short, short, unsigned short*, short, short, short*);

// Host calls of one staff-measure with n chords, as the walk makes them.
// First run, n ordinary chords: instrument, progress, measure record, n + 1
// chord loads of the walk, n sibling searches of n + 1 loads, n appends.
constexpr int64_t firstRunCalls(int64_t n) { return 3 + (n + 1) + n * (n + 1) + n; }
// A later run over n chords and their n capo chords: the walk loads 2n + 1,
// each of the 2n records searches 2n + 1, and the n capo chords are saved.
constexpr int64_t rerunCalls(int64_t n) { return 3 + (2 * n + 1) + 2 * n * (2 * n + 1) + n; }
// Removal over n chords and their n capo chords: the walk loads 2n records
// and a last failing load, as after each delete the index is read again;
// after each delete one measure text load (no label blocks) and the final
// label search one more.
constexpr int64_t removalCalls(int64_t n) { return 3 + (2 * n + 1) + n + n + 1; }

struct Setup {
    hostsim::Plugin plugin{CAPOCHORDS_PROBE_BUNDLE, true};
    BrevadoFn brevado = nullptr;
    doc::Document ordinary;  // chord symbols only
    doc::Document withCapo;  // after one run
    score::Region region = score::region(1, 1, kStaves, kMeasures);
    std::u16string label = u"Capo 3";

    Setup() {
        setenv("LC_ALL", "C", 1);
        setenv("LANG", "en", 1);
        auto m = plugin.function<int (*)(int, char**)>("main");
        auto lookup = plugin.function<void* (*)(const char*)>("capochords_probe_symbol");
        char arg0[] = "bench";
        char* argv[] = {arg0, nullptr};
        if (!m || !lookup || m(1, argv) != 1 ||
            !(brevado = reinterpret_cast<BrevadoFn>(lookup("Brevado")))) {
            std::fprintf(stderr, "cannot bind the test image: %s\n", plugin.error().c_str());
            std::exit(1);
        }
        hostsim::reset();
        score::Score s(kStaves, kMeasures);
        for (int16_t m1 = 1; m1 <= kMeasures; ++m1)
            for (int16_t st = 1; st <= kStaves; ++st)
                for (int i = 0; i < kChordsPerStaffMeasure; ++i) {
                    score::ChordRecord c;
                    c.key3 = i * 240;
                    c.vertical = static_cast<int16_t>(st * 3 + i);
                    std::memset(c.host10, i, sizeof c.host10);
                    s.chord(st, m1, c);
                }
        ordinary = doc::snapshot();
        run(ordinary, false);
        withCapo = doc::snapshot();
    }

    // A run with the host as fresh as the document given; answers the host
    // calls it took.
    uint64_t run(const doc::Document& from, bool remove, benchmark::State* state = nullptr) {
        if (state) state->PauseTiming();
        hostsim::reset();
        hostsim::setLogging(false);
        doc::restore(from);
        if (state) state->ResumeTiming();
        short count = 0;
        const short r = brevado(&region, 3, 64, 1, reinterpret_cast<unsigned short*>(&label[0]), 0,
                                remove ? 1 : 0, &count);
        benchmark::DoNotOptimize(r);
        if (state) state->PauseTiming();
        uint64_t calls = 0;
        for (int f = 0; f < hostsim::kFxCount; ++f) calls += hostsim::count(static_cast<Fx>(f));
        doc::clearOps();
        if (state) state->ResumeTiming();
        return calls;
    }
};

Setup& setup() {
    static Setup s;
    return s;
}

void report(benchmark::State& state, uint64_t calls, int64_t expectedPerStaffMeasure, int64_t extra) {
    if (static_cast<int64_t>(calls) != kStaffMeasures * expectedPerStaffMeasure + extra)
        state.SkipWithError("host calls differ from the count the walk implies");
    state.SetItemsProcessed(state.iterations() * kChords);
    state.counters["chords"] = static_cast<double>(kChords);
    state.counters["host_calls"] = static_cast<double>(calls);
    state.counters["calls_per_chord"] = static_cast<double>(calls) / kChords;
    state.counters["expected_calls"] =
        static_cast<double>(kStaffMeasures * expectedPerStaffMeasure + extra);
}

// Label blocks on 30 staves: font name to number and definition 14, then per
// staff its instrument, one failing measure text load, and a creation (font
// name load, three creates, measure record load and save).
constexpr int64_t kLabelCalls = 2 + kStaves * (1 + 1 + 6);
// The progress display is opened and closed once.
constexpr int64_t kDisplayCalls = 2;

void BM_BrevadoFirstRun(benchmark::State& state) {
    Setup& s = setup();
    uint64_t calls = 0;
    for (auto _ : state) calls = s.run(s.ordinary, false, &state);
    report(state, calls, firstRunCalls(kChordsPerStaffMeasure), kDisplayCalls + kLabelCalls);
}
BENCHMARK(BM_BrevadoFirstRun)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BrevadoRerun(benchmark::State& state) {
    Setup& s = setup();
    uint64_t calls = 0;
    // The label blocks are found by position: one measure text load, then an
    // update (measure text load and save, text block load, font name load,
    // raw text save).
    for (auto _ : state) calls = s.run(s.withCapo, false, &state);
    report(state, calls, rerunCalls(kChordsPerStaffMeasure), kDisplayCalls + 2 + kStaves * (1 + 1 + 5));
}
BENCHMARK(BM_BrevadoRerun)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BrevadoRemoval(benchmark::State& state) {
    Setup& s = setup();
    uint64_t calls = 0;
    // In the first measure the label search finds the block (one load) and
    // removes it (two loads, three deletes) at the first capo chord met.
    for (auto _ : state) calls = s.run(s.withCapo, true, &state);
    report(state, calls, removalCalls(kChordsPerStaffMeasure), kDisplayCalls + kStaves * (1 + 5 - 1));
}
BENCHMARK(BM_BrevadoRemoval)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- The host alone ------------------------------------------------------

// One host call of a first run, enough to make it again: the numbers of the
// identifier and the size as the plug-in passed them.
struct HostCall {
    Fx fx;
    uint64_t a[5];
    doc::RecordId id;
    int32_t size;
};

using LoadFn = uint64_t (*)(int32_t, void*, void*, void*, uint32_t);
using SaveFn = uint64_t (*)(int32_t, void*, void*, int32_t, uint32_t);
using DeleteFn = uint64_t (*)(int32_t, void*, uint32_t);
using StartFn = uint64_t (*)(void*, int32_t, uint32_t);
using EndFn = uint64_t (*)(void*, int16_t, uint32_t);
using ProgressFn = uint64_t (*)(void*, int16_t, int16_t, int16_t, int16_t, uint32_t);
using SlotFn = uint64_t (*)(int16_t, uint16_t, uint32_t);
using NameFn = uint64_t (*)(void*, uint32_t);

std::vector<HostCall> captureFirstRun() {
    Setup& s = setup();
    hostsim::reset();
    doc::restore(s.ordinary);
    short count = 0;
    s.brevado(&s.region, 3, 64, 1, reinterpret_cast<unsigned short*>(&s.label[0]), 0, 0, &count);
    std::vector<HostCall> out;
    size_t op = 0;
    const auto& ops = doc::ops();
    for (const hostsim::Call& c : hostsim::calls()) {
        HostCall h{c.fx, {}, {}, 0};
        for (size_t i = 0; i < c.args.size() && i < 5; ++i) h.a[i] = c.args[i];
        if (c.fx == Fx::FX_LoadEData || c.fx == Fx::FX_SaveEData || c.fx == Fx::FX_CreateEData ||
            c.fx == Fx::FX_DeleteEData) {
            h.id = ops.at(op).id;
            h.size = ops.at(op).size;
            ++op;
        }
        out.push_back(h);
    }
    return out;
}

void replay(const std::vector<HostCall>& calls) {
    static const auto load = reinterpret_cast<LoadFn>(hostsim::implementation(Fx::FX_LoadEData));
    static const auto save = reinterpret_cast<SaveFn>(hostsim::implementation(Fx::FX_SaveEData));
    static const auto create = reinterpret_cast<SaveFn>(hostsim::implementation(Fx::FX_CreateEData));
    static const auto del = reinterpret_cast<DeleteFn>(hostsim::implementation(Fx::FX_DeleteEData));
    static const auto start = reinterpret_cast<StartFn>(hostsim::implementation(Fx::FX_StartMassEdit));
    static const auto end = reinterpret_cast<EndFn>(hostsim::implementation(Fx::FX_EndMassEdit));
    static const auto progress =
        reinterpret_cast<ProgressFn>(hostsim::implementation(Fx::FX_MassEditProgress));
    static const auto slot = reinterpret_cast<SlotFn>(hostsim::implementation(Fx::FX_SlotToInst));
    static const auto name = reinterpret_cast<NameFn>(hostsim::implementation(Fx::FX_FontNameToNum_UTF16));
    alignas(8) static uint8_t buffer[4096] = {};
    static std::u16string fontName = u"Times New Roman";
    void* handle = nullptr;
    for (const HostCall& c : calls) {
        int16_t id[3] = {c.id.first, c.id.second, c.id.third};
        int32_t size = c.size;
        switch (c.fx) {
        case Fx::FX_LoadEData:
            load(static_cast<int32_t>(c.a[0]), id, buffer, &size, kVersion);
            break;
        case Fx::FX_SaveEData:
            save(static_cast<int32_t>(c.a[0]), id, buffer, size, kVersion);
            break;
        case Fx::FX_CreateEData:
            create(static_cast<int32_t>(c.a[0]), id, buffer, size, kVersion);
            break;
        case Fx::FX_DeleteEData:
            del(static_cast<int32_t>(c.a[0]), id, kVersion);
            break;
        case Fx::FX_StartMassEdit:
            handle = reinterpret_cast<void*>(start(nullptr, static_cast<int32_t>(c.a[1]), kVersion));
            break;
        case Fx::FX_MassEditProgress:
            progress(handle, static_cast<int16_t>(c.a[1]), static_cast<int16_t>(c.a[2]),
                     static_cast<int16_t>(c.a[3]), static_cast<int16_t>(c.a[4]), kVersion);
            break;
        case Fx::FX_EndMassEdit:
            end(handle, static_cast<int16_t>(c.a[1]), kVersion);
            break;
        case Fx::FX_SlotToInst:
            slot(static_cast<int16_t>(c.a[0]), static_cast<uint16_t>(c.a[1]), kVersion);
            break;
        case Fx::FX_FontNameToNum_UTF16:
            name(&fontName[0], kVersion);
            break;
        default:
            std::fprintf(stderr, "no replay for %s\n", hostsim::info(c.fx).name);
            std::exit(1);
        }
    }
}

// The host alone: a first run's host calls replayed into the engine, timed.
// Each iteration also times a real first run over the same document, apart,
// so that both see the same machine: plugin_share = 1 - replay / run.
void BM_HostReplay(benchmark::State& state) {
    Setup& s = setup();
    static const std::vector<HostCall> calls = captureFirstRun();
    using Clock = std::chrono::steady_clock;
    Clock::duration replayed{}, ran{};
    for (auto _ : state) {
        state.PauseTiming();
        hostsim::reset();
        hostsim::setLogging(false);
        doc::restore(s.ordinary);
        state.ResumeTiming();
        auto t0 = Clock::now();
        replay(calls);
        replayed += Clock::now() - t0;
        state.PauseTiming();
        doc::clearOps();
        hostsim::reset();
        hostsim::setLogging(false);
        doc::restore(s.ordinary);
        short count = 0;
        t0 = Clock::now();
        s.brevado(&s.region, 3, 64, 1, reinterpret_cast<unsigned short*>(&s.label[0]), 0, 0, &count);
        ran += Clock::now() - t0;
        doc::clearOps();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kChords);
    state.counters["host_calls"] = static_cast<double>(calls.size());
    state.counters["plugin_share"] =
        1.0 - std::chrono::duration<double>(replayed).count() / std::chrono::duration<double>(ran).count();
}
BENCHMARK(BM_HostReplay)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
