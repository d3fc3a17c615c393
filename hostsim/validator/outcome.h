// What a run of the command must leave behind, read from document snapshots:
// the chord records and label blocks of a staff-measure, and the whole effect
// of a confirmed run on a score that held ordinary chords only.
#ifndef CAPOCHORDS_VALIDATE_OUTCOME_H
#define CAPOCHORDS_VALIDATE_OUTCOME_H

#include "check.h"
#include "session.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace validate {

// The settings a run was confirmed with, as the command hands them on.
struct Confirmed {
    int16_t fret = 1;
    int16_t distance = 64; // EVPU
    bool showLabel = true;
    std::u16string label = u"Capo 1";
    bool chordFlag = false;
    bool remove = false;
    // The font command of the label blocks; none: that of addLabelFont's font.
    std::optional<std::u16string> font;
    // The raw text of the run's label blocks.
    std::u16string text() const;
};

// The font the label blocks of our scores are written in: "Times New Roman"
// registered as font 3 with name value 7, so that the font command is known.
void addLabelFont();
// The raw text of a label block in such a score.
std::u16string labelText(const std::u16string& label);
// The font command a label starts with, for a font name record's name and value.
std::u16string fontCommand(const std::u16string& name, int nameValue);

// The chord records of a staff-measure in a snapshot, in index order.
std::vector<score::ChordRecord> chordsIn(const doc::Document& d, int16_t staff, int16_t measure);
// The capo chord that a run writes for `source`.
score::ChordRecord capoOf(score::ChordRecord source, int fret, int16_t distance, bool flag);

// A measure text of a staff-measure with the raw text it leads to (none when
// its text block or raw text is missing).
struct Block {
    int16_t horizontal = 0, vertical = 0;
    uint16_t blockNumber = 0;
    std::optional<std::u16string> text;
};
std::vector<Block> blocksIn(const doc::Document& d, int16_t staff, int16_t measure);

// The vertical position of label blocks for a distance: 130 EVPU above it, in 16 bits.
inline int16_t baselineOf(int16_t distance) {
    return static_cast<int16_t>(distance + 130);
}

// A fresh score's run, confirmed with `s` over `region` (slots are staves):
// the result, the edit committed or cancelled with the notice, and in every
// staff-measure of the region the ordinary chords followed by the capo chords
// of the first 16, and one label block at the region's first measure on each
// of its staves when the label is written. Nothing else changes.
void expectFreshRun(Context& cx, const doc::Document& before, const doc::Document& after,
                    const Confirmed& s, const score::Region& region, int16_t result,
                    const std::string& where);

// How a measurement unit reads and shows distances.
struct UnitTexts {
    const char* name;    // as zemlo-host names it
    const char* max;     // the text that reads as 32,767 EVPU, and that shows for it
    const char* above;   // the text that reads as 32,768 EVPU
    const char* zero;    // how 0 EVPU shows
    const char* shows64; // how 64 EVPU shows
    int16_t oneAndHalf;  // "1.5" in EVPU, rounded half up
    const char* shows15; // how that shows
};
extern const UnitTexts kUnitTexts[6];

// Fails when a UTF-16 text holds a lone surrogate.
bool pairsWhole(const std::u16string& text);

// UTF-16 as text for failure messages (lone surrogates as U+FFFD).
std::string shown(const std::u16string& text);

} // namespace validate

#endif
