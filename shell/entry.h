// The plug-in's exported entry points (C linkage).
#ifndef CAPOCHORDS_SHELL_ENTRY_H
#define CAPOCHORDS_SHELL_ENTRY_H

#include "zemlopdk.h"

extern "C" {
FX_EXPORT extern int32_t ZemloVersion;
FX_EXPORT extern int16_t transposed;

FX_EXPORT int main(int argc, char** argv);
FX_EXPORT uint32_t ZemloExtensionVersion(uint32_t hostVersion);
FX_EXPORT int16_t ZemloExtensionInit(void* host, int32_t* value);
FX_EXPORT void ZemloExtensionTerminate(void* host);
FX_EXPORT int16_t ZemloExtensionGetMenuStatus(int16_t item);

FX_EXPORT uint32_t Ext_getversion(uint32_t hostVersion);
FX_EXPORT int32_t Ext_init(void* host, int32_t* value);
FX_EXPORT int32_t Ext_getmenustatus(int32_t item);
FX_EXPORT void Ext_terminate(void* host);
}

#endif
