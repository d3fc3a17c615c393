// Random scores for the validator: a description drawn from a check's
// generator, built into the simulated document as often as needed (in this
// process or a fresh one), and the settings and region of a run on it. The
// description is plain data, so the same draw gives the same score anywhere.
#ifndef CAPOCHORDS_VALIDATE_RANDOMSCORE_H
#define CAPOCHORDS_VALIDATE_RANDOMSCORE_H

#include "check.h"
#include "hostsim/driver.h"

#include "hostsim/document.h"
#include "hostsim/score.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace validate {

// What the user confirms in the dialog.
struct RunSettings {
    int fret = 1;      // 1..63
    int distance = 64; // EVPU, 0..32767 as typed
    bool showLabel = true;
    std::string label; // UTF-8, typed into the label field
    bool chordFlag = false;
    bool remove = false;
};

struct PlacedText {
    int16_t staff, measure, horizontal, vertical;
    std::u16string text;
    // 1: its text block is gone; 2: its text block's raw text is gone.
    int broken = 0;
};

struct RandomScore {
    int slots = 1, measures = 1;
    // table[slot]: the slot's staff; empty: every slot is its own staff.
    std::vector<int16_t> slotToStaff;
    // Chords by staff (1..slots) and measure (1..measures), in index order.
    std::map<std::pair<int16_t, int16_t>, std::vector<hostsim::score::ChordRecord>> chords;
    std::vector<hostsim::score::MeasureRecord>
        measureRecords; // [measure - 1], flags as the score has them
    std::vector<PlacedText> texts;
    bool timesNewRoman = false;  // the document knows the label's font by name
    bool fontDefinition = false; // and has its own font definition 14
    hostsim::score::Region region;
    bool wholeDocument = false; // nothing selected: the command asks and works on everything
    RunSettings settings;

    // Puts the score into the (fresh) simulated document and sets the host's
    // slot-to-staff table.
    void build() const;
    // The region the run walks: the selection, or the whole document.
    hostsim::score::Region walked() const;
    hostsim::score::Region whole() const;
    int16_t staffOf(int slot) const;
    // The staves of the walked region's slots.
    std::set<int16_t> staves() const;
    // The dialog's answers for `s`.
    std::vector<hostsim::ui::Step> dialog(const RunSettings& s) const;
    // One line that says what the score is, for failure messages.
    std::string describe() const;
};

RandomScore randomScore(std::mt19937_64& random);

} // namespace validate

#endif
