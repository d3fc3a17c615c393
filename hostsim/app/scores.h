// Scores zemlo-host can open. Today only the sample bundled with the program;
// whatever reads scores from files later plugs in behind openScore.
#ifndef CAPOCHORDS_HOSTSIM_APP_SCORES_H
#define CAPOCHORDS_HOSTSIM_APP_SCORES_H

#include "hostsim/score.h"

#include <string>

namespace zemlo {

struct OpenedScore {
    std::string title;
    int staves = 0;
    int measures = 0;
};

// Builds the score named by `source` in the simulated document ("sample":
// the bundled one). False, with the reason in *error, for anything else.
bool openScore(const std::string& source, OpenedScore* score, std::string* error);

// The chord's own spelling, as this host keeps it in the record's bytes 10
// to 15 (ASCII, up to six characters); a capo chord carries its source's.
std::string chordName(const hostsim::score::ChordRecord& c);
// The spelling a capo chord shows: every note of the name `fret` semitones
// lower, since the player's shapes sound that much higher.
std::string capoName(const std::string& name, int fret);

}  // namespace zemlo

#endif
