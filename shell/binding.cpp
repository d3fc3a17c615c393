// Finding the host engine and resolving host functions by name.
#include "binding.h"

#ifndef CAPOCHORDS_ENGINE_BUNDLE_ID
#error "the build supplies the host engine's bundle identifier"
#endif

extern "C" {
FX_EXPORT CFBundleRef gZemloBundle = nullptr;
}

int16_t InitializeGlobals() {
    if (!gZemloBundle) gZemloBundle = CFBundleGetBundleWithIdentifier(CFSTR(CAPOCHORDS_ENGINE_BUNDLE_ID));
    // Without an engine bundle, the application itself serves as the engine.
    if (!gZemloBundle) gZemloBundle = CFBundleGetMainBundle();
    return gZemloBundle ? 0 : -1;
}

CFBundleRef GetZemloBundleRef() { return gZemloBundle; }

FXPROCPTR Mac_GetFXProc(CFStringRef name) {
    CFBundleRef bundle = GetZemloBundleRef();
    if (!bundle) return nullptr;
    return CFBundleGetFunctionPointerForName(bundle, name);
}

FXPROCPTR GetFXProc(const char* name) {
    CFStringRef cfName = CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingMacRoman);
    if (!cfName) return nullptr;
    FXPROCPTR proc = Mac_GetFXProc(cfName);
    CFRelease(cfName);
    return proc;
}

bool IsZemloCFM() { return FX_IsMachO(FXT_VERSION) == 0; }

namespace {
void warnNotMachO() {
    static char text[] = "Should not get here!";
    FX_AlertMessage(nullptr, 48, 0, text, FXT_VERSION);
}
}  // namespace

FF_DialogHandlerProcPtr NewFF_DialogHandlerProc(FF_DialogHandlerProcPtr proc) {
    if (IsZemloCFM()) warnNotMachO();
    return proc;
}

void DisposeFF_DialogHandlerProc(FF_DialogHandlerProcPtr) {
    if (IsZemloCFM()) warnNotMachO();
}
