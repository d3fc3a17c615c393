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
// A key signature as MusicXML gives it: sharps (negative: flats) and mode.
// None in a file means C major.
struct Key {
    int fifths = 0;
    bool minor = false;
};
int pitchClass(Pitch p);
std::string noteName(Pitch p); // "C", "F#", "Bb"
// MusicXML's chord kinds by their index in the record; unknown kinds read as "other".
int kindIndex(const std::string& value);
const char* kindValue(int index);
const char* kindSuffix(int index); // "m7" for minor-seventh
// The chord as a reader shows it ("Am7", "G/B"); a capo chord as the shape
// the player reads in the key of the shapes (shapes.h), the concert key
// being `concert`.
std::string chordName(const score::ChordRecord& c, Key concert);

} // namespace musicxml
} // namespace hostsim

#endif
