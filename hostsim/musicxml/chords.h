// Chord naming and spelling: the one speller of the simulated host, for the
// capo chords it writes and the chords it prints.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_CHORDS_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_CHORDS_H

#include "hostsim/score.h"

#include <string>

namespace hostsim {
namespace musicxml {

// A spelled note: step 0 (C) to 6 (B) and alteration in semitones.
struct Pitch {
    int step = 0;
    int alter = 0;
};
// The pitch class spelled for a key of `fifths` sharps (negative: flats):
// sharps for fifths >= 0, flats otherwise; never a double accidental nor
// E#, B#, Cb or Fb.
Pitch spell(int pitchClass, int fifths);
int pitchClass(Pitch p);
// The note a capo player fingers for `p` with the capo at `fret`.
Pitch fingered(Pitch p, int fret, int fifths);
std::string noteName(Pitch p); // "C", "F#", "Bb"
// MusicXML's chord kinds by their index in the record; unknown kinds read as "other".
int kindIndex(const std::string& value);
const char* kindValue(int index);
// The chord as a reader shows it ("Am7", "G/B"); a capo chord as its shape.
std::string chordName(const score::ChordRecord& c, int fifths);

} // namespace musicxml
} // namespace hostsim

#endif
