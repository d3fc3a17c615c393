// The forwarders. Each binds its host function once, by its own name, and
// keeps the address, or null, for the life of the process (forwarders.h).
// Those with a step of their own are written out below.
#include "forwarders.h"
#include "frames.h"

#include <cstring>

extern "C" {
FX_EXPORT int32_t ZemloEditDepth = 0;
FX_EXPORT int32_t MassEditDepth = 0;
FX_EXPORT int32_t LoadedTGFCounter = 0;
FX_EXPORT uint8_t CanAddNoteRecordToRests = 1;  // frames.h; here so the image always holds it
const char FxBlankPartName[] = " ";
}

#define FX_FORWARD_PLAIN(result, name, params, args, missing)                                \
    extern "C" FX_RT_##result name params { return fxcall_##name args; }
#define FX_FORWARD_STEP(result, name, params, args, missing)
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    FX_FORWARD_##step(result, name, params, args, missing)
#include "fxtable.def"
#undef FX_ENTRY

/* Edits. The depth counts edits opened through this layer; it is raised
   before the host is asked, so a host without the function leaves it raised. */

extern "C" int32_t FX_StartZemloEdit(void* a1, uint32_t ver) {
    ++ZemloEditDepth;
    return fxcall_FX_StartZemloEdit(a1, ver);
}

extern "C" int32_t FX_StartZemloEdit_UTF16(void* a1, uint32_t ver) {
    ++ZemloEditDepth;
    return fxcall_FX_StartZemloEdit_UTF16(a1, ver);
}

extern "C" int16_t FX_EndZemloEdit(uint32_t ver) {
    if (ZemloEditDepth < 1) return 1;  // nothing open: the host is not even looked up
    --ZemloEditDepth;
    return fxcall_FX_EndZemloEdit(ver);
}

extern "C" void FX_CancelZemloEdit(uint32_t ver) {
    if (ZemloEditDepth <= 0) return;
    --ZemloEditDepth;
    fxcall_FX_CancelZemloEdit(ver);
}

extern "C" void* FX_StartMassEdit(void* a1, int32_t a2, uint32_t ver) {
    ++MassEditDepth;
    return fxcall_FX_StartMassEdit(a1, a2, ver);
}

extern "C" void FX_EndMassEdit(void* a1, int16_t a2, uint32_t ver) {
    --MassEditDepth;  // no lower bound
    fxcall_FX_EndMassEdit(a1, a2, ver);
}

/* Frames: counted whether or not the host has the function or succeeds. */

extern "C" void* FX_LoadTGF(uint16_t a1, int16_t a2, int16_t a3, int16_t a4, int16_t a5,
                            uint32_t ver) {
    ++LoadedTGFCounter;
    return fxcall_FX_LoadTGF(a1, a2, a3, a4, a5, ver);
}

extern "C" void* FX_FreeTGF(void* a1, uint32_t ver) {
    --LoadedTGFCounter;
    return fxcall_FX_FreeTGF(a1, ver);
}

/* Fixed answers that are more than a value. */

extern "C" void FX_GetTextMetrics_UTF16(void* a1, void* a2, int32_t a3, double a4, void* a5,
                                        uint32_t ver) {
    FxHost_FX_GetTextMetrics_UTF16 host = fxhost_FX_GetTextMetrics_UTF16();
    if (host) {
        host(a1, a2, a3, a4, a5, ver);
    } else if (a5) {
        const double zero[10] = {};
        std::memcpy(a5, zero, sizeof zero);  // the output record: ten doubles
    }
}

extern "C" void* FX_GetPartName(int16_t a1, uint32_t ver) {
    FxHost_FX_GetPartName host = fxhost_FX_GetPartName();
    return host ? host(a1, ver) : FX_BLANK_PART_NAME;
}
