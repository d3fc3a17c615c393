// What the forwarders share: the host-side pointer type of every host
// function, the one-time binding, and the conversion of the host's result.
#ifndef CAPOCHORDS_PDK_FORWARDERS_H
#define CAPOCHORDS_PDK_FORWARDERS_H

#include "zemlopdk.h"

/* FxHost_<name>: pointer to the host's function, returning the host-side type. */
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    typedef FX_HOST_RT_##result(*FxHost_##name) params;
#include "fxtable.def"
#undef FX_ENTRY

/* Declares `host`, the cached host function of `name`, bound on first use. */
#define FX_BIND(name)                                                                        \
    static const FxHost_##name host = reinterpret_cast<FxHost_##name>(GetFXProc(#name))

/* Results: 16-bit values widen by their own sign, a bool keeps its lowest bit,
   32-bit values and pointers pass as they are. */
#define fx_result_I16(x) (x)
#define fx_result_U16(x) (x)
#define fx_result_I32(x) (x)
#define fx_result_PTR(x) (x)
#define fx_result_BOOL(x) (((x) & 1u) != 0)
#define fx_result_VOID(x) (x)

#endif
