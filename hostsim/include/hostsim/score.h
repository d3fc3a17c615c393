// Scores for tests in a few lines: staves, measures and chord symbols in the
// simulated document, the host's slot-to-staff table and its fonts.
//
//   hostsim::score::Score s(2, 4);          // slots 1..2 (staves 1..2), measures 1..4
//   s.chord(1, 1, {.key3 = 0});             // a chord symbol at staff 1, measure 1
//   s.chord(2, 3, {.key3 = 480});
//   EREGION-like bytes: s.region() or hostsim::score::region(1, 1, 2, 4)
#ifndef CAPOCHORDS_HOSTSIM_SCORE_H
#define CAPOCHORDS_HOSTSIM_SCORE_H

#include "hostsim/document.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace hostsim {
namespace score {

// The host's record layouts, written from the host's side only, never from
// the plug-in's headers: a plug-in that reads or writes a field at the wrong
// offset must meet a host that disagrees, not one that shares its mistake.
#pragma pack(push, 2)
// The host's chord symbol record (30 bytes).
struct ChordRecord {
    int16_t key1 = 0;        // sibling keys: a chord and its capo chord share all three
    int16_t key2 = 0;
    uint8_t host4[4] = {};
    int16_t vertical = 0;    // EVPU
    uint8_t host10[6] = {};
    uint16_t flags = 0;      // bit 15: chord flag
    uint16_t capoBits = 0;   // bit 6: capo chord; bits 0-5: capo fret
    int32_t key3 = 0;
    uint8_t host24[6] = {};
    bool isCapo() const { return (capoBits & 0x0040) != 0; }
    int fret() const { return capoBits & 0x003F; }
};
static_assert(sizeof(ChordRecord) == 30, "");

// The host's measure record (30 bytes), with the two flag words it keeps.
struct MeasureRecord {
    uint8_t host0[14] = {};
    uint16_t textFlags = 0;   // 0x0100: holds text blocks
    uint8_t host16[4] = {};
    uint16_t chordFlags = 0;  // 0x0008: holds chord symbols
    uint8_t host22[8] = {};
};
static_assert(sizeof(MeasureRecord) == 30, "");

// The host's region record.
struct Region {
    uint16_t slotField = 0;
    int16_t firstSlot = 0;
    int16_t firstMeasure = 0;
    int32_t firstPosition = 0;
    uint16_t reserved10 = 0;
    int16_t lastSlot = 0;
    int16_t lastMeasure = 0;
    int32_t lastPosition = 0;
};
static_assert(sizeof(Region) == 20, "");

// A measure text, text block and font name record as the host keeps them.
struct MeasureTextRecord {
    uint16_t blockNumber = 0;
    int16_t horizontal = 0;
    int16_t vertical = 0;
    uint8_t host6[4] = {};
};
static_assert(sizeof(MeasureTextRecord) == 10, "");
struct TextBlockRecord {
    uint16_t rawTextNumber = 0;
    uint8_t host2[6] = {};
    uint16_t word8 = 0;
    uint8_t host10[4] = {};
    uint16_t word14 = 0;
    uint8_t host16[8] = {};
    uint16_t rawTextKind = 0;
    uint8_t host26[4] = {};
};
static_assert(sizeof(TextBlockRecord) == 30, "");
#pragma pack(pop)

constexpr uint16_t kMeasureChordFlag = 0x0008;
constexpr uint16_t kMeasureTextFlag = 0x0100;

HOSTSIM_API Region region(int16_t firstSlot, int16_t firstMeasure, int16_t lastSlot,
                          int16_t lastMeasure, uint16_t slotField = 0);

class HOSTSIM_API Score {
  public:
    // Measures 1..measures, each with a measure record; slots 1..slots map to
    // staves 1..slots unless slotToStaff says otherwise.
    Score(int slots, int measures);
    // Appends a chord symbol to the staff-measure and sets the measure's chord flag.
    Score& chord(int16_t staff, int16_t measure, const ChordRecord& c);
    // Sets or clears a measure's chord flag without touching its chords.
    Score& chordFlag(int16_t measure, bool on);
    // A text block at the staff-measure with the given raw text: the three
    // records and the measure's text flag, as the host writes them.
    Score& textBlock(int16_t staff, int16_t measure, int16_t horizontal, int16_t vertical,
                     const std::u16string& text);
    Region whole() const;
    int slots() const { return slots_; }
    int measures() const { return measures_; }

  private:
    int slots_, measures_;
};

// The chord records of a staff-measure, in index order.
HOSTSIM_API std::vector<ChordRecord> chords(int16_t staff, int16_t measure);
// The raw texts of the measure texts of a staff-measure, in index order.
HOSTSIM_API std::vector<std::u16string> texts(int16_t staff, int16_t measure);
HOSTSIM_API std::vector<MeasureTextRecord> measureTexts(int16_t staff, int16_t measure);

// FX_SlotToInst answers table[slot] for slots inside the table, the slot
// itself otherwise (the default: identity).
HOSTSIM_API void setSlotToStaff(std::vector<int16_t> table);
// A font: its name record (SOFN) and its number for FX_FontNameToNum_UTF16.
// Names the document does not know answer 0, the document's default font.
HOSTSIM_API void addFont(int16_t number, const std::u16string& name, int16_t nameValue);
// The font definition preference (pfdf) of a number: font, size, effects.
HOSTSIM_API void setFontDefinition(int16_t number, uint16_t font, int16_t size, uint16_t effects);

}  // namespace score
}  // namespace hostsim

#endif
