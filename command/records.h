// Host document records the command reads and writes, as byte layouts.
// Offsets are the host's; every one the command relies on is pinned below.
#ifndef CAPOCHORDS_COMMAND_RECORDS_H
#define CAPOCHORDS_COMMAND_RECORDS_H

#include "zemlopdk.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

// Record tags: four characters, the first in the most significant byte.
constexpr uint32_t kTagChord = 0x53444368;        // S D C h
constexpr uint32_t kTagMeasureSpec = 0x534F4D53;  // S O M S
constexpr uint32_t kTagMeasureText = 0x64746D74;  // d t m t
constexpr uint32_t kTagTextBlock = 0x534F5458;    // S O T X
constexpr uint32_t kTagRawText = 0x7478626C;      // t x b l
constexpr uint32_t kTagFontName = 0x534F464E;     // S O F N
constexpr uint32_t kTagFontDef = 0x70666466;      // p f d f
constexpr uint32_t kTagUnitPrefs = 0x70666770;    // p f g p
constexpr uint32_t kTagShowTransposed = 0x6F743132;  // o t 1 2

#pragma pack(push, 2)

// The host's region record, as far as the command reads it.
struct EREGION {
    uint16_t slotField;   // handed unchanged to FX_SlotToInst
    int16_t firstSlot;
    int16_t firstMeasure;
    int32_t firstPosition;  // not used: the walk covers whole measures
    uint16_t reserved10;
    int16_t lastSlot;
    int16_t lastMeasure;
    int32_t lastPosition;
};
static_assert(offsetof(EREGION, slotField) == 0, "");
static_assert(offsetof(EREGION, firstSlot) == 2, "");
static_assert(offsetof(EREGION, firstMeasure) == 4, "");
static_assert(offsetof(EREGION, firstPosition) == 6, "");
static_assert(offsetof(EREGION, lastSlot) == 12, "");
static_assert(offsetof(EREGION, lastMeasure) == 14, "");
static_assert(offsetof(EREGION, lastPosition) == 16, "");
static_assert(sizeof(EREGION) == 20, "the part of the region record the command reads");

// A chord symbol. Bytes the command does not name are copied unchanged into
// a capo chord.
struct EDTChord2010 {
    int16_t siblingKey1;
    int16_t siblingKey2;
    uint8_t host4[4];
    int16_t vertical;  // EVPU
    uint8_t host10[6];
    uint16_t flags;     // bit 15: the chord flag
    uint16_t capoBits;  // bit 6: capo chord; bits 0 to 5: capo fret
    int32_t siblingKey3;
    uint8_t host24[6];
};
static_assert(sizeof(EDTChord2010) == 30, "chord record is 30 bytes");
static_assert(offsetof(EDTChord2010, siblingKey1) == 0, "");
static_assert(offsetof(EDTChord2010, siblingKey2) == 2, "");
static_assert(offsetof(EDTChord2010, host4) == 4 && offsetof(EDTChord2010, host10) == 10 &&
                  offsetof(EDTChord2010, host24) == 24,
              "bytes copied unchanged into a capo chord");
static_assert(offsetof(EDTChord2010, vertical) == 8, "");
static_assert(offsetof(EDTChord2010, flags) == 16, "");
static_assert(offsetof(EDTChord2010, capoBits) == 18, "");
static_assert(offsetof(EDTChord2010, siblingKey3) == 20, "");

constexpr uint16_t kCapoChordBit = 0x0040;
constexpr uint16_t kCapoFretMask = 0x003F;
constexpr uint16_t kChordFlagBit = 0x8000;

// A measure: two flag words the command uses.
struct EDTMeasureSpec {
    uint8_t host0[14];
    uint16_t textFlags;  // bit 0x0100: the measure holds text blocks
    uint8_t host16[4];
    uint16_t chordFlags;  // bit 0x0008: the measure holds chord symbols
    uint8_t host22[8];
};
static_assert(sizeof(EDTMeasureSpec) == 30, "measure record is 30 bytes");
static_assert(offsetof(EDTMeasureSpec, textFlags) == 14, "");
static_assert(offsetof(EDTMeasureSpec, chordFlags) == 20, "");

constexpr uint16_t kMeasureTextFlag = 0x0100;
constexpr uint16_t kMeasureChordFlag = 0x0008;

// A text block's place in a staff-measure.
struct EDTMeasureText {
    uint16_t blockNumber;
    int16_t horizontal;  // EVPU
    int16_t vertical;    // EVPU
    uint8_t host6[4];
};
static_assert(sizeof(EDTMeasureText) == 10, "measure text is 10 bytes");
static_assert(offsetof(EDTMeasureText, blockNumber) == 0, "");
static_assert(offsetof(EDTMeasureText, horizontal) == 2, "");
static_assert(offsetof(EDTMeasureText, vertical) == 4, "");

// A text block: which raw text it shows, and how.
struct EDTTextBlock {
    uint16_t rawTextNumber;
    uint8_t host2[6];
    uint16_t word8;  // 100 on creation
    uint8_t host10[4];
    uint16_t word14;  // 0x1808 on creation
    uint8_t host16[8];
    uint16_t rawTextKind;
    uint8_t host26[4];
};
static_assert(sizeof(EDTTextBlock) == 30, "text block is 30 bytes");
static_assert(offsetof(EDTTextBlock, rawTextNumber) == 0, "");
static_assert(offsetof(EDTTextBlock, word8) == 8, "");
static_assert(offsetof(EDTTextBlock, word14) == 14, "");
static_assert(offsetof(EDTTextBlock, rawTextKind) == 24, "");

// A font's name.
struct EDTFontName {
    int16_t nameValue;
    uint8_t host2[10];
    uint16_t fontName[512];  // UTF-16, zero-terminated
};
static_assert(sizeof(EDTFontName) == 1036, "font name record is 1036 bytes");
static_assert(offsetof(EDTFontName, nameValue) == 0, "");
static_assert(offsetof(EDTFontName, fontName) == 12, "");

#pragma pack(pop)

static_assert(std::is_trivially_copyable<EDTChord2010>::value, "");
static_assert(std::is_trivially_copyable<EDTMeasureSpec>::value, "");
static_assert(std::is_trivially_copyable<EDTMeasureText>::value, "");
static_assert(std::is_trivially_copyable<EDTTextBlock>::value, "");
static_assert(std::is_trivially_copyable<EDTFontName>::value, "");

// A raw text is read with room for this many units.
constexpr int32_t kRawTextReadLimit = 256;

#endif
