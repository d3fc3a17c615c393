// Control interface of the simulated Zemlo host, for tests and zemlo-host.
// The engine exports every host function of the interface; this interface
// decides, per scenario, which of them exist, what they answer, which call
// fails, and records every call with its arguments.
#ifndef CAPOCHORDS_HOSTSIM_HOST_H
#define CAPOCHORDS_HOSTSIM_HOST_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#define HOSTSIM_API __attribute__((visibility("default")))

namespace hostsim {

enum class Fx : int {
#define FX_ENTRY(result, name, params, args, kinds, missing, step) name,
#include "fxtable.def"
#undef FX_ENTRY
    Count
};
constexpr int kFxCount = static_cast<int>(Fx::Count);

// Kinds of values, as in the interface table.
enum class Kind : uint8_t { I16, U16, I32, PTR, BOOL, DBL, VER, VOID };

struct FxInfo {
    const char* name;
    Kind result;
    std::vector<Kind> params;  // the stamp included, last
};
HOSTSIM_API const FxInfo& info(Fx fx);
// False when the name is not a host function.
HOSTSIM_API bool fxByName(const std::string& name, Fx* out);

// One call of a host function. Arguments are widened to 64 bits: signed
// kinds with their sign, unsigned ones with zeros, pointers as addresses,
// doubles as their bit pattern.
struct Call {
    Fx fx;
    std::vector<uint64_t> args;
    uint64_t result = 0;
    bool faulted = false;
    template <class T> T* ptr(size_t i) const {
        return reinterpret_cast<T*>(static_cast<uintptr_t>(args[i]));
    }
    int64_t i(size_t k) const { return static_cast<int64_t>(args[k]); }
};

// A behaviour: computes the raw result of a call. Raw results are returned
// as 64-bit values; the plug-in sees only as much of them as its result type
// holds, so a behaviour may leave garbage in the upper bits on purpose.
using Handler = std::function<uint64_t(Call&)>;

// Everything back to a fresh host: all functions present, no results, no
// handlers, no faults, empty log, empty document (document.h), the built-in
// behaviours of ui.h with no scripts and no records.
HOSTSIM_API void reset();

HOSTSIM_API void setPresent(Fx fx, bool present);
HOSTSIM_API void setAllPresent(bool present);
HOSTSIM_API bool isPresent(Fx fx);
// How many times the plug-in looked the name up (one per dlsym).
HOSTSIM_API int lookups(Fx fx);

// A programmed result or a behaviour replaces the host's own: the document
// store's (document.h) or a built-in one (ui.h).
HOSTSIM_API void setResult(Fx fx, uint64_t raw);
HOSTSIM_API void setHandler(Fx fx, Handler h);
// The k-th call of fx from now on (1 = the next) fails: it answers 0 (null,
// false) without running its behaviour, and is logged as faulted.
HOSTSIM_API void failCall(Fx fx, int k);
HOSTSIM_API void clearFaults();

HOSTSIM_API void setLogging(bool on);
// The host's own checking: the call log, the document's log of operations
// (document.h) and the guarded copies through which behaviours see the
// plug-in's buffers (bufferFaults below). Turned off, calls are counted,
// faulted and served as before, but nothing is logged and behaviours work
// on the plug-in's buffers themselves: for a user's run that nobody
// inspects (zemlo-host apply). reset() turns it back on.
HOSTSIM_API void setChecking(bool on);
HOSTSIM_API bool checking();
HOSTSIM_API const std::vector<Call>& calls();
HOSTSIM_API void clearCalls();
// Calls of fx since the last reset, logged or not.
HOSTSIM_API size_t count(Fx fx);

// Buffers the plug-in handed over wrongly, or the host overran: a buffer
// claiming more room than the plug-in's memory holds (found in
// AddressSanitizer builds, before anything is touched; the call then fails),
// a text without a terminator inside the plug-in's memory, and a behaviour
// that wrote past the room it was given (the plug-in's bytes stay as they
// were: the behaviour wrote into a guarded copy).
struct BufferFault {
    Fx fx;
    std::string text;  // starts with the function's name
};
HOSTSIM_API const std::vector<BufferFault>& bufferFaults();

// The engine's own address for fx, whatever its presence: what a lookup of a
// present function yields.
HOSTSIM_API void* implementation(Fx fx);

}  // namespace hostsim

#endif
