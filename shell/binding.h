// Binding to the host's notation engine: finding its bundle once, and
// turning a host function's name into its address.
#ifndef CAPOCHORDS_SHELL_BINDING_H
#define CAPOCHORDS_SHELL_BINDING_H

#include "zemlopdk.h"

#include <CoreFoundation/CoreFoundation.h>

extern "C" {
/* The host engine's bundle; null until InitializeGlobals has found it, then
   never cleared or replaced. Not owned: it comes from the platform's "Get"
   calls and is never released. */
FX_EXPORT extern CFBundleRef gZemloBundle;
}

/* 0 when gZemloBundle is set (found now or before), -1 when no bundle could
   be found. Looks up the engine by identifier, else takes the main bundle. */
int16_t InitializeGlobals();
CFBundleRef GetZemloBundleRef();
/* The host function of that name, or null (no engine yet, or no such name). */
FXPROCPTR Mac_GetFXProc(CFStringRef name);
/* True when the host does not report itself as a Mach-O host. */
bool IsZemloCFM();

#endif
