// Capo chords as the player reads them: for every key signature and frets 1
// to 11, the key of the shapes and the names of the concert key's seven
// diatonic roots and two borrowed ones (its flat third and flat seventh).
// The expected names are written out, not computed.
#include "shapes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

using hostsim::musicxml::Key;
using hostsim::musicxml::Pitch;
namespace mx = hostsim::musicxml;

Pitch parse(const std::string& n) {
    Pitch p{static_cast<int>(std::string("CDEFGAB").find(n[0])), 0};
    for (size_t i = 1; i < n.size(); ++i) p.alter += n[i] == '#' ? 1 : -1;
    return p;
}

std::vector<std::string> split(const std::string& s, char by) {
    std::vector<std::string> out;
    std::istringstream in(s);
    for (std::string part; std::getline(in, part, by);) out.push_back(part);
    return out;
}

struct KeyRow {
    int fifths;
    const char* concert;   // the major key's roots, then its flat third and flat seventh
    const char* major;     // per fret 1..11: "shapes key: the roots as read", by |
    const char* minorKey;  // the minor key of the same signature
    const char* minor;     // its shapes keys at frets 1..11
};

const KeyRow kKeys[] = {
    {-7, "Cb Db Eb Fb Gb Ab Bb Ebb Bbb",
     "Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|"
     "G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|"
     "E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|"
     "Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb",
     "Abm", "Gm F#m Fm Em D#m Dm C#m Cm Bm Bbm Am"},
    {-6, "Gb Ab Bb Cb Db Eb F Bbb Fb",
     "F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|"
     "D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|"
     "B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|"
     "Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F",
     "Ebm", "Dm C#m Cm Bm Bbm Am G#m Gm F#m Fm Em"},
    {-5, "Db Eb F Gb Ab Bb C Fb Cb",
     "C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|"
     "A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|"
     "F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|"
     "Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C",
     "Bbm", "Am G#m Gm F#m Fm Em D#m Dm C#m Cm Bm"},
    {-4, "Ab Bb C Db Eb F G Cb Gb",
     "G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|"
     "E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|"
     "Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|"
     "Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G",
     "Fm", "Em D#m Dm C#m Cm Bm Bbm Am G#m Gm F#m"},
    {-3, "Eb F G Ab Bb C D Gb Db",
     "D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|"
     "B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|"
     "Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|"
     "F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D",
     "Cm", "Bm Bbm Am G#m Gm F#m Fm Em D#m Dm C#m"},
    {-2, "Bb C D Eb F G A Db Ab",
     "A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|"
     "F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|"
     "Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|"
     "C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A",
     "Gm", "F#m Fm Em D#m Dm C#m Cm Bm Bbm Am G#m"},
    {-1, "F G A Bb C D E Ab Eb",
     "E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|"
     "Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|"
     "Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|"
     "G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E",
     "Dm", "C#m Cm Bm Bbm Am G#m Gm F#m Fm Em D#m"},
    {0, "C D E F G A B Eb Bb",
     "B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|"
     "Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|"
     "F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|"
     "D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B",
     "Am", "G#m Gm F#m Fm Em D#m Dm C#m Cm Bm Bbm"},
    {1, "G A B C D E F# Bb F",
     "F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|"
     "Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|"
     "C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|"
     "A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb",
     "Em", "D#m Dm C#m Cm Bm Bbm Am G#m Gm F#m Fm"},
    {2, "D E F# G A B C# F C",
     "Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|"
     "Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|"
     "G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|"
     "E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db",
     "Bm", "Bbm Am G#m Gm F#m Fm Em D#m Dm C#m Cm"},
    {3, "A B C# D E F# G# C G",
     "Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|"
     "F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|"
     "D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|"
     "B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab",
     "F#m", "Fm Em D#m Dm C#m Cm Bm Bbm Am G#m Gm"},
    {4, "E F# G# A B C# D# G D",
     "Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|"
     "C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|"
     "A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|"
     "F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb",
     "C#m", "Cm Bm Bbm Am G#m Gm F#m Fm Em D#m Dm"},
    {5, "B C# D# E F# G# A# D A",
     "Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|"
     "G: G A B C D E F# Bb F|F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|"
     "E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C|"
     "Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb",
     "G#m", "Gm F#m Fm Em D#m Dm C#m Cm Bm Bbm Am"},
    {6, "F# G# A# B C# D# E# A E",
     "F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|Eb: Eb F G Ab Bb C D Gb Db|"
     "D: D E F# G A B C# F C|Db: Db Eb F Gb Ab Bb C E B|C: C D E F G A B Eb Bb|"
     "B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|A: A B C# D E F# G# C G|"
     "Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F",
     "D#m", "Dm C#m Cm Bm Bbm Am G#m Gm F#m Fm Em"},
    {7, "C# D# E# F# G# A# B# E B",
     "C: C D E F G A B Eb Bb|B: B C# D# E F# G# A# D A|Bb: Bb C D Eb F G A Db Ab|"
     "A: A B C# D E F# G# C G|Ab: Ab Bb C Db Eb F G B Gb|G: G A B C D E F# Bb F|"
     "F#: F# G# A# B C# D# F A E|F: F G A Bb C D E Ab Eb|E: E F# G# A B C# D# G D|"
     "Eb: Eb F G Ab Bb C D Gb Db|D: D E F# G A B C# F C",
     "A#m", "Am G#m Gm F#m Fm Em D#m Dm C#m Cm Bm"},
};

TEST(Shapes, EveryKeySignatureAtFretsOneToEleven) {
    for (const KeyRow& row : kKeys) {
        const Key major{row.fifths, false}, minor{row.fifths, true};
        const std::vector<std::string> concert = split(row.concert, ' ');
        const std::vector<std::string> frets = split(row.major, '|');
        const std::vector<std::string> minors = split(row.minor, ' ');
        ASSERT_EQ(frets.size(), 11u);
        ASSERT_EQ(minors.size(), 11u);
        EXPECT_EQ(mx::keyName(minor), std::string(row.minorKey).substr(0, strlen(row.minorKey) - 1) + " minor");
        for (int fret = 1; fret <= 11; ++fret) {
            SCOPED_TRACE(std::string(row.concert) + " at fret " + std::to_string(fret));
            const std::string& expected = frets[static_cast<size_t>(fret - 1)];
            const std::string shapesTonic = expected.substr(0, expected.find(':'));
            EXPECT_EQ(mx::keyName(mx::shapesKey(major, fret)), shapesTonic + " major");
            const std::string& m = minors[static_cast<size_t>(fret - 1)];
            EXPECT_EQ(mx::keyName(mx::shapesKey(minor, fret)), m.substr(0, m.size() - 1) + " minor");
            const std::vector<std::string> read = split(expected.substr(expected.find(':') + 2), ' ');
            ASSERT_EQ(read.size(), concert.size());
            for (size_t i = 0; i < concert.size(); ++i) {
                EXPECT_EQ(mx::noteName(mx::shapeOf(parse(concert[i]), major, fret)), read[i]) << concert[i];
                // A minor key reads its roots as its relative major does.
                EXPECT_EQ(mx::noteName(mx::shapeOf(parse(concert[i]), minor, fret)), read[i]) << concert[i];
            }
        }
    }
}

}  // namespace
