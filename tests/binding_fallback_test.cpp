// Binding in a process whose engine bundle does not carry the engine's
// identifier: the application's own bundle serves, through the process's
// global symbols.
#include "binding_checks.h"
#include "zemlopdk.h"

#include <dlfcn.h>

using hostsim::Fx;
using testing_support::Probe;

namespace {

using BundleFn = CFBundleRef (*)();
using InitFn = int16_t (*)();

TEST(BindingFallback, FallsBackToTheMainBundleAndNeverBindsAForwarderToItself) {
    hostsim::reset();
    Probe p;
    ASSERT_TRUE(p.ready());
    ASSERT_NE(p.fn<BundleFn>("GetZemloBundleRef")(), nullptr);
    testing_support::expectEveryNameBindsToTheEngine(p);
    hostsim::setResult(Fx::FX_GetWindowCount, 12);
    EXPECT_EQ(p.fn<int16_t (*)(uint32_t)>("FX_GetWindowCount")(FXT_VERSION), 12);
}

TEST(BindingFallback, EngineAppearingLaterDoesNotReplaceTheFirstBundle) {
    hostsim::reset();
    Probe p;
    ASSERT_TRUE(p.ready());
    CFBundleRef first = *p.var<CFBundleRef>("gZemloBundle");
    void* engine = dlopen(CAPOCHORDS_BINARY_DIR "/ZemloEngine.bundle/Contents/MacOS/ZemloEngine",
                          RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(engine, nullptr) << dlerror();
    EXPECT_EQ(p.fn<InitFn>("InitializeGlobals")(), 0);
    EXPECT_EQ(*p.var<CFBundleRef>("gZemloBundle"), first);
    // A copy bound now finds the engine by its identifier instead.
    Probe later;
    ASSERT_TRUE(later.ready());
    EXPECT_NE(*later.var<CFBundleRef>("gZemloBundle"), first);
    EXPECT_EQ(later.fn<void* (*)(const char*)>("GetFXProc")("FX_LoadEData"),
              dlsym(engine, "FX_LoadEData"));
}

}  // namespace
