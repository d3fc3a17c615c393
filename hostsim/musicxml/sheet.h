// Inside a lead sheet: the parsed tree and what the reader found in it, for
// the reader, the mapping onto records and the writer.
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

// An ordinary chord: its element and its place.
struct Harmony {
    xmlNodePtr node = nullptr;
    int staff = 0, measure = 0;
    ChordFields fields;
    int16_t vertical = 0;
};

// A capo chord read back from a file this host wrote.
struct CapoChord {
    score::ChordRecord record;
    int measure = 0;
};

// A label direction of the first measure, as read.
struct Label {
    std::u16string text;
    int16_t vertical = 0;
    xmlNodePtr node = nullptr;
};

// The comment right after a <capo> this host wrote, by how many of it and
// its ancestors are ours: the <capo>, its <staff-details>, their <attributes>.
// A <capo> without one is the user's, never changed or removed.
constexpr const char* const kOurMarks[] = {
    " capo of the capo chords ", " capo and staff-details of the capo chords ",
    " capo, staff-details and attributes of the capo chords "};

struct Part {
    std::string id, name;
    std::vector<xmlNodePtr> measures;
    std::vector<Key> keys;         // in force per measure
    xmlNodePtr capo = nullptr;     // <capo> of the first measure's attributes
    xmlNodePtr capoMark = nullptr; // our comment after it: the <capo> is ours
    int capoFret = 0;
    std::vector<xmlNodePtr> capoNodes; // capo chords in the tree: removed before every write
    std::vector<CapoChord> capoChords;
    std::vector<Label> labels;
    std::map<uint16_t, Label> labelByBlock; // label directions by text block number
};

struct Sheet {
    ~Sheet();
    xmlDocPtr doc = nullptr;
    std::string title;
    int measures = 0;
    std::vector<std::string> numbers; // as printed, by position from 1 (the first part's)
    std::vector<std::unique_ptr<Part>> parts;
    std::vector<std::unique_ptr<Harmony>> harmonies; // by number, from 1
    std::vector<int> leftAlone; // measures of <harmony> without a root, or N.C.
    std::vector<std::string> warnings;
};

// reader.cpp: a checked file as a tree and what it holds. Null after
// saying why in *error.
std::unique_ptr<Sheet> readSheet(const std::string& path, std::string* error);

// mapping.cpp: the sheet's chords and labels as records of the document.
void buildRecords(Sheet& s);

// writer.cpp: the document's capo chords, capo fret and labels into the
// tree, and the tree saved as MusicXML 4.0.
void writeCapoChords(const Sheet& s, Part& p, int staff, bool diagrams);
void writeLabels(Part& p, int staff);
bool save(xmlDocPtr doc, const std::string& path, std::string* error);

} // namespace musicxml
} // namespace hostsim

#endif
