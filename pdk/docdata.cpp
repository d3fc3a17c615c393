// Document data records: the forwarders of load, save, create, previous and
// next with their steps. Load and save serve the composite and array
// preferences from the host's element records (prefmaps.h) and treat the
// fret-instrument record apart; delete is a plain forwarder.
#include "forwarders.h"
#include "prefmaps.h"

#include <cstring>

namespace {

/* The fret-instrument record: the host may fill it and still answer 0. */
constexpr int32_t kFretInstrumentTag = 0x4F156649;
struct EDTFretInstrument25_3 {
    uint8_t bytes[252];
};
static_assert(sizeof(EDTFretInstrument25_3) == 252, "fret-instrument record is 252 bytes");

/* Saves stamped below this predate the element records: they go to the host
   as they are. */
constexpr uint32_t kElementStampFloor = 0x08000000u;

int16_t firstNumber(const void* id) {
    int16_t n = 0;
    if (id) std::memcpy(&n, id, sizeof n);
    return n;
}

}  // namespace

/* Adjusts tag and stamp to the running host before a call; this host needs
   nothing adjusted. */
void HandleOrvexVersion(int32_t& tag, uint32_t& ver, int32_t size) {
    (void)tag;
    (void)ver;
    (void)size;
}

extern "C" int16_t FX_LoadEData(int32_t tag, void* id, void* buffer, void* sizeLocation,
                                uint32_t ver) {
    int32_t* size = static_cast<int32_t*>(sizeLocation);
    uint32_t stamp = ver;
    HandleOrvexVersion(tag, stamp, size ? *size : 0);

    if (tag == kFretInstrumentTag && buffer) {
        if (!size || *size < static_cast<int32_t>(sizeof(EDTFretInstrument25_3))) {
#ifndef NDEBUG
            zemlo_assert_failed("FX_LoadEData", "zemlopdk", "*size >= sizeof(EDTFretInstrument25_3)");
#endif
            return 0;
        }
        std::memset(buffer, 0, sizeof(EDTFretInstrument25_3));
        if (fxcall_FX_LoadEData(tag, id, buffer, size, stamp) == 0) {
            // Some hosts fill the record and still answer 0: the bytes decide.
            const uint8_t* b = static_cast<const uint8_t*>(buffer);
            for (size_t i = 0; i < sizeof(EDTFretInstrument25_3); ++i)
                if (b[i]) return 1;
            return 0;
        }
    }

    const int16_t number = firstNumber(id);
    const PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
    int16_t rows = 0;
    if (mapPrefStruct(static_cast<uint32_t>(tag), number, &map, &rows))
        return fragmentStructLoad(buffer, size, map, rows);

    uint32_t element = 0;
    int16_t count = 0;
    int16_t start = 0;
    if (!mapPrefTag(static_cast<uint32_t>(tag), number, &element, &count, &start)) return 0;
    if (!element) return fxcall_FX_LoadEData(tag, id, buffer, size, stamp);

    if (!size) return 0;
    const int32_t total = count * kPrefElementBytes;
    if (!buffer) {
        *size = total;
        return 1;
    }
    if (*size < total) return 0;
    uint8_t* out = static_cast<uint8_t*>(buffer);
    for (int16_t i = 0; i < count; ++i) {
        EDataID eid{static_cast<int16_t>(kPrefElementFirst), static_cast<int16_t>(start + i), 0};
        uint8_t words[kPrefElementBytes] = {};  // a missing element reads as zeros
        int32_t elementSize = kPrefElementBytes;
        FX_LoadEData(static_cast<int32_t>(element), &eid, words, &elementSize, FXT_VERSION);
        std::memcpy(out + i * kPrefElementBytes, words, sizeof words);
    }
    *size = total;
    return 1;
}

extern "C" int16_t FX_SaveEData(int32_t tag, void* id, void* buffer, int32_t size, uint32_t ver) {
    uint32_t stamp = ver;
    HandleOrvexVersion(tag, stamp, size);
    if (stamp < kElementStampFloor) return fxcall_FX_SaveEData(tag, id, buffer, size, stamp);

    const int16_t number = firstNumber(id);
    const PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
    int16_t rows = 0;
    if (mapPrefStruct(static_cast<uint32_t>(tag), number, &map, &rows))
        return fragmentStructSave(buffer, size, map, rows);

    uint32_t element = 0;
    int16_t count = 0;
    int16_t start = 0;
    if (!mapPrefTag(static_cast<uint32_t>(tag), number, &element, &count, &start)) return 0;
    if (!element) return fxcall_FX_SaveEData(tag, id, buffer, size, stamp);

    if (!buffer || size < count * kPrefElementBytes) return 0;
    const uint8_t* in = static_cast<const uint8_t*>(buffer);
    for (int16_t i = 0; i < count; ++i) {
        EDataID eid{static_cast<int16_t>(kPrefElementFirst), static_cast<int16_t>(start + i), 0};
        uint8_t words[kPrefElementBytes];
        std::memcpy(words, in + i * kPrefElementBytes, sizeof words);
        FX_SaveEData(static_cast<int32_t>(element), &eid, words, kPrefElementBytes, FXT_VERSION);
    }
    return 1;
}

extern "C" int16_t FX_CreateEData(int32_t tag, void* id, void* buffer, int32_t size, uint32_t ver) {
    HandleOrvexVersion(tag, ver, size);
    return fxcall_FX_CreateEData(tag, id, buffer, size, ver);
}

extern "C" int16_t FX_PreviousEData(int32_t tag, void* id, void* buffer, int32_t size,
                                    uint32_t ver) {
    HandleOrvexVersion(tag, ver, size);
    return fxcall_FX_PreviousEData(tag, id, buffer, size, ver);
}

extern "C" int16_t FX_NextEData(int32_t tag, void* id, void* buffer, int32_t size, uint32_t ver) {
    HandleOrvexVersion(tag, ver, size);
    return fxcall_FX_NextEData(tag, id, buffer, size, ver);
}
