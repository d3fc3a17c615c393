// The key of the shapes, spelling against it, open shapes and the advisor.
#include "shapes.h"

#include <algorithm>
#include <cstring>

namespace hostsim {
namespace musicxml {
namespace {

int mod(int a, int n) {
    return (a % n + n) % n;
}
int floorDiv(int a, int n) {
    return a >= 0 ? a / n : -((-a + n - 1) / n);
}

const int kNaturalClass[7] = {0, 2, 4, 5, 7, 9, 11};

// Position `i` on the line of fifths, F = 0: F C G D A E B, then F# ...
Pitch onLineOfFifths(int i) {
    static const int kStep[7] = {3, 0, 4, 1, 5, 2, 6}; // F C G D A E B
    return {kStep[mod(i, 7)], floorDiv(i, 7)};
}

// The name a player reads for pitch class `pc` when the interval gave
// step/alter: kept unless it is a double accidental, E#, B#, Cb or Fb; then
// the natural of that pitch, or its single sharp or flat, on the side the
// interval leaned to.
Pitch simpler(Pitch p) {
    const bool odd = (p.alter == 1 && (p.step == 2 || p.step == 6)) ||
                     (p.alter == -1 && (p.step == 0 || p.step == 3));
    if (p.alter >= -1 && p.alter <= 1 && !odd) return p;
    const int pc = pitchClass(p);
    for (int s = 0; s < 7; ++s)
        if (kNaturalClass[s] == pc) return {s, 0};
    for (int s = 0; s < 7; ++s) {
        if (p.alter > 0 && kNaturalClass[s] == pc - 1) return {s, 1};
        if (p.alter < 0 && kNaturalClass[s] == mod(pc + 1, 12)) return {s, -1};
    }
    return p;
}

// The open shapes: C, A, G, E, D major and Am, Em, Dm, with their sevenths,
// major sevenths, minor sevenths, sixths and suspended forms where an open
// form exists. Frets from the sixth string to the first; -1 not played.
struct ShapeRow {
    int pitchClass;
    const char* kind;
    OpenShape shape;
};
constexpr int x = -1;
const ShapeRow kOpenShapes[] = {
    {0, "major", {{x, 3, 2, 0, 1, 0}}},
    {0, "dominant", {{x, 3, 2, 3, 1, 0}}},
    {0, "major-seventh", {{x, 3, 2, 0, 0, 0}}},
    {0, "major-sixth", {{x, 3, 2, 2, 1, 0}}},
    {0, "suspended-second", {{x, 3, 0, 0, 1, 3}}},
    {0, "suspended-fourth", {{x, 3, 3, 0, 1, 1}}},
    {9, "major", {{x, 0, 2, 2, 2, 0}}},
    {9, "dominant", {{x, 0, 2, 0, 2, 0}}},
    {9, "major-seventh", {{x, 0, 2, 1, 2, 0}}},
    {9, "major-sixth", {{x, 0, 2, 2, 2, 2}}},
    {9, "suspended-second", {{x, 0, 2, 2, 0, 0}}},
    {9, "suspended-fourth", {{x, 0, 2, 2, 3, 0}}},
    {7, "major", {{3, 2, 0, 0, 0, 3}}},
    {7, "dominant", {{3, 2, 0, 0, 0, 1}}},
    {7, "major-seventh", {{3, 2, 0, 0, 0, 2}}},
    {7, "major-sixth", {{3, 2, 0, 0, 0, 0}}},
    {7, "suspended-second", {{3, 0, 0, 0, 3, 3}}},
    {7, "suspended-fourth", {{3, 3, 0, 0, 1, 3}}},
    {4, "major", {{0, 2, 2, 1, 0, 0}}},
    {4, "dominant", {{0, 2, 0, 1, 0, 0}}},
    {4, "major-seventh", {{0, 2, 1, 1, 0, 0}}},
    {4, "major-sixth", {{0, 2, 2, 1, 2, 0}}},
    {4, "suspended-fourth", {{0, 2, 2, 2, 0, 0}}},
    {2, "major", {{x, x, 0, 2, 3, 2}}},
    {2, "dominant", {{x, x, 0, 2, 1, 2}}},
    {2, "major-seventh", {{x, x, 0, 2, 2, 2}}},
    {2, "major-sixth", {{x, x, 0, 2, 0, 2}}},
    {2, "suspended-second", {{x, x, 0, 2, 3, 0}}},
    {2, "suspended-fourth", {{x, x, 0, 2, 3, 3}}},
    {9, "minor", {{x, 0, 2, 2, 1, 0}}},
    {9, "minor-seventh", {{x, 0, 2, 0, 1, 0}}},
    {9, "minor-sixth", {{x, 0, 2, 2, 1, 2}}},
    {4, "minor", {{0, 2, 2, 0, 0, 0}}},
    {4, "minor-seventh", {{0, 2, 0, 0, 0, 0}}},
    {4, "minor-sixth", {{0, 2, 2, 0, 2, 0}}},
    {2, "minor", {{x, x, 0, 2, 3, 1}}},
    {2, "minor-seventh", {{x, x, 0, 2, 1, 1}}},
    {2, "minor-sixth", {{x, x, 0, 2, 0, 1}}},
};

} // namespace

Pitch tonic(Key k) {
    return onLineOfFifths(k.fifths + (k.minor ? 4 : 1));
}

std::string keyName(Key k) {
    return noteName(tonic(k)) + (k.minor ? " minor" : " major");
}

Key shapesKey(Key concert, int fret) {
    int f = mod(concert.fifths - 7 * fret, 12);
    if (f > 6) f -= 12;
    return {f, concert.minor};
}

Pitch shapeOf(Pitch p, Key concert, int fret) {
    if (fret == 0) return p;
    const int steps = mod(tonic(shapesKey(concert, fret)).step - tonic(concert).step, 7);
    Pitch out{mod(p.step + steps, 7), 0};
    out.alter = mod(pitchClass(p) - fret - kNaturalClass[out.step], 12);
    if (out.alter > 6) out.alter -= 12;
    return simpler(out);
}

const OpenShape* openShape(Pitch root, const std::string& kind) {
    const int pc = pitchClass(root);
    for (const ShapeRow& row : kOpenShapes)
        if (row.pitchClass == pc && kind == row.kind) return &row.shape;
    return nullptr;
}

std::vector<CapoChoice> rankCapos(const std::vector<ConcertChord>& chords) {
    std::vector<CapoChoice> ranked;
    for (int fret = 0; fret <= 7; ++fret) {
        CapoChoice c;
        c.fret = fret;
        c.shapes = shapesKey(chords.empty() ? Key{} : chords.front().key, fret);
        for (size_t i = 0; i < chords.size(); ++i) {
            const ConcertChord& ch = chords[i];
            if (!ch.hasBass && openShape(shapeOf(ch.root, ch.key, fret), ch.kind))
                ++c.open;
            else
                c.hard.push_back(i);
        }
        ranked.push_back(c);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const CapoChoice& a, const CapoChoice& b) { return a.open > b.open; });
    return ranked;
}

std::string shapeName(const ConcertChord& c, int fret) {
    std::string name = noteName(shapeOf(c.root, c.key, fret)) + kindSuffix(kindIndex(c.kind));
    if (c.hasBass) name += "/" + noteName(shapeOf(c.bass, c.key, fret));
    return name;
}

const CapoChoice& bestCapo(const std::vector<CapoChoice>& ranked) {
    for (const CapoChoice& c : ranked)
        if (c.fret >= 1) return c;
    return ranked.front();
}

} // namespace musicxml
} // namespace hostsim
