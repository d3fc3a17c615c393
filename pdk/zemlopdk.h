/*
 * zemlopdk.h: the host call layer. Every host function is reached through a
 * forwarder of the same name declared here; the forwarder binds the host's
 * function by name on its first call and answers a fixed value when the host
 * does not export it.
 */
#ifndef CAPOCHORDS_PDK_ZEMLOPDK_H
#define CAPOCHORDS_PDK_ZEMLOPDK_H

#include <cstddef>
#include <cstdint>

/* Names that leave the plug-in image (see shell/exports.map). */
#define FX_EXPORT __attribute__((visibility("default")))

/* The host interface version the plug-in is built against; the last argument
   of every host call. */
#define FXT_VERSION 0x19500000u

/* Types of the forwarders' results, by the kinds of fxtable.def. */
#define FX_RT_I16 int16_t
#define FX_RT_U16 uint16_t
#define FX_RT_I32 int32_t
#define FX_RT_PTR void*
#define FX_RT_BOOL bool
#define FX_RT_VOID void

/* Types the forwarders receive the host's results as. A host bool is one
   byte of which only the lowest bit counts, so it is read as a byte. */
#define FX_HOST_RT_I16 int16_t
#define FX_HOST_RT_U16 uint16_t
#define FX_HOST_RT_I32 int32_t
#define FX_HOST_RT_PTR void*
#define FX_HOST_RT_BOOL uint8_t
#define FX_HOST_RT_VOID void

/* The text FX_GetPartName answers without its host function; not to be freed. */
extern "C" const char FxBlankPartName[];
#define FX_BLANK_PART_NAME (const_cast<char*>(FxBlankPartName))

extern "C" {
#define FX_ENTRY(result, name, params, args, kinds, missing, step) FX_RT_##result name params;
#include "fxtable.def"
#undef FX_ENTRY
}

/* Identifier of a document record: three signed 16-bit numbers whose meaning
   the record's tag fixes (staff, measure and index for a chord record; the
   preference's number for a preference). Create writes the number the host
   assigns into the one the caller set to -1. */
struct EDataID {
    int16_t first;
    int16_t second;
    int16_t third;
};
static_assert(sizeof(EDataID) == 6, "host identifier is three 16-bit numbers");

/* Adjusts tag and stamp to the running host before a document-data call
   (not delete). */
void HandleOrvexVersion(int32_t& tag, uint32_t& ver, int32_t size);

/* Counters of the host call layer, exported for the host. */
extern "C" {
FX_EXPORT extern int32_t ZemloEditDepth;   /* edits opened and not yet ended */
FX_EXPORT extern int32_t MassEditDepth;    /* mass edits started minus ended */
FX_EXPORT extern int32_t LoadedTGFCounter; /* frames loaded minus frames freed */
}

/* The host's dialog window and the handler procedure it calls with Win32-style
   messages: 272 to initialise, 273 when a control was used. Answers true when
   it took care of the message. */
struct OpaqueCocoaWindow;
typedef bool (*FF_DialogHandlerProcPtr)(OpaqueCocoaWindow* dialog, uint32_t message,
                                        int64_t wParam, int64_t lParam, void* userData);

/* Binding (shell): the host's function of that name, or null when the host
   engine is not known or does not export it. Keeps no cache of its own. */
typedef void* FXPROCPTR;
FXPROCPTR GetFXProc(const char* name);
/* The procedure to hand to FX_Dialog, and its release. On a host that is not
   Mach-O both warn, since a plain function pointer is all we can offer. */
FF_DialogHandlerProcPtr NewFF_DialogHandlerProc(FF_DialogHandlerProcPtr proc);
void DisposeFF_DialogHandlerProc(FF_DialogHandlerProcPtr proc);

/* Programming faults stop here, naming the function, the source file's tag
   and the failed expression. */
void zemlo_assert_failed(const char* function, const char* file, const char* expression);
#ifdef NDEBUG
#define ZEMLO_ASSERT(expr, function, file) static_cast<void>(0)
#else
#define ZEMLO_ASSERT(expr, function, file)                                                   \
    ((expr) ? static_cast<void>(0) : zemlo_assert_failed(function, file, #expr))
#endif

#endif
