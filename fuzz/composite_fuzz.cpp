// Composite preferences against random element records, random capacities
// and random caller buffers: no write past the caller's buffer (the buffer is
// allocated at its exact size), and what a save writes loads back as the
// fields' converted values, with missing elements never created (they read
// as zero words).
#include "fuzzinput.h"
#include "binding.h"
#include "hostsim/document.h"
#include "prefmaps.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace doc = hostsim::doc;

namespace {

void check(bool ok) {
    if (!ok) __builtin_trap();
}

// What a field value reads as after a save and a load.
uint32_t normalised(const PREFERENCE_LOCATION_MAPRECORD& r, uint32_t v) {
    if (r.size == 4) return v;
    return prefLoadWord(prefSaveWord(static_cast<uint16_t>(v), r.conversion), r.conversion);
}

uint32_t field(const uint8_t* b, const PREFERENCE_LOCATION_MAPRECORD& r) {
    if (r.size == 4) {
        uint32_t v;
        std::memcpy(&v, b + r.offset, 4);
        return v;
    }
    uint16_t v;
    std::memcpy(&v, b + r.offset, 2);
    return v;
}

using Input = FuzzInput;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    InitializeGlobals();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    hostsim::reset();
    Input in{data, size};
    size_t count = 0;
    const PREF_COMPOSITE* all = prefComposites(&count);
    const PREF_COMPOSITE& c = all[in.byte() % count];
    const int32_t capacity = static_cast<int32_t>(in.byte() % (c.size + 8));

    // Elements, each present or missing, with random words.
    for (int16_t i = 0; i < c.rows; ++i) {
        const PREFERENCE_LOCATION_MAPRECORD& r = c.map[i];
        const doc::RecordId id{static_cast<int16_t>(r.number1 ? r.number1 : 0xFFFE), r.number2, 0};
        if (doc::get(prefElementTag(r), id)) continue;
        if (in.byte() & 1) continue;  // missing
        std::vector<uint8_t> words(12);
        for (uint8_t& b : words) b = in.byte();
        doc::put(prefElementTag(r), id, words);
    }
    const size_t records = doc::recordCount();
    EDataID id{static_cast<int16_t>(c.number >= 0 ? c.number : 0), 0, 0};

    // Load into a buffer of exactly the capacity.
    std::unique_ptr<uint8_t[]> first(new uint8_t[static_cast<size_t>(capacity) + 1]);
    std::memset(first.get(), 0xCD, static_cast<size_t>(capacity) + 1);
    int32_t got = capacity;
    check(FX_LoadEData(static_cast<int32_t>(c.tag), &id, first.get(), &got, FXT_VERSION) == 1);
    check(got == c.size);

    // A random caller buffer saved, then loaded back.
    std::unique_ptr<uint8_t[]> mine(new uint8_t[static_cast<size_t>(capacity) + 1]);
    for (int32_t i = 0; i < capacity; ++i) mine[static_cast<size_t>(i)] = in.byte();
    const int16_t saved = FX_SaveEData(static_cast<int32_t>(c.tag), &id, mine.get(), capacity, FXT_VERSION);
    check(saved == (capacity >= 2 * c.rows ? 1 : 0));
    check(doc::recordCount() == records);  // a missing element is never created

    std::unique_ptr<uint8_t[]> back(new uint8_t[static_cast<size_t>(capacity) + 1]);
    got = capacity;
    check(FX_LoadEData(static_cast<int32_t>(c.tag), &id, back.get(), &got, FXT_VERSION) == 1);
    for (int16_t i = 0; i < c.rows; ++i) {
        const PREFERENCE_LOCATION_MAPRECORD& r = c.map[i];
        if (r.offset + (r.size == 4 ? 4 : 2) > capacity) continue;
        const doc::RecordId eid{static_cast<int16_t>(r.number1 ? r.number1 : 0xFFFE), r.number2, 0};
        if (!doc::get(prefElementTag(r), eid)) {
            check(field(back.get(), r) == (r.size == 4 ? 0u : prefLoadWord(0, r.conversion)));
        } else if (saved) {
            check(field(back.get(), r) == normalised(r, field(mine.get(), r)));
        } else {
            check(field(back.get(), r) == field(first.get(), r));
        }
    }
    return 0;
}
