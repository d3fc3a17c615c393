// What the forwarders share: the host-side pointer type of every host
// function, its cached address, and the bind-on-first-call machinery.
//
// For each host function X:
//   FxHost_X      pointer to the host's function, returning the host-side type
//   fxslot_X      the cached function: at first fxslow_X, which binds; once
//                 bound, the host's function, or fxmissing_X, which answers the
//                 fixed value, for the rest of the process
//   fxcall_X(...) passes a call on and converts the host's result
//   fxhost_X()    the host's function or null (binding if needed), for
//                 forwarders whose answer without it is more than a value
//
// After the first call a forwarder is one load and one jump: the slot always
// holds something to call. The first call lands in fxslow_X, which binds
// under a function-local static's guard and passes the call on. The guard
// lets exactly one caller look the name up while others wait; should the
// lookup end by an exception the guard is abandoned, the slot keeps
// fxslow_X, and the next call tries again.
#ifndef CAPOCHORDS_PDK_FORWARDERS_H
#define CAPOCHORDS_PDK_FORWARDERS_H

#include "zemlopdk.h"

#include <atomic>
#include <cstdint>

/* Results: 16-bit values widen by their own sign, a bool keeps its lowest bit,
   32-bit values and pointers pass as they are. */
#define fx_result_I16(x) (x)
#define fx_result_U16(x) (x)
#define fx_result_I32(x) (x)
#define fx_result_PTR(x) (x)
#define fx_result_BOOL(x) (((x) & 1u) != 0)
#define fx_result_VOID(x) (x)

template <class... A> inline void fx_ignore(A&&...) {}

#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    typedef FX_HOST_RT_##result(*FxHost_##name) params;                                      \
    [[gnu::cold]] inline FX_HOST_RT_##result fxmissing_##name params {                       \
        return (fx_ignore args, static_cast<FX_HOST_RT_##result>(missing));                  \
    }                                                                                        \
    [[gnu::cold]] inline FX_HOST_RT_##result fxslow_##name params;                           \
    inline std::atomic<FxHost_##name> fxslot_##name{&fxslow_##name};                         \
    [[gnu::cold]] inline FxHost_##name fxbind_##name() {                                     \
        static const bool bound = [] {                                                       \
            auto host = reinterpret_cast<FxHost_##name>(GetFXProc(#name));                  \
            fxslot_##name.store(host ? host : &fxmissing_##name, std::memory_order_release); \
            return true;                                                                     \
        }();                                                                                 \
        (void)bound;                                                                         \
        return fxslot_##name.load(std::memory_order_acquire);                                \
    }                                                                                        \
    inline FX_HOST_RT_##result fxslow_##name params { return fxbind_##name() args; }         \
    inline FxHost_##name fxhost_##name() {                                                   \
        FxHost_##name f = fxslot_##name.load(std::memory_order_acquire);                     \
        if (f == &fxslow_##name) f = fxbind_##name();                                        \
        return f == &fxmissing_##name ? nullptr : f;                                         \
    }                                                                                        \
    inline FX_RT_##result fxcall_##name params {                                             \
        return fx_result_##result(fxslot_##name.load(std::memory_order_acquire) args);       \
    }
#include "fxtable.def"
#undef FX_ENTRY

#endif
