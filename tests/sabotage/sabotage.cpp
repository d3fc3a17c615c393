// Faults planted on purpose, for the validator's own tests. Each broken copy
// of the bundle is linked from the plug-in's own objects with one of these in
// front of a function (ld --wrap), so that the validator has something real
// to find: a write past a region, an edit never ended, a crash on a missing
// host function, and a run that never returns.
#include "brevado.h"
#include "zemlopdk.h"

#include <cstdint>
#include <unistd.h>

#define SABOTAGE_BREVADO "_Z7BrevadoP7EREGIONsssPtssPs"

#if defined(SABOTAGE_OVERRUN)
short realBrevado(EREGION*, short, short, short, unsigned short*, short, short,
                  short*) __asm__("__real_" SABOTAGE_BREVADO);
short wrapBrevado(EREGION*, short, short, short, unsigned short*, short, short,
                  short*) __asm__("__wrap_" SABOTAGE_BREVADO);

// One byte just past the region the host handed over.
short wrapBrevado(EREGION* region, short capoFret, short vertOffset, short showLabel, unsigned short* label,
                  short setChordFlag, short removeMode, short* changedCount) {
    if (region) reinterpret_cast<volatile uint8_t*>(region)[sizeof(EREGION)] = 0x5A;
    return realBrevado(region, capoFret, vertOffset, showLabel, label, setChordFlag, removeMode,
                       changedCount);
}
#endif

#if defined(SABOTAGE_OPEN_EDIT)
// Says it committed, and does nothing: the edit stays open and the depth raised.
extern "C" int16_t __wrap_FX_EndZemloEdit(uint32_t) { return 1; }
#endif

#if defined(SABOTAGE_NULL_HANDLE)
extern "C" void* __real_FX_StartMassEdit(void*, int32_t, uint32_t);

// Reads through the progress handle without asking whether there is one: a
// real segmentation fault in every build, not a sanitizer's report of it.
extern "C" __attribute__((no_sanitize("undefined"))) void* __wrap_FX_StartMassEdit(void* a1, int32_t a2,
                                                                                   uint32_t ver) {
    void* handle = __real_FX_StartMassEdit(a1, a2, ver);
    const volatile uint8_t first = *static_cast<volatile uint8_t*>(handle);
    (void)first;
    return handle;
}
#endif

#if defined(SABOTAGE_HANG)
// The run never gets past its first progress report.
extern "C" int16_t __wrap_FX_MassEditProgress(void*, int16_t, int16_t, int16_t, int16_t, uint32_t) {
    for (;;) pause();
}
#endif
