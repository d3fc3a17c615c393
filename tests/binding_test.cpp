// Binding to the host engine found by its bundle identifier.
#include "binding_checks.h"
#include "zemlopdk.h"

#include <cstring>
#include <string>

using hostsim::Fx;
using testing_support::Probe;

namespace {

using BundleFn = CFBundleRef (*)();
using InitFn = int16_t (*)();
using Handler = bool (*)(void*, uint32_t, int64_t, int64_t, void*);
using WrapFn = Handler (*)(Handler);
using DisposeFn = void (*)(Handler);

bool someHandler(void*, uint32_t, int64_t, int64_t, void*) { return true; }

using Binding = testing_support::FreshHost;

TEST_F(Binding, FindsTheEngineByIdentifierAndNeverBindsAForwarderToItself) {
    Probe p;
    ASSERT_TRUE(p.ready());
    CFBundleRef engine = p.fn<BundleFn>("GetZemloBundleRef")();
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(engine, *p.var<CFBundleRef>("gZemloBundle"));
    testing_support::expectEveryNameBindsToTheEngine(p);
}

struct MachOCase {
    const char* what;
    bool present;
    uint64_t answer;
    int alerts;  // per wrap or dispose
};

class DialogProcWrapping : public Binding, public ::testing::WithParamInterface<MachOCase> {};

TEST_P(DialogProcWrapping, WarnsOnlyOnAHostThatIsNotMachO) {
    const MachOCase& c = GetParam();
    hostsim::setPresent(Fx::FX_IsMachO, c.present);
    hostsim::setResult(Fx::FX_IsMachO, c.answer);
    Probe p;
    ASSERT_TRUE(p.ready());
    EXPECT_EQ(p.fn<bool (*)()>("IsZemloCFM")(), c.alerts == 1);
    hostsim::clearCalls();
    Handler wrapped = p.fn<WrapFn>("NewFF_DialogHandlerProc")(&someHandler);
    EXPECT_EQ(wrapped, &someHandler);
    p.fn<DisposeFn>("DisposeFF_DialogHandlerProc")(wrapped);
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), static_cast<size_t>(2 * c.alerts));
    for (const hostsim::Call& call : hostsim::calls()) {
        if (call.fx != Fx::FX_AlertMessage) continue;
        EXPECT_EQ(call.args[0], 0u);  // no parent window
        EXPECT_EQ(call.args[1], 48u);
        EXPECT_EQ(call.args[2], 0u);
        EXPECT_STREQ(call.ptr<const char>(3), "Should not get here!");
        EXPECT_EQ(call.args[4], FXT_VERSION);
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, DialogProcWrapping,
                         ::testing::Values(MachOCase{"MachO", true, 1, 0},
                                           MachOCase{"MachOHighBits", true, 0x10001, 0},
                                           MachOCase{"NotMachO", true, 0, 1},
                                           MachOCase{"LowWordZero", true, 0x10000, 1},
                                           MachOCase{"Unknown", false, 1, 1}),
                         [](const auto& tp) { return std::string(tp.param.what); });

// A lookup that ends by an exception leaves the forwarder unbound, and the
// next call looks again (a separate image whose binding can throw).
TEST_F(Binding, LookupEndingByAnExceptionIsRetried) {
    hostsim::Plugin img(CAPOCHORDS_BINARY_DIR "/tests/ThrowingBinding.bundle", true);
    ASSERT_TRUE(img.loaded()) << img.error();
    auto throwNext = img.function<void (*)(int)>("throwing_binding_throw_next");
    auto count = img.function<int16_t (*)(uint32_t)>("throwing_binding_window_count");
    ASSERT_TRUE(throwNext && count);
    hostsim::setResult(Fx::FX_GetWindowCount, 9);
    throwNext(2);
    for (int attempt = 0; attempt < 2; ++attempt) {
        bool threw = false;
        try {
            count(FXT_VERSION);
        } catch (const std::exception&) {
            threw = true;
        }
        EXPECT_TRUE(threw) << "attempt " << attempt;
    }
    EXPECT_EQ(count(FXT_VERSION), 9);
    EXPECT_EQ(count(FXT_VERSION), 9);
    EXPECT_EQ(hostsim::lookups(Fx::FX_GetWindowCount), 1);  // bound once, after the failures
    EXPECT_EQ(hostsim::count(Fx::FX_GetWindowCount), 2u);
}

}  // namespace
