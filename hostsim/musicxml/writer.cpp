// Writing the document's capo chords, capo fret and labels into the tree
// read, and the tree as a MusicXML 4.0 file.
#include "sheet.h"
#include "xml.h"

#include "chords.h"
#include "shapes.h"

#include "hostsim/ui.h"
#include "hostsim/document.h"

#include <libxml/xmlsave.h>

#include <cstdio>
#include <cstring>
#include <iterator>
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

// A new <capo> in the first measure, with the comment that marks it and
// whatever of its <staff-details> and <attributes> we had to add as ours.
xmlNodePtr addCapo(xmlNodePtr measure, xmlNodePtr* mark) {
    size_t ours = 0;
    xmlNodePtr attributes = child(measure, "attributes");
    if (!attributes) {
        attributes = xmlNewNode(nullptr, X("attributes"));
        xmlNodePtr first = measure->children;
        first ? xmlAddPrevSibling(first, attributes) : xmlAddChild(measure, attributes);
        ++ours;
    }
    xmlNodePtr details = child(attributes, "staff-details");
    if (!details) {
        details = xmlNewNode(nullptr, X("staff-details"));
        xmlNodePtr before = nullptr;
        for (xmlNodePtr c : children(attributes))
            for (const char* name : kAfterStaffDetails)
                if (!before && is(c, name)) before = c;
        before ? xmlAddPrevSibling(before, details) : xmlAddChild(attributes, details);
        ++ours;
    }
    xmlNodePtr capo = xmlNewNode(nullptr, X("capo"));
    xmlNodePtr size = child(details, "staff-size");
    size ? xmlAddPrevSibling(size, capo) : xmlAddChild(details, capo);
    *mark = xmlNewComment(X(kOurMarks[ours]));
    xmlAddNextSibling(capo, *mark);
    return capo;
}

// Takes out a <capo> of ours with its mark, and the ancestors the mark says
// we added, where nothing else has come into them since.
void dropCapo(xmlNodePtr capo, xmlNodePtr mark) {
    size_t ours = 0;
    for (size_t i = 0; i < std::size(kOurMarks); ++i)
        if (xmlStrcmp(mark->content, X(kOurMarks[i])) == 0) ours = i;
    xmlNodePtr parent = capo->parent;
    drop(capo);
    drop(mark);
    for (; ours > 0 && parent && children(parent).empty(); --ours) {
        xmlNodePtr up = parent->parent;
        drop(parent);
        parent = up;
    }
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

// The capo fret in the part's first measure, in a <capo> of ours: written
// where the part has none, taken out again when the part has no capo chords.
void writeCapoFret(Part& p, int fret) {
    if (fret) {
        if (!p.capo) p.capo = addCapo(p.measures[0], &p.capoMark);
        if (p.capoMark) xmlNodeSetContent(p.capo, X(std::to_string(fret).c_str()));
    } else if (p.capoMark) {
        dropCapo(p.capo, p.capoMark);
        p.capo = p.capoMark = nullptr;
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

// The label a block was read as, or a new direction before the first note.
Label labelOf(Part& p, uint16_t block, bool* fresh) {
    *fresh = false;
    auto found = p.labelByBlock.find(block);
    if (found != p.labelByBlock.end()) {
        const Label label = found->second;
        p.labelByBlock.erase(found);
        return label;
    }
    xmlNodePtr direction = xmlNewNode(nullptr, X("direction"));
    xmlSetProp(direction, X("placement"), X("above"));
    xmlNewChild(xmlNewChild(direction, nullptr, X("direction-type"), nullptr), nullptr, X("words"),
                nullptr);
    xmlNodePtr firstNote = child(p.measures[0], "note");
    firstNote ? xmlAddPrevSibling(firstNote, direction) : xmlAddChild(p.measures[0], direction);
    *fresh = true;
    Label label;
    label.node = direction;
    return label;
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

// Words the file had keep their text and attributes unless the command
// changed the block's text or height.
void writeLabels(Part& p, int staff) {
    std::map<uint16_t, Label> labels;
    for (const score::MeasureTextRecord& mt : score::measureTexts(static_cast<int16_t>(staff), 1)) {
        const auto units = labelText(mt);
        if (!units) continue;
        bool fresh = false;
        Label label = labelOf(p, mt.blockNumber, &fresh);
        xmlNodePtr words = labelWords(label.node);
        const std::string plain = plainText(*units);
        if (fresh || ui::utf16(plain) != label.text) {
            xmlChar* escaped = xmlEncodeSpecialChars(p.measures[0]->doc, X(plain.c_str()));
            xmlNodeSetContent(words, escaped);
            xmlFree(escaped);
        }
        if (fresh || label.vertical != mt.vertical)
            xmlSetProp(words, X("default-y"), X(tenthsOf(mt.vertical).c_str()));
        label.text = ui::utf16(plain);
        label.vertical = mt.vertical;
        labels[mt.blockNumber] = label;
    }
    for (auto& gone : p.labelByBlock)
        drop(gone.second.node);
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
