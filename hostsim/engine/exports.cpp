// The host functions the engine exports, one per row of the interface table.
// Each is a GNU indirect function: the dynamic linker asks its resolver for
// the address at every lookup, so a scenario can make a function missing
// (the resolver answers null, and dlsym with it) without another engine image.
#include "engine.h"

namespace {

inline uint64_t widen(int16_t v) { return static_cast<uint64_t>(static_cast<int64_t>(v)); }
inline uint64_t widen(uint16_t v) { return v; }
inline uint64_t widen(int32_t v) { return static_cast<uint64_t>(static_cast<int64_t>(v)); }
inline uint64_t widen(uint32_t v) { return v; }
inline uint64_t widen(bool v) { return v ? 1u : 0u; }
inline uint64_t widen(void* v) { return reinterpret_cast<uintptr_t>(v); }
inline uint64_t widen(double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

template <hostsim::Fx F> struct Caller {
    template <class... A> static uint64_t call(A... a) {
        const uint64_t raw[] = {widen(a)...};
        return hostsim::dispatch(F, raw, sizeof...(A));
    }
};

}  // namespace

// Every host function answers a raw 64-bit value; see Handler in host.h.
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    static uint64_t fximpl_##name params { return Caller<hostsim::Fx::name>::call args; }    \
    extern "C" {                                                                             \
    decltype(&fximpl_##name) fxres_##name(void) {                                           \
        return hostsim::resolve(hostsim::Fx::name) ? &fximpl_##name : nullptr;               \
    }                                                                                        \
    }                                                                                        \
    extern "C" HOSTSIM_API uint64_t name params __attribute__((ifunc("fxres_" #name)));
#include "fxtable.def"
#undef FX_ENTRY

namespace hostsim {
void* implementation(Fx fx) {
    switch (fx) {
#define FX_ENTRY(result, name, params, args, kinds, missing, step)                           \
    case Fx::name:                                                                           \
        return reinterpret_cast<void*>(&fximpl_##name);
#include "fxtable.def"
#undef FX_ENTRY
    default:
        return nullptr;
    }
}
}  // namespace hostsim
