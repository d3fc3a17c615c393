// Forwarders over the whole host function table: arguments passed unchanged
// and in order, results converted by their type, fixed answers without the
// host's function, and the steps of their own that some forwarders take.
#include "fresh.h"
#include "hostsim/host.h"
#include "zemlopdk.h"

#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

using hostsim::Fx;
using testing_support::Probe;

namespace {

constexpr uint32_t kStamp = 0x1950ABCDu;  // not the usual stamp: proves it is passed, not supplied

// Zeroed scratch memory for pointer arguments: an empty frame, an empty text,
// a ten-double metrics record all read as zeros.
alignas(16) uint8_t gScratch[64 * 32];

// Sample argument i of each type; chosen so that a lost sign, a swapped pair
// or a truncation shows.
int16_t sample(int16_t*, size_t i) { return static_cast<int16_t>(0x8000 | (0x111 * (i + 1))); }
uint16_t sample(uint16_t*, size_t i) { return static_cast<uint16_t>(0xF000 + i); }
int32_t sample(int32_t*, size_t i) { return -static_cast<int32_t>(0x10000000 + i); }
uint32_t sample(uint32_t*, size_t) { return kStamp; }
bool sample(bool*, size_t) { return true; }
double sample(double*, size_t i) { return 1.5 + static_cast<double>(i); }
void* sample(void**, size_t i) { return gScratch + 64 * i; }

uint64_t widened(int16_t v) { return static_cast<uint64_t>(static_cast<int64_t>(v)); }
uint64_t widened(uint16_t v) { return v; }
uint64_t widened(int32_t v) { return static_cast<uint64_t>(static_cast<int64_t>(v)); }
uint64_t widened(uint32_t v) { return v; }
uint64_t widened(bool v) { return v ? 1 : 0; }
uint64_t widened(void* v) { return reinterpret_cast<uintptr_t>(v); }
uint64_t widened(double v) {
    uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

template <class T> T sampleOf(size_t i) { return sample(static_cast<T*>(nullptr), i); }

// What a call with the samples sent, and what came back, as 64-bit values.
struct Outcome {
    std::vector<uint64_t> sent;
    uint64_t result = 0;
    bool hasResult = false;
};

template <class R, class... A, size_t... I>
Outcome callWith(R (*f)(A...), std::index_sequence<I...>) {
    Outcome o;
    o.sent = {widened(sampleOf<A>(I))...};
    if constexpr (std::is_void_v<R>) {
        f(sampleOf<A>(I)...);
    } else {
        o.hasResult = true;
        o.result = widened(f(sampleOf<A>(I)...));
    }
    return o;
}

template <class R, class... A> Outcome callSamples(R (*f)(A...)) {
    return callWith(f, std::index_sequence_for<A...>{});
}

// One row of the table, with a way to call its forwarder in a probe copy.
struct Row {
    Fx fx;
    const char* name;
    bool hasResult;
    uint64_t missing;  // the fixed answer, widened like a result
    Outcome (*call)(Probe&);
};

#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    Outcome call_##name(Probe& p) { return callSamples(p.fn<FX_RT_##result(*) params>(#name)); }
#include "fxtable.def"
#undef FX_ENTRY

uint64_t missingOf(void*) { return 0; }
template <class T> uint64_t missingOf(T v) { return widened(v); }

const std::vector<Row>& rows() {
    static const std::vector<Row> r = {
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    {Fx::name, #name, hostsim::Kind::result != hostsim::Kind::VOID,                          \
     missingOf(static_cast<FX_RT_##result>(missing)), &call_##name},
#undef FX_RT_VOID
#define FX_RT_VOID int  // a void forwarder's "missing" is never compared
#include "fxtable.def"
#undef FX_RT_VOID
#define FX_RT_VOID void
#undef FX_ENTRY
    };
    return r;
}

// The host's raw answer seen through the forwarder's result type.
uint64_t converted(hostsim::Kind k, uint64_t raw) {
    switch (k) {
    case hostsim::Kind::I16: return widened(static_cast<int16_t>(raw & 0xFFFF));
    case hostsim::Kind::U16: return raw & 0xFFFF;
    case hostsim::Kind::I32: return widened(static_cast<int32_t>(raw & 0xFFFFFFFF));
    case hostsim::Kind::BOOL: return raw & 1;
    default: return raw;
    }
}

class Forwarders : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        std::memset(gScratch, 0, sizeof gScratch);
    }
    void TearDown() override { hostsim::reset(); }
};

TEST_F(Forwarders, WithoutHostFunctionEachAnswersItsFixedValueAndReachesNothing) {
    ASSERT_EQ(rows().size(), 164u);
    hostsim::setAllPresent(false);
    Probe p;
    ASSERT_TRUE(p.ready());
    for (const Row& r : rows()) {
        std::memset(gScratch, 0xEE, sizeof gScratch);
        Outcome o = r.call(p);
        if (r.fx == Fx::FX_GetPartName) {
            ASSERT_NE(o.result, 0u);
            EXPECT_STREQ(reinterpret_cast<const char*>(o.result), " ");
        } else if (r.fx == Fx::FX_EndZemloEdit) {
            EXPECT_EQ(o.result, 0u);  // an edit was open: the host function is looked for
        } else if (r.hasResult) {
            EXPECT_EQ(o.result, r.missing) << r.name;
        }
        if (r.fx == Fx::FX_GetTextMetrics_UTF16) {
            double out[10];
            std::memcpy(out, gScratch + 64 * 4, sizeof out);  // the fifth argument
            for (double d : out) EXPECT_EQ(d, 0.0);
        }
    }
    EXPECT_TRUE(hostsim::calls().empty());
}

TEST_F(Forwarders, WithHostFunctionArgumentsPassUnchangedInOrderStampLast) {
    Probe p;
    ASSERT_TRUE(p.ready());
    *p.var<int32_t>("ZemloEditDepth") = 5;  // so that ending and cancelling reach the host
    for (const Row& r : rows()) {
        hostsim::clearCalls();
        Outcome o = r.call(p);
        ASSERT_EQ(hostsim::calls().size(), 1u) << r.name;
        const hostsim::Call& c = hostsim::calls()[0];
        EXPECT_EQ(c.fx, r.fx);
        EXPECT_EQ(c.args, o.sent) << r.name;
        ASSERT_FALSE(c.args.empty());
        EXPECT_EQ(c.args.back(), kStamp) << r.name;
    }
}

TEST_F(Forwarders, ResultsAreConvertedByTheirType) {
    Probe p;
    ASSERT_TRUE(p.ready());
    *p.var<int32_t>("ZemloEditDepth") = 1000;
    // Garbage above the result's own width, sign bits at every width.
    const uint64_t raws[] = {0xDEADBEEF12348000ull, 0x0123456789AB7FFFull, 0xFFFFFFFF00000002ull,
                             0x0000000000000003ull, 0x00007F00FFFF0001ull};
    for (const Row& r : rows()) {
        if (!r.hasResult) continue;
        const hostsim::Kind k = hostsim::info(r.fx).result;
        for (uint64_t raw : raws) {
            hostsim::setResult(r.fx, raw);
            EXPECT_EQ(r.call(p).result, converted(k, raw)) << r.name << " raw " << std::hex << raw;
        }
    }
}

TEST_F(Forwarders, CalledBeforeBindingStaysMissingForTheProcess) {
    Probe p;
    ASSERT_TRUE(p.ready(false));
    hostsim::setResult(Fx::FX_GetWindowCount, 7);
    auto count = p.fn<int16_t (*)(uint32_t)>("FX_GetWindowCount");
    auto maxLayers = p.fn<int16_t (*)(uint32_t)>("FX_GetMaxLayers");
    EXPECT_EQ(count(FXT_VERSION), 0);
    EXPECT_EQ(maxLayers(FXT_VERSION), 4);
    ASSERT_EQ(p.bind(), 1);
    EXPECT_EQ(count(FXT_VERSION), 0);
    EXPECT_EQ(maxLayers(FXT_VERSION), 4);
    EXPECT_EQ(hostsim::lookups(Fx::FX_GetWindowCount), 0);
    EXPECT_EQ(hostsim::count(Fx::FX_GetWindowCount), 0u);
    // Functions first called after binding do reach the host.
    hostsim::setResult(Fx::FX_GetCurrentPartID, 3);
    EXPECT_EQ(p.fn<int16_t (*)(uint32_t)>("FX_GetCurrentPartID")(FXT_VERSION), 3);
}

class EditCounters : public Forwarders {
  protected:
    void open(bool present) {
        hostsim::setAllPresent(present);
        probe_ = std::make_unique<Probe>();
        ASSERT_TRUE(probe_->ready());
        depth_ = probe_->var<int32_t>("ZemloEditDepth");
        mass_ = probe_->var<int32_t>("MassEditDepth");
        tgf_ = probe_->var<int32_t>("LoadedTGFCounter");
        ASSERT_TRUE(depth_ && mass_ && tgf_);
    }
    auto start() { return probe_->fn<int32_t (*)(void*, uint32_t)>("FX_StartZemloEdit_UTF16"); }
    auto end() { return probe_->fn<int16_t (*)(uint32_t)>("FX_EndZemloEdit"); }
    auto cancel() { return probe_->fn<void (*)(uint32_t)>("FX_CancelZemloEdit"); }
    std::unique_ptr<Probe> probe_;
    int32_t* depth_ = nullptr;
    int32_t* mass_ = nullptr;
    int32_t* tgf_ = nullptr;
};

TEST_F(EditCounters, StartOnHostWithoutItStaysRaisedUntilEnded) {
    open(false);
    EXPECT_EQ(start()(nullptr, FXT_VERSION), 0);
    EXPECT_EQ(*depth_, 1);
    EXPECT_EQ(end()(FXT_VERSION), 0);  // the host lacks it too
    EXPECT_EQ(*depth_, 0);
    EXPECT_EQ(end()(FXT_VERSION), 1);
}

// With no edit open, ending answers 1 and cancelling does nothing, neither
// reaching nor even looking up the host function.
TEST_F(EditCounters, StartEndAndCancelKeepTheDepth) {
    open(true);
    hostsim::setResult(Fx::FX_EndZemloEdit, 0);
    EXPECT_EQ(end()(FXT_VERSION), 1);
    cancel()(FXT_VERSION);
    EXPECT_EQ(hostsim::lookups(Fx::FX_EndZemloEdit), 0);
    EXPECT_EQ(hostsim::lookups(Fx::FX_CancelZemloEdit), 0);
    EXPECT_EQ(*depth_, 0);
    hostsim::setResult(Fx::FX_EndZemloEdit, 1);
    hostsim::setResult(Fx::FX_StartZemloEdit, 1);
    start()(nullptr, FXT_VERSION);
    probe_->fn<int32_t (*)(void*, uint32_t)>("FX_StartZemloEdit")(nullptr, FXT_VERSION);
    EXPECT_EQ(*depth_, 2);
    cancel()(FXT_VERSION);
    EXPECT_EQ(*depth_, 1);
    EXPECT_EQ(end()(FXT_VERSION), 1);
    EXPECT_EQ(*depth_, 0);
    cancel()(FXT_VERSION);  // nothing open again
    EXPECT_EQ(*depth_, 0);
    EXPECT_EQ(hostsim::count(Fx::FX_CancelZemloEdit), 1u);
    EXPECT_EQ(hostsim::count(Fx::FX_EndZemloEdit), 1u);
}

TEST_F(EditCounters, MassEditDepthHasNoLowerBound) {
    open(true);
    auto startMass = probe_->fn<void* (*)(void*, int32_t, uint32_t)>("FX_StartMassEdit");
    auto endMass = probe_->fn<void (*)(void*, int16_t, uint32_t)>("FX_EndMassEdit");
    void* h = startMass(nullptr, 10, FXT_VERSION);
    EXPECT_EQ(*mass_, 1);
    endMass(h, 0, FXT_VERSION);
    endMass(h, 0, FXT_VERSION);
    EXPECT_EQ(*mass_, -1);
    EXPECT_EQ(hostsim::count(Fx::FX_EndMassEdit), 2u);
}

TEST_F(EditCounters, FramesAreCountedWhetherOrNotTheHostHasTheFunction) {
    for (bool present : {true, false}) {
        open(present);
        auto load = probe_->fn<void* (*)(uint16_t, int16_t, int16_t, int16_t, int16_t, uint32_t)>(
            "FX_LoadTGF");
        auto freeFrame = probe_->fn<void* (*)(void*, uint32_t)>("FX_FreeTGF");
        for (int i = 0; i < 3; ++i) EXPECT_EQ(load(1, 1, 1, 1, 1, FXT_VERSION), nullptr);
        freeFrame(nullptr, FXT_VERSION);
        EXPECT_EQ(*tgf_, 2) << present;
    }
}

}  // namespace
