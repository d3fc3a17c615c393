// A model of the command's walk over a region, written apart from the
// command: from the document before a run it tells the chord records after
// it and how many chord loads, saves and deletes and progress calls the run
// costs. Label blocks are outside the model; only whether the run writes
// them is told.
#ifndef CAPOCHORDS_VALIDATE_WALKMODEL_H
#define CAPOCHORDS_VALIDATE_WALKMODEL_H

#include "hostsim/document.h"
#include "hostsim/score.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace validate {

using StaffMeasure = std::pair<int16_t, int16_t>;
using ChordMap = std::map<StaffMeasure, std::vector<hostsim::score::ChordRecord>>;

struct WalkInput {
    hostsim::score::Region region;
    std::function<int16_t(int)> staffOf; // the host's slot-to-staff answer
    int fret = 1;
    int16_t offset = 0;
    bool showLabel = false;
    bool labelText = false; // the label is not empty
    bool chordFlag = false;
    bool remove = false;
    int cancelAt = 0; // the progress call that answers 0; 0: none
};

struct WalkCost {
    long chordLoads = 0, chordSaves = 0, chordDeletes = 0, progressCalls = 0;
    bool operator==(const WalkCost& o) const {
        return chordLoads == o.chordLoads && chordSaves == o.chordSaves &&
               chordDeletes == o.chordDeletes && progressCalls == o.progressCalls;
    }
    std::string describe() const;
};

struct WalkPrediction {
    ChordMap chords; // every staff-measure's chords after the walk
    WalkCost cost;
    int changed = 0;   // chord records saved or deleted
    int fullLists = 0; // staff-measures whose walk ended at 16 new capo chords
    int capoChordsMet = 0;
    bool labelWritten = false;
    bool cancelled = false;
    bool progressShown = false;
    int32_t steps = 0; // what the progress display is opened with
};

// Where the label search finds a block among the measure texts of a
// staff-measure: the first at the label's place, or the first whose text
// (its first 256 units) holds `search`; -1 when there is none, or when a
// block before it has lost its text block or raw text.
int findLabelBlock(const hostsim::doc::Document& d, int16_t staff, int16_t measure,
                   int16_t vertical, const std::u16string& search);
// How many label blocks a run that writes labels creates on each staff of the
// region's first measure: one per slot whose search finds none, each new
// block at the label's place being found by the slots after it.
std::map<int16_t, int> labelBlocksCreated(const hostsim::doc::Document& before, const WalkInput& in,
                                          const std::u16string& search);

// The chord records of a document, by staff-measure, in index order.
ChordMap chordsOf(const hostsim::doc::Document& d);
WalkPrediction predictWalk(const hostsim::doc::Document& before, const WalkInput& in);

} // namespace validate

#endif
