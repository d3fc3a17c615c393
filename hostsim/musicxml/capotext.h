// A capo chord as the text the writer splices in after its source: the
// source <harmony> written out as it stands but for what makes it the
// player's chord, without copying it.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_CAPOTEXT_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_CAPOTEXT_H

#include "chords.h"
#include "shapes.h"

#include <libxml/tree.h>

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

// Appends the capo chord of the <harmony> `source`: type "alternate", the
// given default-y, root and bass as given (their display texts dropped, an
// alteration added, changed or dropped), the given diagram in place of the
// source's or none; everything else as the source has it.
void appendCapoChord(xmlNodePtr source, const CapoText& c, std::string* out);

// Appends any node as XML (UTF-8, escaped where it must be).
void appendNode(xmlNodePtr n, std::string* out);

} // namespace musicxml
} // namespace hostsim

#endif
