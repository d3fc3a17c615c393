// The plug-in's exported entry points. The host loads the bundle, calls
// `main` once to bind it, then asks for the version, initialises, enumerates
// the menu items, and calls the invocation entry point when the user chooses
// the item. All entry points run on the host's main thread.
#include "binding.h"
#include "entry.h"
#include "resources.h"

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

/* The one menu item sits at index 0, and negative indexes answer as 0; past
   it (or without a record) the answer is 0 and nothing is written. Texts
   come from strings 20000 to 20002; units between a text's end and the last
   of its room are left as the host gave them. */
FX_EXPORT int16_t ZemloExtensionEnumerate_UTF16(void*, int16_t item, EXMENUITEM* menuItem) {
    if (item > 0 || !menuItem) return 0;
    PlugIn_GetStringResource(20000, menuItem->itemText, 128);
    PlugIn_GetStringResource(20001, menuItem->secondText, 128);
    PlugIn_GetStringResource(20002, menuItem->undoText, 128);
    menuItem->word1 = 0;
    menuItem->word2 = 0;
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
FX_EXPORT int32_t Ext_enumerate_UTF16(void* host, int32_t item, EXMENUITEM* menuItem) {
    return ZemloExtensionEnumerate_UTF16(host, static_cast<int16_t>(item), menuItem);
}
FX_EXPORT int32_t Ext_getmenustatus(int32_t item) {
    return ZemloExtensionGetMenuStatus(static_cast<int16_t>(item));
}
FX_EXPORT void Ext_terminate(void* host) { ZemloExtensionTerminate(host); }

}  // extern "C"
