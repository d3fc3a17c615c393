// Spelling and chord names.
#include "chords.h"

#include "mapping.h"
#include "shapes.h"

namespace hostsim {
namespace musicxml {
namespace {

using score::ChordRecord;

struct Kind {
    const char* value;
    const char* suffix;
};
const Kind kKinds[] = {
    {"major", ""}, {"minor", "m"}, {"augmented", "+"}, {"diminished", "dim"}, {"dominant", "7"},
    {"major-seventh", "maj7"}, {"minor-seventh", "m7"}, {"diminished-seventh", "dim7"},
    {"augmented-seventh", "+7"}, {"half-diminished", "m7b5"}, {"major-minor", "m(maj7)"},
    {"major-sixth", "6"}, {"minor-sixth", "m6"}, {"dominant-ninth", "9"}, {"major-ninth", "maj9"},
    {"minor-ninth", "m9"}, {"dominant-11th", "11"}, {"major-11th", "maj11"}, {"minor-11th", "m11"},
    {"dominant-13th", "13"}, {"major-13th", "maj13"}, {"minor-13th", "m13"},
    {"suspended-second", "sus2"}, {"suspended-fourth", "sus4"}, {"Neapolitan", "N6"},
    {"Italian", "It+6"}, {"French", "Fr+6"}, {"German", "Ger+6"}, {"pedal", "ped"},
    {"power", "5"}, {"Tristan", "Tristan"}, {"other", ""}, {"none", "N.C."},
};
constexpr int kOther = 31;
constexpr int kKindCount = static_cast<int>(sizeof kKinds / sizeof kKinds[0]);

const int kNatural[7] = {0, 2, 4, 5, 7, 9, 11};

}  // namespace

int kindIndex(const std::string& value) {
    for (int i = 0; i < kKindCount; ++i)
        if (value == kKinds[i].value) return i;
    return kOther;
}

const char* kindSuffix(int index) { return kKinds[index >= 0 && index < kKindCount ? index : kOther].suffix; }

const char* kindValue(int index) { return kKinds[index >= 0 && index < kKindCount ? index : kOther].value; }

int pitchClass(Pitch p) { return ((kNatural[p.step % 7] + p.alter) % 12 + 12) % 12; }

std::string noteName(Pitch p) {
    std::string s(1, "CDEFGAB"[p.step % 7]);
    for (int a = p.alter; a > 0; --a) s += '#';
    for (int a = p.alter; a < 0; ++a) s += 'b';
    return s;
}

std::string chordName(const ChordRecord& c, Key concert) {
    const ChordFields f = fieldsOf(c);
    const int fret = c.isCapo() ? c.fret() : 0;
    std::string name = noteName(shapeOf({f.rootStep, f.rootAlter}, concert, fret)) +
                       kKinds[f.kind < kKindCount ? f.kind : kOther].suffix;
    if (f.bassStep >= 0) name += "/" + noteName(shapeOf({f.bassStep, f.bassAlter}, concert, fret));
    return name;
}

}  // namespace musicxml
}  // namespace hostsim
