// The test image: the whole plug-in plus one export that hands out the
// addresses of its internal functions by name, so that tests can drive the
// forwarders and the binding of a freshly loaded copy.
#include "binding.h"
#include "frames.h"
#include "prefmaps.h"
#include "resources.h"
#include "zemlopdk.h"
#include "brevado.h"
#include "textblocks.h"
#include "units.h"
#include "dialog.h"
#include "invoke.h"

#include <cstring>

namespace {

struct ProbeSymbol {
    const char* name;
    void* address;
};

template <class F> void* addr(F f) { return reinterpret_cast<void*>(f); }

const ProbeSymbol kSymbols[] = {
#define FX_ENTRY(result, name, params, args, kinds, missing, step) {#name, addr(&name)},
#include "fxtable.def"
#undef FX_ENTRY
    // binding
    {"InitializeGlobals", addr(&InitializeGlobals)},
    {"GetZemloBundleRef", addr(&GetZemloBundleRef)},
    {"GetFXProc", addr(&GetFXProc)},
    {"IsZemloCFM", addr(&IsZemloCFM)},
    {"NewFF_DialogHandlerProc", addr(&NewFF_DialogHandlerProc)},
    {"DisposeFF_DialogHandlerProc", addr(&DisposeFF_DialogHandlerProc)},
    // resources
    {"PlugIn_GetStringResource_UTF16",
     addr(static_cast<unsigned short* (*)(int, unsigned short*, short)>(&PlugIn_GetStringResource))},
    {"PlugIn_GetStringResource_8bit", addr(static_cast<char* (*)(int, char*, short)>(&PlugIn_GetStringResource))},
    {"LoadIndString", addr(&LoadIndString)},
    {"GetPluginBundle", addr(&GetPluginBundle)},
    {"dlbundle", addr(&dlbundle)},
    // command
    {"Brevado", addr(&Brevado)},
    {"FindMeasTextBlock", addr(&FindMeasTextBlock)},
    {"CreateMeasTextBlock", addr(&CreateMeasTextBlock)},
    {"UpdateMeasTextBlock", addr(&UpdateMeasTextBlock)},
    {"RemoveMeasTextBlock", addr(&RemoveMeasTextBlock)},
    {"GetZemloCurrentUnit", addr(&GetZemloCurrentUnit)},
    {"evpuToStrInCurrUnits", addr(&evpuToStrInCurrUnits)},
    {"UnitString", addr(&UnitString)},
    {"StrToDecimal", addr(&StrToDecimal)},
    {"UnitConverter", addr(&UnitConverter)},
    {"UnitConverterFits", addr(&UnitConverterFits)},
    {"BrevadoDialogHandler", addr(&BrevadoDialogHandler)},
};

}  // namespace

extern "C" FX_EXPORT void* capochords_probe_symbol(const char* name) {
    for (const ProbeSymbol& s : kSymbols)
        if (std::strcmp(s.name, name) == 0) return s.address;
    return nullptr;
}

// Benchmark kernels: both loops live in this image and are compiled alike, so
// they differ only in calling the forwarder (directly, as the plug-in does)
// or the host function through a plain function pointer.
extern "C" FX_EXPORT int64_t capochords_probe_forwarder_loop(int64_t n) {
    int64_t sum = 0;
    for (int64_t i = 0; i < n; ++i) sum += FX_GetWindowCount(FXT_VERSION);
    return sum;
}

extern "C" FX_EXPORT int64_t capochords_probe_pointer_loop(int16_t (*fn)(uint32_t), int64_t n) {
    int64_t sum = 0;
    for (int64_t i = 0; i < n; ++i) sum += fn(FXT_VERSION);
    return sum;
}
