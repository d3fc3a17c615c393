// MusicXML lead sheets in and out of the simulated document.
//
// A partwise score becomes staves (one per part) and measures; every
// <harmony> becomes a chord record of its staff-measure, in onset order. The
// parsed tree is kept: writing it back only adds, changes or removes the
// elements the simulated host owns (capo chords, the capo fret, label words),
// so everything else leaves as it came in.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_LEADSHEET_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_LEADSHEET_H

#include "hostsim/score.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace hostsim {
namespace musicxml {

// Files larger than this are refused before they are parsed.
constexpr size_t kMaxFileBytes = 16u << 20;

// How this host keeps a chord in the bytes of its record that a capo chord
// copies unchanged (4-7, 10-15, 24-29) and in the sibling keys (0, 2, 20).
//   0-1  key1   ordinal among the staff-measure's chords at the same onset
//   2-3  key2   0
//   4    root step (0 C .. 6 B)         5  root alteration (signed semitones)
//   6    bass step + 1 (0: no bass)     7  bass alteration
//   10   kind (index into the kind table)          11-15  0
//   20-23 key3  onset in 960ths of a quarter note
//   24-27 number of the source <harmony> in the file (from 1)   28-29  0
// A chord and its capo chord share all three keys; chords at different
// onsets differ in key3, chords at one onset in key1.
struct ChordFields {
    int rootStep = 0;
    int rootAlter = 0;
    int bassStep = -1;  // -1: none
    int bassAlter = 0;
    int kind = 0;
    int32_t onset = 0;
    uint32_t harmony = 0;
};
constexpr int kOnsetPerQuarter = 960;
constexpr size_t kRootStepByte = 4, kRootAlterByte = 5, kBassStepByte = 6, kBassAlterByte = 7;
constexpr size_t kKindByte = 10, kHarmonyByte = 24;

ChordFields fieldsOf(const score::ChordRecord& c);
void setFields(score::ChordRecord& c, const ChordFields& f);

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
std::string noteName(Pitch p);  // "C", "F#", "Bb"
// MusicXML's chord kinds by their index in the record; unknown kinds read as "other".
int kindIndex(const std::string& value);
const char* kindValue(int index);
// The chord as a reader shows it ("Am7", "G/B"); a capo chord as its shape.
std::string chordName(const score::ChordRecord& c, int fifths);

// A text block's raw text without the host's ^font(...)-style commands, as UTF-8.
std::string plainText(const std::u16string& raw);

struct Harmony;

class LeadSheet {
  public:
    ~LeadSheet();
    LeadSheet(const LeadSheet&) = delete;
    LeadSheet& operator=(const LeadSheet&) = delete;

    // Reads and checks a file (.mxl: the score inside the compressed file). Null with the reason in *error when it is
    // missing, too large, not well-formed, not a partwise score, or holds a
    // measure out of order or a <harmony> without a root.
    static std::unique_ptr<LeadSheet> read(const std::string& path, std::string* error);

    // Puts the score into the simulated document (which should be empty):
    // measure records, chord records, label blocks, the fonts labels use.
    void build();
    // Writes the simulated document's chords and labels back as MusicXML 4.0,
    // to a temporary file renamed to `path` once it is complete.
    bool write(const std::string& path, std::string* error);

    std::string title() const { return title_; }
    int staves() const { return static_cast<int>(parts_.size()); }
    int measures() const { return measures_; }
    size_t chordCount() const { return harmonies_.size(); }
    std::string partName(int staff) const;
    // Key signature in force (fifths) at a staff-measure.
    int fifths(int staff, int measure) const;
    // The fret of a <capo> in the file's first part that has one; 0: none.
    int fileCapo() const;

    struct Part;

  private:
    LeadSheet();
    struct Xml;
    std::unique_ptr<Xml> xml_;
    std::string title_;
    int measures_ = 0;
    std::vector<std::unique_ptr<Part>> parts_;
    std::vector<std::unique_ptr<Harmony>> harmonies_;
};

}  // namespace musicxml
}  // namespace hostsim

#endif
