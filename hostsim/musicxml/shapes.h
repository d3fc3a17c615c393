// What a guitarist with a capo reads: the key of the shapes, capo chords
// spelled in it, the open-position shapes of a six-string guitar in standard
// tuning, and which capo fret turns most of a score's chords into them.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_SHAPES_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_SHAPES_H

#include "chords.h"

#include <string>
#include <vector>

namespace hostsim {
namespace musicxml {

Pitch tonic(Key k);
std::string keyName(Key k); // "Bb major", "F# minor"

// The concert key moved down by `fret` semitones, in the form with fewer
// accidentals; at six, the sharp form.
Key shapesKey(Key concert, int fret);

// `p` as the player with the capo at `fret` reads it in a piece in `concert`:
// moved by the diatonic interval from the concert tonic to the shapes tonic.
// A double accidental, E#, B#, Cb or Fb gives way to the simpler name of the
// same pitch. Fret 0 leaves `p` as it is.
Pitch shapeOf(Pitch p, Key concert, int fret);

// An open-position shape: the fret of each string from the sixth (low E) to
// the first, counted from the capo; -1: not played.
struct OpenShape {
    int frets[6];
};
// The open shape of a chord of `root` and `kind` (a MusicXML kind value) with
// no bass of its own, or null.
const OpenShape* openShape(Pitch root, const std::string& kind);

// A chord of the score as the advisor weighs it.
struct ConcertChord {
    Pitch root;
    std::string kind;     // MusicXML's kind value
    bool hasBass = false; // a slash chord: never an open shape
    Pitch bass;
    Key key; // the concert key in force at it
    int measure = 0;
};
// The chord's name as the player reads it with the capo at `fret`.
std::string shapeName(const ConcertChord& c, int fret);

struct CapoChoice {
    int fret = 0;
    Key shapes;               // the key of the shapes at the first chord
    int open = 0;             // chords that become open shapes
    std::vector<size_t> hard; // indexes of the chords that do not
};
// No capo and frets 1 to 7, best first (most open shapes; the lower fret on
// a tie).
std::vector<CapoChoice> rankCapos(const std::vector<ConcertChord>& chords);
// The best of frets 1 to 7 in `ranked`.
const CapoChoice& bestCapo(const std::vector<CapoChoice>& ranked);

} // namespace musicxml
} // namespace hostsim

#endif
