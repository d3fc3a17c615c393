// Writing the document's capo chords, capo fret and labels into the tree
// read, and the tree as a MusicXML 4.0 file.
#include "sheet.h"
#include "xml.h"

#include "chords.h"

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

// A capo chord as a copy of its source <harmony>: root and bass as the
// player's shape, marked as an alternate chord at the record's height.
xmlNodePtr capoCopy(const Harmony& source, const ChordRecord& c, int fifths) {
    xmlNodePtr copy = xmlCopyNode(source.node, 1);
    const ChordFields& f = source.fields;
    if (xmlNodePtr root = child(copy, "root"))
        setPitch(root, "root-step", "root-alter",
                 fingered({f.rootStep, f.rootAlter}, c.fret(), fifths));
    if (xmlNodePtr bass = child(copy, "bass"); bass && f.bassStep >= 0)
        setPitch(bass, "bass-step", "bass-alter",
                 fingered({f.bassStep, f.bassAlter}, c.fret(), fifths));
    // A fret diagram shows the concert chord's fingering, not the shape's.
    if (xmlNodePtr frame = child(copy, "frame")) drop(frame);
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

void writeCapoChords(const Sheet& s, Part& p, int staff) {
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
            xmlNodePtr copy = capoCopy(source, c, p.fifths[static_cast<size_t>(m - 1)]);
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
