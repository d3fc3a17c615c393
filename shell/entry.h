// The plug-in's exported entry points (C linkage).
#ifndef CAPOCHORDS_SHELL_ENTRY_H
#define CAPOCHORDS_SHELL_ENTRY_H

#include "zemlopdk.h"

#include <cstddef>
#include <type_traits>

/* The menu item record the host hands to enumeration. It is the host's
   format: the host's record may be longer, but the plug-in writes only these
   first 772 bytes. Texts are UTF-16, at most 127 units and a zero unit. */
struct EXMENUITEM {
    uint16_t itemText[128];   /* the menu text */
    uint16_t secondText[128]; /* the host's second text for the item */
    uint16_t undoText[128];   /* the name of the item's undoable edit */
    uint16_t word1;           /* 0 */
    uint16_t word2;           /* 0 */
};
static_assert(offsetof(EXMENUITEM, itemText) == 0, "host layout");
static_assert(offsetof(EXMENUITEM, secondText) == 256, "host layout");
static_assert(offsetof(EXMENUITEM, undoText) == 512, "host layout");
static_assert(offsetof(EXMENUITEM, word1) == 768, "host layout");
static_assert(offsetof(EXMENUITEM, word2) == 770, "host layout");
static_assert(sizeof(EXMENUITEM) == 772, "the plug-in writes 772 bytes of the host's record");
static_assert(std::is_trivially_copyable<EXMENUITEM>::value, "a plain byte layout");

extern "C" {
FX_EXPORT extern int32_t ZemloVersion;
FX_EXPORT extern int16_t transposed;

FX_EXPORT int main(int argc, char** argv);
FX_EXPORT uint32_t ZemloExtensionVersion(uint32_t hostVersion);
FX_EXPORT int16_t ZemloExtensionInit(void* host, int32_t* value);
FX_EXPORT int16_t ZemloExtensionEnumerate_UTF16(void* host, int16_t item, EXMENUITEM* menuItem);
FX_EXPORT void ZemloExtensionTerminate(void* host);
FX_EXPORT int16_t ZemloExtensionGetMenuStatus(int16_t item);

FX_EXPORT uint32_t Ext_getversion(uint32_t hostVersion);
FX_EXPORT int32_t Ext_init(void* host, int32_t* value);
FX_EXPORT int32_t Ext_enumerate_UTF16(void* host, int32_t item, EXMENUITEM* menuItem);
FX_EXPORT int32_t Ext_getmenustatus(int32_t item);
FX_EXPORT void Ext_terminate(void* host);
}

#endif
