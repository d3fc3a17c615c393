// Binding checks shared by the suite that finds the engine by identifier and
// the one that falls back to the application's bundle.
#ifndef CAPOCHORDS_TESTS_BINDING_CHECKS_H
#define CAPOCHORDS_TESTS_BINDING_CHECKS_H

#include "fresh.h"
#include "hostsim/host.h"

#include <CoreFoundation/CoreFoundation.h>

#include <dlfcn.h>

namespace testing_support {

using GetFXProcFn = void* (*)(const char*);

// Every name resolves to the engine's own function, never to the copy's own
// forwarder of the same name (the trap of symbol interposition).
inline void expectEveryNameBindsToTheEngine(Probe& p) {
    auto getProc = p.fn<GetFXProcFn>("GetFXProc");
    for (int i = 0; i < hostsim::kFxCount; ++i) {
        auto fx = static_cast<hostsim::Fx>(i);
        const char* name = hostsim::info(fx).name;
        void* resolved = getProc(name);
        EXPECT_NE(resolved, p.raw(name)) << name << " bound to itself";
        EXPECT_EQ(resolved, hostsim::implementation(fx)) << name;
    }
    // Nor does this test program offer its own forwarders to the process.
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "FX_LoadEData"), hostsim::implementation(hostsim::Fx::FX_LoadEData));
}

}  // namespace testing_support

#endif
