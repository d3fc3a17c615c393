// The plug-in's buffers as the host touches them. A behaviour never works
// on the plug-in's memory itself: each buffer a call hands over is copied
// into a staging area with guard bytes after the room the plug-in gave, the
// behaviour reads and writes the copy, the guards are checked, and only the
// bytes it changed within that room go back. A host that writes too far is
// caught that way. In an AddressSanitizer build the room the plug-in claims
// is checked against its memory before anything is read: a plug-in claiming
// more than its buffer holds gets a failed call and a fault on record, not a
// host that corrupts its heap.
#include "engine.h"
#include "hostsim/document.h"

#include <cassert>
#include <cstring>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
#define HOSTSIM_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HOSTSIM_ASAN 1
#endif
#endif
#ifndef HOSTSIM_ASAN
#define HOSTSIM_ASAN 0
#endif

#if HOSTSIM_ASAN
#include <sanitizer/asan_interface.h>
#endif

namespace hostsim {
namespace {

// How the room of one buffer argument is known.
enum class Room : uint8_t {
    Fixed,    // `n` bytes
    Count,    // argument `from` counts units of the record kind in argument 0
    CountAt,  // the 32-bit count the pointer in argument `from` points at, in such units
    Limit,    // argument `from` (16-bit) counts units of `n` bytes, terminator included
    Text,     // a terminated text of `n`-byte units
};

struct BufferArg {
    size_t arg;
    Room room;
    size_t n;
    size_t from;
};

using BufferArgs = std::vector<BufferArg>;

constexpr size_t kIdBytes = 6;  // three 16-bit numbers

const std::array<BufferArgs, kFxCount>& bufferArgs() {
    static const std::array<BufferArgs, kFxCount> table = [] {
        std::array<BufferArgs, kFxCount> t;
        auto set = [&t](Fx fx, BufferArgs s) {
            assert(s.size() <= Staging::kMaxBuffers);
            t[static_cast<size_t>(fx)] = std::move(s);
        };
        const BufferArg id{1, Room::Fixed, kIdBytes, 0};
        // The size location comes before the buffer it sizes.
        set(Fx::FX_LoadEData, {id, {3, Room::Fixed, 4, 0}, {2, Room::CountAt, 0, 3}});
        set(Fx::FX_SaveEData, {id, {2, Room::Count, 0, 3}});
        set(Fx::FX_CreateEData, {id, {2, Room::Count, 0, 3}});
        set(Fx::FX_DeleteEData, {id});
        set(Fx::FX_PreviousEData, {id, {2, Room::Count, 0, 3}});
        set(Fx::FX_NextEData, {id, {2, Room::Count, 0, 3}});
        set(Fx::FX_GetDlgString, {{2, Room::Limit, 1, 3}});
        set(Fx::FX_GetDlgString_UTF16, {{2, Room::Limit, 2, 3}});
        set(Fx::FX_FontNumToName_UTF16, {{1, Room::Limit, 2, 2}});
        set(Fx::FX_SetDlgString, {{2, Room::Text, 1, 0}});
        set(Fx::FX_SetDlgString_UTF16, {{2, Room::Text, 2, 0}});
        set(Fx::FX_StartZemloEdit, {{0, Room::Text, 1, 0}});
        set(Fx::FX_StartZemloEdit_UTF16, {{0, Room::Text, 2, 0}});
        set(Fx::FX_AlertMessage, {{3, Room::Text, 1, 0}});
        set(Fx::FX_AlertMessage_UTF16, {{3, Room::Text, 2, 0}});
        set(Fx::FX_FontNameToNum, {{0, Room::Text, 1, 0}});
        set(Fx::FX_FontNameToNum_UTF16, {{0, Room::Text, 2, 0}});
        return t;
    }();
    return table;
}

std::vector<BufferFault>& faults() {
    static auto* f = new std::vector<BufferFault>();  // see state() in host.cpp
    return *f;
}

void record(Fx fx, const std::string& what) {
    faults().push_back({fx, std::string(info(fx).name) + ": " + what});
}

// The first byte of [p, p + n) that is not the plug-in's memory, or n. Only
// an AddressSanitizer build can tell; any other answers n.
size_t addressable(const void* p, size_t n) {
#if HOSTSIM_ASAN
    if (n == 0) return 0;
    const void* bad = __asan_region_is_poisoned(const_cast<void*>(p), n);
    if (bad) return static_cast<size_t>(static_cast<const uint8_t*>(bad) - static_cast<const uint8_t*>(p));
#else
    (void)p;
#endif
    return n;
}

std::string argName(size_t arg) { return "argument " + std::to_string(arg + 1); }

}  // namespace

const std::vector<BufferFault>& bufferFaults() { return faults(); }

void resetBuffers() { faults().clear(); }

Staging::Staging(Call& c) : fx_(c.fx) {
    for (const BufferArg& s : bufferArgs()[static_cast<size_t>(c.fx)]) {
        auto* p = c.ptr<uint8_t>(s.arg);
        if (!p) continue;
        size_t bytes = 0;
        switch (s.room) {
        case Room::Fixed:
            bytes = s.n;
            break;
        case Room::Count:
        case Room::CountAt: {
            int32_t count = static_cast<int32_t>(c.args[s.from]);
            if (s.room == Room::CountAt) {
                // Its location was staged before: read the plug-in's value from the copy.
                count = 0;
                for (size_t i = 0; i < staged_; ++i)
                    if (copies_[i].arg == s.from)
                        std::memcpy(&count, copies_[i].before.data(), sizeof count);
            }
            const int unit = doc::ruleFor(static_cast<uint32_t>(c.args[0])).unit;
            bytes = count > 0 ? static_cast<size_t>(count) * static_cast<size_t>(unit) : 0;
            break;
        }
        case Room::Limit: {
            const auto limit = static_cast<int16_t>(c.args[s.from]);
            bytes = limit > 0 ? static_cast<size_t>(limit) * s.n : 0;
            break;
        }
        case Room::Text: {
            // Up to and with the terminator, a unit at a time so that the
            // scan itself never reads beyond the plug-in's memory.
            for (;; bytes += s.n) {
                if (addressable(p + bytes, s.n) != s.n) {
                    record(fx_, "the text of " + argName(s.arg) + " runs past the plug-in's memory after " +
                                    std::to_string(bytes) + " bytes without a terminator");
                    refused_ = true;
                    return;
                }
                bool end = true;
                for (size_t i = 0; i < s.n; ++i) end = end && p[bytes + i] == 0;
                if (end) break;
            }
            bytes += s.n;
            break;
        }
        }
        const size_t ok = addressable(p, bytes);
        if (ok != bytes) {
            record(fx_, argName(s.arg) + " claims " + std::to_string(bytes) + " bytes, but byte " +
                            std::to_string(ok) + " is not the plug-in's memory; the call failed untouched");
            refused_ = true;
            return;
        }
        Copy& k = copies_[staged_++];
        k.arg = s.arg;
        k.plugin = p;
        k.bytes = bytes;
        k.before.assign(p, p + bytes);
        k.work.assign(bytes + kGuard, kGuardByte);
        if (bytes) std::memcpy(k.work.data(), p, bytes);
    }
    for (size_t i = 0; i < staged_; ++i)
        c.args[copies_[i].arg] = reinterpret_cast<uintptr_t>(copies_[i].work.data());
}

void Staging::finish() {
    for (size_t n = 0; n < staged_; ++n) {
        Copy& k = copies_[n];
        for (size_t i = 0; i < kGuard; ++i) {
            if (k.work[k.bytes + i] == kGuardByte) continue;
            record(fx_, "the host wrote past the " + std::to_string(k.bytes) + " bytes of " + argName(k.arg) +
                            " (byte " + std::to_string(i) + " past the end)");
            break;
        }
        for (size_t i = 0; i < k.bytes; ++i)
            if (k.work[i] != k.before[i]) k.plugin[i] = k.work[i];
    }
}

}  // namespace hostsim
