// Inside a lead sheet: the file's bytes, what the reader kept of its tree
// and where each kept element stands in the bytes, for the reader, the
// mapping onto records and the writer.
//
// The reader does not keep the whole tree: each measure is parsed, read and
// freed, and only the elements the host may change or copy are kept, taken
// out of the tree with their byte ranges. The writer copies the file's bytes
// and splices in what changed, so the rest leaves byte for byte as it came.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_SHEET_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_SHEET_H

#include "chords.h"
#include "mapping.h"

#include "hostsim/score.h"

#include <libxml/tree.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace hostsim {
namespace musicxml {

// An element's place in the bytes: the whitespace before it from `space`,
// its start tag from `from`, its end right before `to`.
struct Span {
    size_t space = 0, from = 0, to = 0;
};

// Where the parts of a chord that its capo chord changes stand in the bytes;
// `to` 0: the chord has none.
struct HarmonyBytes {
    Span rootStep, rootAlter, bassStep, bassAlter, frame;
    Span frameBefore; // the first element a new <frame> goes before; none: after `last`
    Span last;        // the last element inside
};

// An ordinary chord: its bytes, its staff of the part and its place.
struct Harmony {
    Span span;
    HarmonyBytes bytes;
    int part = 0, staff = 1, measure = 0; // part from 0, staff and measure from 1
    ChordFields fields;
    int16_t vertical = 0;
};

// A capo chord read back from a file this host wrote.
struct CapoChord {
    score::ChordRecord record;
    int measure = 0;
    Span span;
};

// A label direction at the start of a measure, as read (the element kept).
struct Label {
    std::u16string text;
    int16_t vertical = 0;
    xmlNodePtr node = nullptr;
    int measure = 0;
    Span span;
    bool fresh = false; // written by this run
};

// The comment right after a <capo> this host wrote, by how many of it and
// its ancestors are ours: the <capo>, its <staff-details>, their <attributes>.
// A <capo> without one is the user's, never changed or removed.
constexpr const char* const kOurMarks[] = {
    " capo of the capo chords ", " capo and staff-details of the capo chords ",
    " capo, staff-details and attributes of the capo chords "};

// Where a measure takes new elements: a direction goes before its first
// <note> (or at its end); new <attributes> right after its start tag.
struct MeasureSpan {
    Span span;
    size_t firstNote = 0;      // where a direction is inserted: its first note, or its end tag
    size_t firstNoteSpace = 0; // the whitespace before that
    bool beforeNote = false;   // it has a note
    size_t inside = 0;         // right after the start tag
    bool empty = false;        // <measure .../>: has no inside
};

struct Part;

// One staff of a part: a host staff of its own.
struct Staff {
    Part* part = nullptr;
    int number = 1;                // within the part
    int capoFret = 0;              // of the <capo> in the first measure for it; 0: none
    bool capoIsUsers = false;      // that <capo> has no mark of ours: never changed
    xmlNodePtr capo = nullptr;     // our <capo>, in the part's kept <attributes>
    xmlNodePtr capoMark = nullptr; // and the comment after it
    std::vector<CapoChord> capoChords;
    std::vector<Label> labels;
    std::map<uint16_t, Label> labelByBlock; // label directions by text block number
};

struct Part {
    std::string id, name;
    int staves = 1;
    int firstStaff = 1; // the host staff of its staff 1
    std::vector<MeasureSpan> measures;
    std::vector<Key> keys; // in force per measure
    // The first measure's first <attributes>, kept; made by the writer when
    // the measure has none and a <capo> needs one.
    xmlNodePtr attributes = nullptr;
    Span attributesSpan;
    bool attributesNew = false;
    std::vector<xmlNodePtr> changed; // elements of the kept <attributes> the writer changed
    bool attributesOurs = false; // made by this host (its mark says so): goes when empty
};

// A change to the file's bytes: [from, to) becomes `text`.
struct Patch {
    size_t from = 0, to = 0;
    std::string text;
};

// How the file lays out its elements: each level `unit` deeper, on lines of
// their own unless the file is one line.
struct Layout {
    bool lines = true;
    std::string unit = "  ";
    std::string space(int depth) const;
};

struct Sheet {
    ~Sheet();
    std::string data; // the file's bytes (as UTF-8)
    xmlDocPtr doc = nullptr;
    std::vector<xmlNodePtr> kept; // elements taken out of the tree, freed with it
    Layout layout;
    std::vector<Patch> prolog; // the version stamp and the DOCTYPE
    std::string title;
    int measures = 0;
    std::vector<std::string> numbers; // as printed, by position from 1 (the first part's)
    std::vector<std::unique_ptr<Part>> parts;
    std::vector<std::unique_ptr<Staff>> staves;      // host staves, from 1
    std::vector<std::unique_ptr<Harmony>> harmonies; // by number, from 1
    std::vector<int> leftAlone; // measures of <harmony> without a root, or N.C.
    std::vector<std::string> warnings;

    Staff& staff(int hostStaff) { return *staves[static_cast<size_t>(hostStaff - 1)]; }
};

// reader.cpp: the bytes of an element the parser saw (the attributes,
// chords and labels the reader keeps, and all inside them).
Span spanOf(const std::string& data, xmlNodePtr n);

// reader.cpp: a checked file as a sheet. Null after saying why in *error.
std::unique_ptr<Sheet> readSheet(const std::string& path, std::string* error);

// mapping.cpp: the sheet's chords and labels as records of the document.
void buildRecords(Sheet& s);

// writer.cpp: the document's capo chords, capo frets and labels as patches
// of the file, and the patched file saved as MusicXML 4.0.
void writeCapoChords(Sheet& s, int hostStaff, bool diagrams, std::vector<Patch>* out);
void writeLabels(Sheet& s, int hostStaff, std::vector<Patch>* out);
void writeAttributes(Sheet& s, std::vector<Patch>* out);
bool save(const Sheet& s, std::vector<Patch> patches, const std::string& path, std::string* error);

} // namespace musicxml
} // namespace hostsim

#endif
