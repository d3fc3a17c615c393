// The sample score bundled with zemlo-host, and chord spellings as this
// host shows them.
#include "scores.h"

#include <algorithm>
#include <cstring>

namespace zemlo {
namespace {

namespace score = hostsim::score;

void setName(score::ChordRecord& c, const char* name) {
    std::memset(c.host10, 0, sizeof c.host10);
    std::memcpy(c.host10, name, std::min(std::strlen(name), sizeof c.host10));
}

struct SampleChord {
    int16_t staff, measure;
    int32_t position;  // EVPU into the measure; the chord's third sibling key
    const char* name;
};

// "Lantern Road": lead sheet and guitar, four measures of chords.
const SampleChord kSample[] = {
    {1, 1, 0, "G"},    {1, 1, 512, "Em"},  {1, 2, 0, "C"},   {1, 2, 512, "D7"},
    {1, 3, 0, "G/B"},  {1, 3, 512, "Am7"}, {1, 4, 0, "Dsus4"}, {1, 4, 512, "G"},
    {2, 1, 0, "G"},    {2, 3, 0, "C"},
};

void buildSample(OpenedScore* s) {
    s->title = "Lantern Road";
    s->staves = 2;
    s->measures = 4;
    score::Score built(s->staves, s->measures);
    for (const SampleChord& c : kSample) {
        score::ChordRecord r;
        r.key1 = 1;
        r.key3 = c.position;
        r.vertical = 24;
        setName(r, c.name);
        built.chord(c.staff, c.measure, r);
    }
    score::addFont(4, u"Times New Roman", 4096);
}

const char* const kSharps[12] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
const char* const kFlats[12] = {"C", "Db", "D", "Eb", "E", "F", "Gb", "G", "Ab", "A", "Bb", "B"};

// The pitch class of the note name at the start of `text` (-1 for none) and
// how many characters it takes.
int pitchOf(const std::string& text, size_t* used) {
    static const int kNatural[7] = {9, 11, 0, 2, 4, 5, 7};  // A to G
    if (text.empty() || text[0] < 'A' || text[0] > 'G') return -1;
    int pitch = kNatural[text[0] - 'A'];
    *used = 1;
    if (text.size() > 1 && (text[1] == '#' || text[1] == 'b')) {
        pitch += text[1] == 'b' ? -1 : 1;
        *used = 2;
    }
    return (pitch + 12) % 12;
}

// The note name at the start of `text` moved down, spelled from `names`.
std::string lowered(const std::string& text, int semitones, const char* const* names) {
    size_t used = 0;
    const int pitch = pitchOf(text, &used);
    if (pitch < 0) return text;
    return names[((pitch - semitones) % 12 + 12) % 12] + text.substr(used);
}

}  // namespace

bool openScore(const std::string& source, OpenedScore* score, std::string* error) {
    if (source == "sample") {
        buildSample(score);
        return true;
    }
    *error = "no score named " + source + " (zemlo-host knows only \"sample\")";
    return false;
}

std::string chordName(const hostsim::score::ChordRecord& c) {
    size_t n = 0;
    while (n < sizeof c.host10 && c.host10[n]) ++n;
    return std::string(reinterpret_cast<const char*>(c.host10), n);
}

std::string capoName(const std::string& name, int fret) {
    // Flats in the keys of F, Bb, Eb, Ab, Db and Gb (for a minor chord, the
    // key of its relative major), sharps elsewhere; the bass follows.
    size_t used = 0;
    const int root = pitchOf(name, &used);
    const bool minor = root >= 0 && name.compare(used, 1, "m") == 0 && name.compare(used, 3, "maj") != 0;
    const int key = ((root - fret + (minor ? 3 : 0)) % 12 + 12) % 12;
    const bool flats = root >= 0 && (key == 5 || key == 10 || key == 3 || key == 8 || key == 1 || key == 6);
    const char* const* names = flats ? kFlats : kSharps;
    const size_t slash = name.find('/');
    if (slash == std::string::npos) return lowered(name, fret, names);
    return lowered(name.substr(0, slash), fret, names) + "/" +
           lowered(name.substr(slash + 1), fret, names);
}

}  // namespace zemlo
