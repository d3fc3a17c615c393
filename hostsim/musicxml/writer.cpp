// Writing the document's capo chords, capo frets and labels back: the
// elements they change, made or changed on the kept elements, become patches
// of the file's bytes, and the patched bytes are saved as a MusicXML 4.0 file.
#include "sheet.h"
#include "xml.h"

#include "capotext.h"
#include "chords.h"
#include "shapes.h"

#include "hostsim/ui.h"
#include "hostsim/document.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>

namespace hostsim {
namespace musicxml {
namespace {

using score::ChordRecord;

// The depth of the elements the writer adds under a measure: <attributes>,
// <direction> and <harmony> are 3 deep (score, part, measure).
constexpr int kMeasureChild = 3;

// Where the <attributes> of a measure take a <staff-details>: before these.
const char* const kAfterStaffDetails[] = {"transpose", "for-part", "directive", "measure-style"};

// The <staff-details> of the first measure's attributes for a staff: the
// one numbered for it, or, in a part of one staff, one without a number.
xmlNodePtr detailsFor(xmlNodePtr attributes, const Part& p, int staff) {
    for (xmlNodePtr d : children(attributes, "staff-details")) {
        const std::string number = attr(d, "number");
        if (number == std::to_string(staff) || (p.staves == 1 && number.empty())) return d;
    }
    return nullptr;
}

// Notes that an element of the kept <attributes> changed: the closest one
// the file had is written anew.
void changed(Part& p, xmlNodePtr n) {
    while (n && !n->_private)
        n = n->parent;
    if (n) p.changed.push_back(n);
}

// A new <capo> for a staff in the part's first <attributes>, with the
// comment that marks it and whatever of its <staff-details> and
// <attributes> we had to add as ours.
void addCapo(Sheet& s, Part& p, Staff& st) {
    const Layout& l = s.layout;
    size_t ours = 0;
    if (!p.attributes) {
        p.attributes = xmlNewDocNode(s.doc, nullptr, X("attributes"), nullptr);
        s.kept.push_back(p.attributes);
        p.attributesNew = p.attributesOurs = true;
    }
    if (p.attributesNew) ours = 1;
    xmlNodePtr details = detailsFor(p.attributes, p, st.number);
    if (!details) {
        details = xmlNewDocNode(s.doc, nullptr, X("staff-details"), nullptr);
        if (p.staves > 1) xmlSetProp(details, X("number"), X(std::to_string(st.number).c_str()));
        xmlNodePtr before = nullptr;
        for (xmlNodePtr c : children(p.attributes))
            for (const char* name : kAfterStaffDetails)
                if (!before && is(c, name)) before = c;
        insertLike(p.attributes, details, before, l.space(kMeasureChild + 1), l.unit);
        ours = p.attributesNew ? 2 : 1;
    }
    st.capo = xmlNewDocNode(s.doc, nullptr, X("capo"), nullptr);
    insertLike(details, st.capo, child(details, "staff-size"), l.space(kMeasureChild + 2), l.unit);
    st.capoMark = xmlNewDocComment(s.doc, X(kOurMarks[ours]));
    xmlAddNextSibling(st.capo, st.capoMark);
    changed(p, details);
}

// Takes out a <capo> of ours with its mark, and its <staff-details> where
// the mark says we added them and nothing else has come into them since.
// <attributes> of ours left empty go when the part is written.
void dropCapo(Part& p, Staff& st) {
    const bool detailsOurs = xmlStrcmp(st.capoMark->content, X(kOurMarks[0])) != 0;
    xmlNodePtr details = st.capo->parent;
    dropLike(st.capo);
    drop(st.capoMark);
    st.capo = st.capoMark = nullptr;
    if (detailsOurs && details && children(details).empty()) {
        dropLike(details);
        details = p.attributes;
    }
    changed(p, details);
}

// A capo chord after its source: root and bass as the player's shape, the
// shape's diagram where it is an open shape and diagrams are wanted (asked
// for, or the concert chord has one; the concert chord's would show the
// wrong fingering), at the record's height.
void appendCopy(const Sheet& s, const Harmony& source, const ChordRecord& c, Key concert,
                bool diagrams, std::string* out) {
    const ChordFields& f = source.fields;
    CapoText t;
    t.root = shapeOf({f.rootStep, f.rootAlter}, concert, c.fret());
    t.hasBass = f.bassStep >= 0;
    if (t.hasBass) t.bass = shapeOf({f.bassStep, f.bassAlter}, concert, c.fret());
    if ((diagrams || source.bytes.frame.to) && !t.hasBass)
        t.frame = openShape(t.root, kindValue(f.kind));
    t.defaultY = tenthsOf(c.vertical);
    t.unit = s.layout.unit;
    out->append(s.data, source.span.space, source.span.from - source.span.space);
    appendCapoChord(s.data, source, t, out);
}

// The capo fret in the part's first measure for the staff, in a <capo> of
// ours: written where the staff has none, taken out again when the staff
// has no capo chords.
void writeCapoFret(Sheet& s, Staff& st, int fret) {
    Part& p = *st.part;
    if (fret && !st.capoIsUsers && !p.measures.front().empty) {
        if (!st.capo) addCapo(s, p, st);
        const std::string number = std::to_string(fret);
        if (text(st.capo) != number) {
            xmlNodeSetContent(st.capo, X(number.c_str()));
            changed(p, st.capo->parent);
        }
    } else if (!fret && st.capo) {
        dropCapo(p, st);
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

// A new label direction for a staff (its words filled in by the caller).
Label newLabel(Sheet& s, const Staff& st, int measure) {
    Label label;
    label.measure = measure;
    label.fresh = true;
    label.node = xmlNewDocNode(s.doc, nullptr, X("direction"), nullptr);
    s.kept.push_back(label.node);
    xmlSetProp(label.node, X("placement"), X("above"));
    xmlNewChild(xmlNewChild(label.node, nullptr, X("direction-type"), nullptr), nullptr,
                X("words"), nullptr);
    if (st.part->staves > 1)
        xmlNewChild(label.node, nullptr, X("staff"), X(std::to_string(st.number).c_str()));
    return label;
}

// A new label direction put at the start of its measure: before the first
// note with the note's whitespace after it, else last, a level in. A
// measure without inside (<measure/>) takes none.
void insertLabel(const Sheet& s, const Staff& st, const Label& label, std::vector<Patch>* out) {
    const MeasureSpan& m = st.part->measures[static_cast<size_t>(label.measure - 1)];
    if (m.empty) return;
    const std::string space = m.beforeNote ? s.data.substr(m.firstNoteSpace, m.firstNote - m.firstNoteSpace)
                                           : s.layout.space(kMeasureChild);
    layOutChildren(label.node, space, s.layout.unit);
    const std::string direction = dumpNode(s.doc, label.node);
    if (m.beforeNote)
        out->push_back({m.firstNote, m.firstNote, direction + space});
    else
        out->push_back({m.firstNoteSpace, m.firstNoteSpace, space + direction});
}

} // namespace

void writeCapoChords(Sheet& s, int hostStaff, bool diagrams, std::vector<Patch>* out) {
    Staff& st = s.staff(hostStaff);
    for (const CapoChord& capo : st.capoChords)
        out->push_back({capo.span.space, capo.span.to, ""});
    const auto staff = static_cast<int16_t>(hostStaff);
    int fret = 0;
    for (int m = 1; m <= s.measures; ++m) {
        std::map<uint32_t, std::string> after; // harmony number: its capo chords
        for (const ChordRecord& c : score::chords(staff, static_cast<int16_t>(m))) {
            if (!c.isCapo()) continue;
            const uint32_t number = fieldsOf(c).harmony;
            if (number < 1 || number > s.harmonies.size()) continue;
            const Harmony& source = *s.harmonies[number - 1];
            if (s.parts[static_cast<size_t>(source.part)]->firstStaff + source.staff - 1 != hostStaff)
                continue;
            if (!fret) fret = c.fret();
            appendCopy(s, source, c, st.part->keys[static_cast<size_t>(m - 1)], diagrams,
                       &after[number]);
        }
        for (auto& [number, text] : after) {
            const size_t end = s.harmonies[number - 1]->span.to;
            out->push_back({end, end, std::move(text)});
        }
    }
    writeCapoFret(s, st, fret);
}

// Words the file had keep their text and attributes unless the command
// changed the block's text or height.
void writeLabels(Sheet& s, int hostStaff, std::vector<Patch>* out) {
    Staff& st = s.staff(hostStaff);
    const auto staff = static_cast<int16_t>(hostStaff);
    std::map<uint16_t, Label> labels;
    for (int m = 1; m <= s.measures; ++m)
        for (const score::MeasureTextRecord& mt :
             score::measureTexts(staff, static_cast<int16_t>(m))) {
            const auto units = labelText(mt);
            if (!units) continue;
            const auto found = st.labelByBlock.find(mt.blockNumber);
            Label label = found != st.labelByBlock.end() ? found->second : newLabel(s, st, m);
            if (found != st.labelByBlock.end()) st.labelByBlock.erase(found);
            xmlNodePtr words = labelWords(label.node);
            const std::string plain = plainText(*units);
            const bool changed = label.fresh || ui::utf16(plain) != label.text;
            if (changed) {
                xmlChar* escaped = xmlEncodeSpecialChars(s.doc, X(plain.c_str()));
                xmlNodeSetContent(words, escaped);
                xmlFree(escaped);
            }
            const bool moved = label.fresh || label.vertical != mt.vertical;
            if (moved) xmlSetProp(words, X("default-y"), X(tenthsOf(mt.vertical).c_str()));
            if (label.fresh)
                insertLabel(s, st, label, out);
            else if (changed || moved)
                out->push_back({label.span.from, label.span.to, dumpNode(s.doc, label.node)});
            label.text = ui::utf16(plain);
            label.vertical = mt.vertical;
            labels[mt.blockNumber] = label;
        }
    for (auto& gone : st.labelByBlock)
        if (!gone.second.fresh) out->push_back({gone.second.span.space, gone.second.span.to, ""});
    st.labelByBlock = labels;
}

void writeAttributes(Sheet& s, std::vector<Patch>* out) {
    for (const auto& part : s.parts) {
        Part& p = *part;
        if (!p.attributesNew && p.changed.empty()) continue;
        const bool gone = p.attributesOurs && children(p.attributes).empty();
        if (p.attributesNew) {
            const MeasureSpan& first = p.measures.front();
            if (!gone)
                out->push_back({first.inside, first.inside,
                                s.layout.space(kMeasureChild) + dumpNode(s.doc, p.attributes)});
            continue;
        }
        if (gone) {
            out->push_back({p.attributesSpan.space, p.attributesSpan.to, ""});
            continue;
        }
        // Each changed element once, and none inside another that changed.
        const std::set<xmlNodePtr> all(p.changed.begin(), p.changed.end());
        for (xmlNodePtr n : all) {
            bool inside = false;
            for (xmlNodePtr up = n->parent; up && !inside; up = up->parent)
                inside = all.count(up) > 0;
            if (inside) continue;
            const Span span = spanOf(s.data, n);
            out->push_back({span.from, span.to, dumpNode(s.doc, n)});
        }
    }
}

bool save(const Sheet& s, std::vector<Patch> patches, const std::string& path, std::string* error) {
    patches.insert(patches.end(), s.prolog.begin(), s.prolog.end());
    // In file order; at one place, what is inserted there before what is replaced from there.
    std::stable_sort(patches.begin(), patches.end(), [](const Patch& a, const Patch& b) {
        return a.from != b.from ? a.from < b.from : (a.to == a.from) > (b.to == b.from);
    });
    const std::string temp = path + ".part" + std::to_string(getpid());
    FILE* f = std::fopen(temp.c_str(), "wb");
    bool ok = f != nullptr;
    size_t at = 0;
    for (const Patch& p : patches) {
        if (p.from > at) ok = ok && std::fwrite(s.data.data() + at, 1, p.from - at, f) == p.from - at;
        ok = ok && std::fwrite(p.text.data(), 1, p.text.size(), f) == p.text.size();
        at = std::max(at, p.to);
    }
    if (at < s.data.size())
        ok = ok && std::fwrite(s.data.data() + at, 1, s.data.size() - at, f) == s.data.size() - at;
    if (f) ok = std::fclose(f) == 0 && ok;
    if (!ok || std::rename(temp.c_str(), path.c_str()) != 0) {
        std::remove(temp.c_str());
        *error = "cannot write " + path;
        return false;
    }
    return true;
}

} // namespace musicxml
} // namespace hostsim
