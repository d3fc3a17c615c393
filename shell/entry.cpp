// The plug-in's exported entry points. The host loads the bundle, calls
// `main` once to bind it, then asks for the version, initialises, enumerates
// the menu items, and calls the invocation entry point when the user chooses
// the item. All entry points run on the host's main thread.
#include "binding.h"
#include "entry.h"

extern "C" {

FX_EXPORT int32_t ZemloVersion = 2010;  // for the host; never read here
FX_EXPORT int16_t transposed = 0;       // the host's show-transposed setting at the last run

/* 1 when the plug-in is bound to the host engine, else 0. The arguments'
   contents are not read; a zero count or null vector binds nothing. */
FX_EXPORT int main(int argc, char** argv) {
    if (argc == 0 || argv == nullptr) return 0;
    return InitializeGlobals() == 0 ? 1 : 0;
}

/* The host interface version the plug-in is built against, whatever is asked. */
FX_EXPORT uint32_t ZemloExtensionVersion(uint32_t) { return FXT_VERSION; }

/* Clears the host's 32-bit value and answers 1. */
FX_EXPORT int16_t ZemloExtensionInit(void*, int32_t* value) {
    if (value) *value = 0;
    return 1;
}

/* Nothing to release: bindings, bundles and settings stay until unload. */
FX_EXPORT void ZemloExtensionTerminate(void*) {}

/* Every item is always available. */
FX_EXPORT int16_t ZemloExtensionGetMenuStatus(int16_t) { return 1; }

/* The same entry points for hosts that pass and expect full-width integers:
   an item index is cut to its low 16 bits, a 16-bit result widens with its sign. */
FX_EXPORT uint32_t Ext_getversion(uint32_t v) { return ZemloExtensionVersion(v); }
FX_EXPORT int32_t Ext_init(void* host, int32_t* value) { return ZemloExtensionInit(host, value); }
FX_EXPORT int32_t Ext_getmenustatus(int32_t item) {
    return ZemloExtensionGetMenuStatus(static_cast<int16_t>(item));
}
FX_EXPORT void Ext_terminate(void* host) { ZemloExtensionTerminate(host); }

}  // extern "C"
