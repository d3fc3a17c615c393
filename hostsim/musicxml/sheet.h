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

struct Part {
    std::string id, name;
    std::vector<xmlNodePtr> measures;
    std::vector<Key> keys;     // in force per measure
    xmlNodePtr capo = nullptr; // <capo> of the first measure's attributes
    bool ownsCapo = false;     // read back with capo chords, or written by us
    int capoFret = 0;
    std::vector<xmlNodePtr> capoNodes; // capo chords in the tree: removed before every write
    std::vector<CapoChord> capoChords;
    std::vector<Label> labels;
    std::map<uint16_t, xmlNodePtr> labelByBlock; // label directions by text block number
};

struct Sheet {
    ~Sheet();
    xmlDocPtr doc = nullptr;
    std::string title;
    int measures = 0;
    std::vector<std::unique_ptr<Part>> parts;
    std::vector<std::unique_ptr<Harmony>> harmonies; // by number, from 1
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
