// Writing the document's capo chords, capo fret and labels into the tree
// read, and the tree as a MusicXML 4.0 file.
#include "sheet.h"
#include "xml.h"

#include "chords.h"
#include "shapes.h"

#include "hostsim/document.h"

#include <libxml/xmlsave.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <unistd.h>

namespace hostsim {
namespace musicxml {
namespace {

using score::ChordRecord;

// Rewrites a step/alter pair of a copied harmony as `p`.
void setPitch(xmlNodePtr parent, const char* stepName, const char* alterName, Pitch p) {
    xmlNodePtr step = child(parent, stepName);
    if (!step) return;
    xmlUnsetProp(step, X("text")); // a display text would still show the concert note
    const std::string s(1, "CDEFGAB"[p.step]);
    xmlNodeSetContent(step, X(s.c_str()));
    xmlNodePtr alter = child(parent, alterName);
    if (p.alter == 0) {
        if (alter) {
            xmlUnlinkNode(alter);
            xmlFreeNode(alter);
        }
        return;
    }
    if (!alter) {
        alter = xmlNewNode(nullptr, X(alterName));
        xmlAddNextSibling(step, alter);
    }
    xmlNodeSetContent(alter, X(std::to_string(p.alter).c_str()));
}

// Where the <attributes> of a measure take a <staff-details>: before these.
const char* const kAfterStaffDetails[] = {"transpose", "for-part", "directive", "measure-style"};

xmlNodePtr ensureCapo(xmlNodePtr measure) {
    xmlNodePtr attributes = child(measure, "attributes");
    if (!attributes) {
        attributes = xmlNewNode(nullptr, X("attributes"));
        xmlNodePtr first = measure->children;
        first ? xmlAddPrevSibling(first, attributes) : xmlAddChild(measure, attributes);
    }
    xmlNodePtr details = child(attributes, "staff-details");
    if (!details) {
        details = xmlNewNode(nullptr, X("staff-details"));
        xmlNodePtr before = nullptr;
        for (xmlNodePtr c : children(attributes))
            for (const char* name : kAfterStaffDetails)
                if (!before && is(c, name)) before = c;
        before ? xmlAddPrevSibling(before, details) : xmlAddChild(attributes, details);
    }
    xmlNodePtr capo = xmlNewNode(nullptr, X("capo"));
    xmlNodePtr size = child(details, "staff-size");
    size ? xmlAddPrevSibling(size, capo) : xmlAddChild(details, capo);
    return capo;
}

// The diagram of an open shape, frets counted from the capo as the player
// counts them; strings not played get no note.
xmlNodePtr frameOf(const OpenShape& shape) {
    xmlNodePtr frame = xmlNewNode(nullptr, X("frame"));
    xmlSetProp(frame, X("unplayed"), X("x"));
    xmlNewChild(frame, nullptr, X("frame-strings"), X("6"));
    xmlNewChild(frame, nullptr, X("frame-frets"), X("4"));
    for (int i = 0; i < 6; ++i) {
        if (shape.frets[i] < 0) continue;
        xmlNodePtr note = xmlNewChild(frame, nullptr, X("frame-note"), nullptr);
        xmlNewChild(note, nullptr, X("string"), X(std::to_string(6 - i).c_str()));
        xmlNewChild(note, nullptr, X("fret"), X(std::to_string(shape.frets[i]).c_str()));
    }
    return frame;
}

// A <frame> goes after the chord and before these.
const char* const kAfterFrame[] = {"offset", "footnote", "level", "staff"};

// The copy's diagram: the shape's own where it is an open shape and diagrams
// are wanted (asked for, or the concert chord has one); none otherwise, as
// the concert chord's would show the wrong fingering.
void setFrame(xmlNodePtr copy, Pitch shapeRoot, const ChordFields& f, bool wanted) {
    xmlNodePtr old = child(copy, "frame");
    const OpenShape* shape =
        (wanted || old) && f.bassStep < 0 ? openShape(shapeRoot, kindValue(f.kind)) : nullptr;
    if (shape) {
        xmlNodePtr frame = frameOf(*shape);
        xmlNodePtr before = old;
        for (xmlNodePtr c : children(copy))
            for (const char* name : kAfterFrame)
                if (!before && is(c, name)) before = c;
        before ? xmlAddPrevSibling(before, frame) : xmlAddChild(copy, frame);
    }
    if (old) drop(old);
}

// A capo chord as a copy of its source <harmony>: root and bass as the
// player's shape, marked as an alternate chord at the record's height.
xmlNodePtr capoCopy(const Harmony& source, const ChordRecord& c, Key concert, bool diagrams) {
    xmlNodePtr copy = xmlCopyNode(source.node, 1);
    const ChordFields& f = source.fields;
    const Pitch root = shapeOf({f.rootStep, f.rootAlter}, concert, c.fret());
    if (xmlNodePtr r = child(copy, "root")) setPitch(r, "root-step", "root-alter", root);
    if (xmlNodePtr bass = child(copy, "bass"); bass && f.bassStep >= 0)
        setPitch(bass, "bass-step", "bass-alter",
                 shapeOf({f.bassStep, f.bassAlter}, concert, c.fret()));
    setFrame(copy, root, f, diagrams);
    xmlSetProp(copy, X("type"), X("alternate"));
    xmlSetProp(copy, X("default-y"), X(tenthsOf(c.vertical).c_str()));
    return copy;
}

// The capo fret in the part's first measure; taken out again when the part
// has no capo chords and the fret was ours.
void writeCapoFret(Part& p, int fret) {
    if (fret) {
        if (!p.capo) p.capo = ensureCapo(p.measures[0]);
        xmlNodeSetContent(p.capo, X(std::to_string(fret).c_str()));
        p.ownsCapo = true;
    } else if (p.capo && p.ownsCapo) {
        xmlNodePtr details = p.capo->parent;
        drop(p.capo);
        p.capo = nullptr;
        p.ownsCapo = false;
        if (details && children(details).empty()) drop(details);
    }
}

// The raw text of a measure text's block, or null.
std::optional<std::u16string> labelText(const score::MeasureTextRecord& mt) {
    auto block = doc::get(doc::kTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0});
    if (!block || block->size() < 2) return std::nullopt;
    int16_t raw = 0;
    std::memcpy(&raw, block->data(), sizeof raw);
    return doc::getText(doc::kRawText, {raw, 0, 0});
}

// The direction a label block was read from, or a new one before the first note.
xmlNodePtr labelDirection(Part& p, uint16_t block) {
    auto found = p.labelByBlock.find(block);
    if (found != p.labelByBlock.end()) {
        xmlNodePtr direction = found->second;
        p.labelByBlock.erase(found);
        return direction;
    }
    xmlNodePtr direction = xmlNewNode(nullptr, X("direction"));
    xmlSetProp(direction, X("placement"), X("above"));
    xmlNewChild(xmlNewChild(direction, nullptr, X("direction-type"), nullptr), nullptr, X("words"),
                nullptr);
    xmlNodePtr firstNote = child(p.measures[0], "note");
    firstNote ? xmlAddPrevSibling(firstNote, direction) : xmlAddChild(p.measures[0], direction);
    return direction;
}

} // namespace

void writeCapoChords(const Sheet& s, Part& p, int staff, bool diagrams) {
    for (xmlNodePtr n : p.capoNodes)
        drop(n);
    p.capoNodes.clear();
    int fret = 0;
    for (int m = 1; m <= s.measures; ++m) {
        std::map<uint32_t, xmlNodePtr> last; // harmony number: node the next copy follows
        for (const ChordRecord& c :
             score::chords(static_cast<int16_t>(staff), static_cast<int16_t>(m))) {
            if (!c.isCapo()) continue;
            const uint32_t number = fieldsOf(c).harmony;
            if (number < 1 || number > s.harmonies.size()) continue;
            const Harmony& source = *s.harmonies[number - 1];
            if (!fret) fret = c.fret();
            xmlNodePtr copy = capoCopy(source, c, p.keys[static_cast<size_t>(m - 1)], diagrams);
            xmlNodePtr& after = last[number];
            xmlAddNextSibling(after ? after : source.node, copy);
            after = copy;
            p.capoNodes.push_back(copy);
        }
    }
    writeCapoFret(p, fret);
}

void writeLabels(Part& p, int staff) {
    std::map<uint16_t, xmlNodePtr> labels;
    for (const score::MeasureTextRecord& mt : score::measureTexts(static_cast<int16_t>(staff), 1)) {
        const auto units = labelText(mt);
        if (!units) continue;
        xmlNodePtr direction = labelDirection(p, mt.blockNumber);
        xmlNodePtr words = labelWords(direction);
        xmlChar* escaped = xmlEncodeSpecialChars(p.measures[0]->doc, X(plainText(*units).c_str()));
        xmlNodeSetContent(words, escaped);
        xmlFree(escaped);
        xmlSetProp(words, X("default-y"), X(tenthsOf(mt.vertical).c_str()));
        labels[mt.blockNumber] = direction;
    }
    for (auto& gone : p.labelByBlock)
        drop(gone.second);
    p.labelByBlock = labels;
}

bool save(xmlDocPtr d, const std::string& path, std::string* error) {
    xmlNodePtr root = xmlDocGetRootElement(d);
    xmlSetProp(root, X("version"), X("4.0"));
    if (xmlDtdPtr old = xmlGetIntSubset(d)) {
        xmlUnlinkNode(reinterpret_cast<xmlNodePtr>(old));
        xmlFreeDtd(old);
    }
    xmlCreateIntSubset(d, X("score-partwise"), X("-//Recordare//DTD MusicXML 4.0 Partwise//EN"),
                       X("http://www.musicxml.org/dtds/partwise.dtd"));
    const std::string temp = path + ".part" + std::to_string(getpid());
    if (xmlSaveFileEnc(temp.c_str(), d, "UTF-8") < 0 ||
        std::rename(temp.c_str(), path.c_str()) != 0) {
        std::remove(temp.c_str());
        *error = "cannot write " + path;
        return false;
    }
    return true;
}

} // namespace musicxml
} // namespace hostsim
