// A capo chord as the text the writer splices in after its source: the
// source <harmony>'s own bytes, patched where the player's chord differs.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_CAPOTEXT_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_CAPOTEXT_H

#include "chords.h"
#include "shapes.h"
#include "sheet.h"

#include <string>

namespace hostsim {
namespace musicxml {

struct CapoText {
    Pitch root;
    bool hasBass = false; // the source has a bass to move
    Pitch bass;
    const OpenShape* frame = nullptr; // the diagram it gets; null: none
    std::string defaultY;             // its height, in tenths
    std::string unit = "  ";          // the file's indentation step
};

// Appends the capo chord of the ordinary chord `h` of the bytes `data`: type
// "alternate", the given default-y, root and bass steps as given (their
// display texts dropped) with an alteration added, changed or dropped, the
// given diagram in place of the source's or none; every other byte as the
// source has it.
void appendCapoChord(const std::string& data, const Harmony& h, const CapoText& c,
                     std::string* out);

} // namespace musicxml
} // namespace hostsim

#endif
