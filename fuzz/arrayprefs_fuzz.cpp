// Array preferences against random element records, numbers, capacities and
// caller buffers. A load answers the run of elements (zeros for missing ones)
// only for an admitted number and a buffer that holds the whole run, and
// otherwise leaves the buffer alone; no load changes the document. A save
// writes exactly the run's elements, and a refused save writes nothing.
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

using Input = FuzzInput;

doc::RecordId elementId(int32_t index) {
    return {static_cast<int16_t>(kPrefElementFirst), static_cast<int16_t>(index), 0};
}

// A buffer of exactly `size` bytes on the heap, so that the sanitizer sees any
// write past it, filled with `fill`.
std::unique_ptr<uint8_t[]> exact(size_t size, uint8_t fill) {
    std::unique_ptr<uint8_t[]> b(new uint8_t[size ? size : 1]);
    std::memset(b.get(), fill, size ? size : 1);
    return b;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    InitializeGlobals();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    hostsim::reset();
    Input in{data, size};
    size_t count = 0;
    const PREF_ARRAY* all = prefArrays(&count);
    const PREF_ARRAY& a = all[in.byte() % count];

    // Mostly numbers around the admitted range, sometimes any number.
    const uint8_t pick = in.byte();
    const int16_t number =
        (pick & 0x80) ? in.word() : static_cast<int16_t>(a.low - 2 + pick % (a.high - a.low + 5));
    // pfPF 0 is a composite, not a run of elements (composite_fuzz has those).
    const PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
    int16_t rows = 0;
    if (mapPrefStruct(a.tag, number, &map, &rows)) return 0;
    const bool admitted = !a.numbered || (number >= a.low && number <= a.high);
    const int32_t start = a.numbered ? number - 1 : 0;
    const int32_t total = a.count * kPrefElementBytes;

    // Elements of the run and one on either side, each present or missing.
    for (int32_t k = start - 1; k <= start + a.count; ++k) {
        if (in.byte() & 1) continue;
        std::vector<uint8_t> words(kPrefElementBytes);
        for (uint8_t& b : words)
            b = in.byte();
        doc::put(a.elementTag, elementId(k), words);
    }
    const doc::Document before = doc::snapshot();
    EDataID id{number, static_cast<int16_t>(in.word()), 0};

    // The size query.
    int32_t queried = -5;
    check(FX_LoadEData(static_cast<int32_t>(a.tag), &id, nullptr, &queried, FXT_VERSION) ==
          (admitted ? 1 : 0));
    check(queried == (admitted ? total : -5));
    check(FX_LoadEData(static_cast<int32_t>(a.tag), &id, nullptr, nullptr, FXT_VERSION) == 0);

    // A load into a buffer of exactly the capacity.
    const size_t capacity = in.byte() % static_cast<size_t>(total + 8);
    auto loaded = exact(capacity, 0xCD);
    int32_t got = static_cast<int32_t>(capacity);
    const int16_t ok =
        FX_LoadEData(static_cast<int32_t>(a.tag), &id, loaded.get(), &got, FXT_VERSION);
    const bool fits = admitted && capacity >= static_cast<size_t>(total);
    check(ok == (fits ? 1 : 0));
    if (fits) {
        check(got == total);
        for (int32_t i = 0; i < a.count; ++i) {
            const auto element = doc::get(a.elementTag, elementId(start + i));
            const uint8_t* at = loaded.get() + i * kPrefElementBytes;
            if (element)
                check(std::memcmp(at, element->data(), kPrefElementBytes) == 0);
            else
                for (int32_t b = 0; b < kPrefElementBytes; ++b)
                    check(at[b] == 0);
        }
        for (size_t b = static_cast<size_t>(total); b < capacity; ++b)
            check(loaded[b] == 0xCD);
    } else {
        for (size_t b = 0; b < capacity; ++b)
            check(loaded[b] == 0xCD);
    }
    check(doc::snapshot() == before);

    // A random caller buffer saved.
    auto mine = exact(capacity, 0);
    for (size_t b = 0; b < capacity; ++b)
        mine[b] = in.byte();
    const int16_t saved = FX_SaveEData(static_cast<int32_t>(a.tag), &id, mine.get(),
                                       static_cast<int32_t>(capacity), FXT_VERSION);
    check(saved == (fits ? 1 : 0));
    doc::Document expected = before;
    if (fits)
        for (int32_t i = 0; i < a.count; ++i)
            expected.records[{a.elementTag, doc::keyOf(a.elementTag, elementId(start + i))}] =
                std::vector<uint8_t>(mine.get() + i * kPrefElementBytes,
                                     mine.get() + (i + 1) * kPrefElementBytes);
    check(doc::snapshot() == expected);
    return 0;
}
