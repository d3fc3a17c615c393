// Reading a MusicXML lead sheet into the simulated document and writing the
// document's chords and labels back into the same tree.
#include "leadsheet.h"

#include "hostsim/document.h"
#include "hostsim/ui.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlsave.h>
#include <zip.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace hostsim {
namespace musicxml {

namespace doc = hostsim::doc;
using score::ChordRecord;

struct Harmony {
    xmlNodePtr node = nullptr;
    int staff = 0, measure = 0;
    ChordFields fields;
    int16_t vertical = 0;
};

struct LeadSheet::Part {
    std::string id, name;
    std::vector<xmlNodePtr> measures;
    std::vector<int> fifths;     // per measure
    xmlNodePtr capo = nullptr;   // <capo> of the first measure's attributes
    bool ownsCapo = false;       // read back with capo chords, or written by us
    int capoFret = 0;
    // Capo chords read from the file or written: removed before every write.
    std::vector<xmlNodePtr> capoNodes;
    // Capo chords read from the file, and the measure of each.
    std::vector<ChordRecord> capoRecords;
    std::vector<int> capoMeasures;
    // Label directions by text block number.
    std::map<uint16_t, xmlNodePtr> labels;
    std::vector<std::pair<std::u16string, int16_t>> importedLabels;
    std::vector<xmlNodePtr> labelNodes;
};

struct LeadSheet::Xml {
    xmlDocPtr doc = nullptr;
    ~Xml() {
        if (doc) xmlFreeDoc(doc);
    }
};

namespace {

const xmlChar* X(const char* s) { return reinterpret_cast<const xmlChar*>(s); }

bool is(xmlNodePtr n, const char* name) {
    return n && n->type == XML_ELEMENT_NODE && xmlStrcmp(n->name, X(name)) == 0;
}

xmlNodePtr child(xmlNodePtr n, const char* name) {
    for (xmlNodePtr c = n ? n->children : nullptr; c; c = c->next)
        if (is(c, name)) return c;
    return nullptr;
}

std::vector<xmlNodePtr> children(xmlNodePtr n, const char* name = nullptr) {
    std::vector<xmlNodePtr> out;
    for (xmlNodePtr c = n ? n->children : nullptr; c; c = c->next)
        if (c->type == XML_ELEMENT_NODE && (!name || is(c, name))) out.push_back(c);
    return out;
}

std::string text(xmlNodePtr n) {
    if (!n) return {};
    xmlChar* t = xmlNodeGetContent(n);
    std::string s = t ? reinterpret_cast<const char*>(t) : "";
    xmlFree(t);
    const size_t a = s.find_first_not_of(" \t\r\n");
    const size_t b = s.find_last_not_of(" \t\r\n");
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

std::string attr(xmlNodePtr n, const char* name) {
    xmlChar* v = xmlGetProp(n, X(name));
    std::string s = v ? reinterpret_cast<const char*>(v) : "";
    xmlFree(v);
    return s;
}

bool number(const std::string& s, double* v) {
    if (s.empty()) return false;
    char* end = nullptr;
    *v = std::strtod(s.c_str(), &end);
    return *end == 0 && std::isfinite(*v);
}

// Whole numbers beyond a billion (durations, frets, fifths) are not believed.
long integer(xmlNodePtr n, long fallback) {
    double v = 0;
    return number(text(n), &v) && std::fabs(v) < 1e9 ? std::lround(v) : fallback;
}

// MusicXML tenths to EVPU: a staff space is 10 tenths and 24 EVPU.
int16_t evpuOf(xmlNodePtr n) {
    double v = 0;
    if (!number(attr(n, "default-y"), &v)) return 0;
    return static_cast<int16_t>(std::max(-32768.0, std::min(32767.0, std::round(v * 2.4))));
}

std::string tenthsOf(int16_t evpu) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.4f", evpu / 2.4);
    return buf;
}

int stepOf(const std::string& s) {
    static const std::string kSteps = "CDEFGAB";
    return s.size() == 1 && kSteps.find(s[0]) != std::string::npos ? static_cast<int>(kSteps.find(s[0])) : -1;
}

std::string where(const LeadSheet::Part& p, xmlNodePtr measure) {
    return "part " + p.id + ", measure " + attr(measure, "number") + " (line " +
           std::to_string(xmlGetLineNo(measure)) + ")";
}

// A harmony's first chord: root, kind, bass. False when it has no root.
bool readHarmony(xmlNodePtr h, ChordFields* f, std::string* error) {
    xmlNodePtr root = child(h, "root");
    const int step = stepOf(text(child(root, "root-step")));
    if (!root || step < 0) {
        *error = "a <harmony> without a root (line " + std::to_string(xmlGetLineNo(h)) +
                 "); zemlo-host reads chords with a <root> and <root-step> A to G";
        return false;
    }
    f->rootStep = step;
    f->rootAlter = static_cast<int>(std::max(-2L, std::min(2L, integer(child(root, "root-alter"), 0))));
    f->kind = kindIndex(text(child(h, "kind")));
    f->bassStep = -1;
    if (xmlNodePtr bass = child(h, "bass")) {
        f->bassStep = stepOf(text(child(bass, "bass-step")));
        f->bassAlter = static_cast<int>(std::max(-2L, std::min(2L, integer(child(bass, "bass-alter"), 0))));
    }
    return true;
}

// Rewrites a step/alter pair of a copied harmony as `p`.
void setPitch(xmlNodePtr parent, const char* stepName, const char* alterName, Pitch p) {
    xmlNodePtr step = child(parent, stepName);
    if (!step) return;
    xmlUnsetProp(step, X("text"));  // a display text would still show the concert note
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

std::u16string utf16(const std::string& s) {
    std::u16string out;
    for (size_t i = 0; i < s.size();) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        uint32_t cp = c;
        size_t n = 1;
        if (c >= 0xF0) cp = c & 0x07, n = 4;
        else if (c >= 0xE0) cp = c & 0x0F, n = 3;
        else if (c >= 0xC0) cp = c & 0x1F, n = 2;
        for (size_t k = 1; k < n && i + k < s.size(); ++k) cp = (cp << 6) | (s[i + k] & 0x3F);
        i += n;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
    }
    return out;
}

}  // namespace

std::string plainText(const std::u16string& raw) {
    std::u16string out;
    for (size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == u'^' && i + 1 < raw.size() && raw[i + 1] == u'^') {
            out += u'^';
            ++i;
        } else if (raw[i] == u'^') {
            const size_t close = raw.find(u')', i);
            if (close == std::u16string::npos) break;
            i = close;
        } else {
            out += raw[i];
        }
    }
    return ui::utf8(out);
}

namespace {

// The direction is a label candidate when it holds nothing but one <words>.
xmlNodePtr labelWords(xmlNodePtr direction) {
    const auto types = children(direction, "direction-type");
    if (types.size() != 1) return nullptr;
    const auto inner = children(types[0]);
    return inner.size() == 1 && is(inner[0], "words") ? inner[0] : nullptr;
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

void drop(xmlNodePtr n) {
    xmlUnlinkNode(n);
    xmlFreeNode(n);
}

bool readFile(const std::string& path, std::string* data, std::string* error) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) {
        *error = "cannot open " + path + ": no such file";
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        *error = path + " is not a file";
        return false;
    }
    if (static_cast<uint64_t>(st.st_size) > kMaxFileBytes) {
        char mb[32];
        std::snprintf(mb, sizeof mb, "%.1f", static_cast<double>(st.st_size) / (1 << 20));
        *error = path + " is " + mb + " MB; zemlo-host reads MusicXML files up to " +
                 std::to_string(kMaxFileBytes >> 20) + " MB";
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    if (!in.good() && !in.eof()) {
        *error = "cannot read " + path;
        return false;
    }
    *data = s.str();
    return true;
}

void quiet(void*, const char*, ...) {}

// One entry of a zip archive, refused when it unpacks to more than the limit.
bool readEntry(zip_t* z, const std::string& name, std::string* data) {
    zip_file_t* f = zip_fopen(z, name.c_str(), 0);
    if (!f) return false;
    data->clear();
    char buf[65536];
    zip_int64_t n = 0;
    while ((n = zip_fread(f, buf, sizeof buf)) > 0 && data->size() <= kMaxFileBytes)
        data->append(buf, static_cast<size_t>(n));
    zip_fclose(f);
    return n >= 0 || data->size() > kMaxFileBytes;
}

// The score of a compressed MusicXML file: the first root file that
// META-INF/container.xml names.
bool unpack(const std::string& path, std::string* data, std::string* error) {
    int code = 0;
    zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!z) {
        *error = path + " is not compressed MusicXML (not a zip archive)";
        return false;
    }
    std::string container, score;
    bool ok = readEntry(z, "META-INF/container.xml", &container);
    if (ok) {
        xmlDocPtr d = xmlReadMemory(container.data(), static_cast<int>(container.size()), "container.xml", nullptr,
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        xmlNodePtr rootfile = child(child(d ? xmlDocGetRootElement(d) : nullptr, "rootfiles"), "rootfile");
        score = rootfile ? attr(rootfile, "full-path") : "";
        if (d) xmlFreeDoc(d);
    }
    ok = ok && !score.empty() && readEntry(z, score, data);
    zip_close(z);
    if (!ok) {
        *error = path + " is not compressed MusicXML (no score named by META-INF/container.xml)";
        return false;
    }
    if (data->size() > kMaxFileBytes) {
        *error = path + " unpacks to more than " + std::to_string(kMaxFileBytes >> 20) +
                 " MB; zemlo-host reads MusicXML files up to that";
        return false;
    }
    return true;
}

}  // namespace

LeadSheet::LeadSheet() : xml_(new Xml) {}
LeadSheet::~LeadSheet() = default;

std::unique_ptr<LeadSheet> LeadSheet::read(const std::string& path, std::string* error) {
    std::string data;
    if (!readFile(path, &data, error)) return nullptr;
    if (path.size() > 4 && path.compare(path.size() - 4, 4, ".mxl") == 0 && !unpack(path, &data, error))
        return nullptr;
    std::unique_ptr<LeadSheet> sheet(new LeadSheet);
    // No network, no external DTD, entities left as references; libxml2's
    // own limits on depth and entity amplification stay on.
    xmlSetGenericErrorFunc(nullptr, quiet);
    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (!ctxt) {
        *error = "out of memory";
        return nullptr;
    }
    sheet->xml_->doc = xmlCtxtReadMemory(ctxt, data.data(), static_cast<int>(data.size()), path.c_str(),
                                         nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!sheet->xml_->doc) {
        const xmlError* e = xmlCtxtGetLastError(ctxt);
        std::string why = e && e->message ? e->message : "unreadable";
        while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
        *error = path + " is not well-formed XML (line " + std::to_string(e ? e->line : 0) + ": " + why + ")";
        xmlFreeParserCtxt(ctxt);
        return nullptr;
    }
    xmlFreeParserCtxt(ctxt);

    // Entities are left unexpanded in the tree, but reading a text expands
    // them: a file that declares its own could blow up there.
    xmlDtdPtr subset = xmlGetIntSubset(sheet->xml_->doc);
    if (subset && (subset->entities || subset->pentities)) {
        *error = path + " declares its own XML entities; zemlo-host does not expand them";
        return nullptr;
    }
    xmlNodePtr root = xmlDocGetRootElement(sheet->xml_->doc);
    if (!is(root, "score-partwise")) {
        *error = path + " is not a partwise MusicXML score (its root element is <" +
                 (root ? reinterpret_cast<const char*>(root->name) : "none") + ">)";
        return nullptr;
    }
    sheet->title_ = text(child(child(root, "work"), "work-title"));
    if (sheet->title_.empty()) sheet->title_ = text(child(root, "movement-title"));
    std::map<std::string, std::string> names;
    for (xmlNodePtr sp : children(child(root, "part-list"), "score-part"))
        names[attr(sp, "id")] = text(child(sp, "part-name"));

    for (xmlNodePtr partNode : children(root, "part")) {
        auto part = std::make_unique<Part>();
        part->id = attr(partNode, "id");
        part->name = names.count(part->id) ? names[part->id] : part->id;
        const int staff = static_cast<int>(sheet->parts_.size()) + 1;
        long divisions = 1;
        int fifths = 0;
        long lastNumber = 0;
        std::vector<Harmony> alternates;
        for (xmlNodePtr m : children(partNode, "measure")) {
            const int measure = static_cast<int>(part->measures.size()) + 1;
            if (measure > 32767) {
                *error = path + " has more measures than zemlo-host keeps (32767)";
                return nullptr;
            }
            double n = 0;
            const std::string numberText = attr(m, "number");
            if (number(numberText, &n) && attr(m, "implicit") != "yes") {
                if (measure > 1 && n <= lastNumber) {
                    *error = path + ": measure " + numberText + " of part " + part->id +
                             " is out of order (it follows measure " + std::to_string(lastNumber) + ")";
                    return nullptr;
                }
                lastNumber = std::lround(n);
            }
            part->measures.push_back(m);
            long pos = 0;  // in divisions
            const Harmony* lastOrdinary = nullptr;
            for (xmlNodePtr c : children(m)) {
                if (is(c, "attributes")) {
                    divisions = std::max(1L, integer(child(c, "divisions"), divisions));
                    if (xmlNodePtr key = child(c, "key")) fifths = static_cast<int>(integer(child(key, "fifths"), fifths));
                    if (measure == 1)
                        if (xmlNodePtr capo = child(child(c, "staff-details"), "capo")) {
                            part->capo = capo;
                            part->capoFret = static_cast<int>(integer(capo, 0));
                        }
                } else if (is(c, "note")) {
                    if (!child(c, "chord") && !child(c, "grace")) pos += integer(child(c, "duration"), 0);
                } else if (is(c, "backup")) {
                    pos -= integer(child(c, "duration"), 0);
                } else if (is(c, "forward")) {
                    pos += integer(child(c, "duration"), 0);
                } else if (is(c, "direction") && measure == 1 && pos == 0 && !child(c, "offset")) {
                    if (xmlNodePtr words = labelWords(c)) {
                        part->importedLabels.push_back({utf16(text(words)), evpuOf(words)});
                        part->labelNodes.push_back(c);
                    }
                } else if (is(c, "harmony")) {
                    Harmony h;
                    h.node = c;
                    h.staff = staff;
                    h.measure = measure;
                    h.vertical = evpuOf(c);
                    if (!readHarmony(c, &h.fields, error)) {
                        *error = path + ": " + where(*part, m) + " holds " + *error;
                        return nullptr;
                    }
                    const long at = pos + integer(child(c, "offset"), 0);
                    h.fields.onset = static_cast<int32_t>(
                        std::max<long long>(-2000000000LL, std::min<long long>(2000000000LL,
                            static_cast<long long>(at) * kOnsetPerQuarter / divisions)));
                    // An alternate chord right after a chord at its onset, a capo
                    // fret lower, is a capo chord written by this host.
                    const bool capoChord =
                        attr(c, "type") == "alternate" && part->capoFret > 0 && part->capoFret < 64 &&
                        lastOrdinary && lastOrdinary->fields.onset == h.fields.onset &&
                        pitchClass({h.fields.rootStep, h.fields.rootAlter}) ==
                            ((pitchClass({lastOrdinary->fields.rootStep, lastOrdinary->fields.rootAlter}) -
                              part->capoFret) % 12 + 12) % 12;
                    if (capoChord) {
                        h.fields = lastOrdinary->fields;
                        alternates.push_back(h);
                        part->capoNodes.push_back(c);
                    } else {
                        h.fields.harmony = static_cast<uint32_t>(sheet->harmonies_.size() + 1);
                        sheet->harmonies_.push_back(std::make_unique<Harmony>(h));
                        lastOrdinary = sheet->harmonies_.back().get();
                    }
                }
            }
            part->fifths.push_back(fifths);
        }
        // Ordinary chords are numbered in file order; a capo chord took its source's fields.
        for (Harmony& a : alternates) {
            ChordRecord r;
            r.vertical = a.vertical;
            setFields(r, a.fields);
            r.capoBits = static_cast<uint16_t>(0x0040 | part->capoFret);
            part->capoRecords.push_back(r);
            part->capoMeasures.push_back(a.measure);
        }
        part->ownsCapo = part->capo && !alternates.empty();
        if (staff > 1 && part->measures.size() != static_cast<size_t>(sheet->measures_)) {
            *error = path + ": part " + part->id + " has " + std::to_string(part->measures.size()) +
                     " measures, the first part " + std::to_string(sheet->measures_);
            return nullptr;
        }
        sheet->measures_ = static_cast<int>(part->measures.size());
        sheet->parts_.push_back(std::move(part));
    }
    if (sheet->parts_.empty() || sheet->measures_ == 0) {
        *error = path + " holds no measures";
        return nullptr;
    }
    return sheet;
}

void LeadSheet::build() {
    score::Score s(staves(), measures_);
    score::addFont(4, u"Times New Roman", 4096);
    std::map<std::pair<int, int>, std::vector<const Harmony*>> byPlace;
    for (const auto& h : harmonies_) byPlace[{h->staff, h->measure}].push_back(h.get());
    for (int staff = 1; staff <= staves(); ++staff) {
        Part& p = *parts_[static_cast<size_t>(staff - 1)];
        for (int m = 1; m <= measures_; ++m) {
            std::vector<const Harmony*> here = byPlace[{staff, m}];
            std::stable_sort(here.begin(), here.end(), [](const Harmony* a, const Harmony* b) {
                return a->fields.onset < b->fields.onset;
            });
            int16_t ordinal = 0;
            for (size_t i = 0; i < here.size(); ++i) {
                ordinal = i > 0 && here[i - 1]->fields.onset == here[i]->fields.onset ? ordinal + 1 : 0;
                ChordRecord r;
                r.key1 = ordinal;
                r.vertical = here[i]->vertical;
                setFields(r, here[i]->fields);
                s.chord(static_cast<int16_t>(staff), static_cast<int16_t>(m), r);
            }
            for (size_t i = 0; i < p.capoRecords.size(); ++i) {
                if (p.capoMeasures[i] != m) continue;
                ChordRecord r = p.capoRecords[i];
                // The source's ordinal among chords at its onset.
                for (const ChordRecord& c : score::chords(static_cast<int16_t>(staff), static_cast<int16_t>(m)))
                    if (!c.isCapo() && fieldsOf(c).harmony == fieldsOf(r).harmony) r.key1 = c.key1;
                s.chord(static_cast<int16_t>(staff), static_cast<int16_t>(m), r);
            }
        }
        p.labels.clear();
        for (size_t i = 0; i < p.importedLabels.size(); ++i) {
            s.textBlock(static_cast<int16_t>(staff), 1, -200, p.importedLabels[i].second, p.importedLabels[i].first);
            p.labels[score::measureTexts(static_cast<int16_t>(staff), 1).back().blockNumber] = p.labelNodes[i];
        }
    }
}

std::string LeadSheet::partName(int staff) const {
    return staff >= 1 && staff <= staves() ? parts_[static_cast<size_t>(staff - 1)]->name : std::string();
}

int LeadSheet::fifths(int staff, int measure) const {
    if (staff < 1 || staff > staves() || measure < 1 || measure > measures_) return 0;
    return parts_[static_cast<size_t>(staff - 1)]->fifths[static_cast<size_t>(measure - 1)];
}

int LeadSheet::fileCapo() const {
    for (const auto& p : parts_)
        if (p->capoFret > 0) return p->capoFret;
    return 0;
}

bool LeadSheet::write(const std::string& path, std::string* error) {
    xmlDocPtr d = xml_->doc;
    for (int staff = 1; staff <= staves(); ++staff) {
        Part& p = *parts_[static_cast<size_t>(staff - 1)];
        for (xmlNodePtr n : p.capoNodes) drop(n);
        p.capoNodes.clear();
        int fret = 0;
        for (int m = 1; m <= measures_; ++m) {
            std::map<uint32_t, xmlNodePtr> last;  // harmony number: node the next copy follows
            for (const ChordRecord& c : score::chords(static_cast<int16_t>(staff), static_cast<int16_t>(m))) {
                if (!c.isCapo()) continue;
                const uint32_t number = fieldsOf(c).harmony;
                if (number < 1 || number > harmonies_.size()) continue;
                const Harmony& source = *harmonies_[number - 1];
                if (!fret) fret = c.fret();
                xmlNodePtr copy = xmlCopyNode(source.node, 1);
                const int keyFifths = fifths(staff, m);
                ChordFields f = source.fields;
                if (xmlNodePtr root = child(copy, "root"))
                    setPitch(root, "root-step", "root-alter", fingered({f.rootStep, f.rootAlter}, c.fret(), keyFifths));
                if (xmlNodePtr bass = child(copy, "bass"); bass && f.bassStep >= 0)
                    setPitch(bass, "bass-step", "bass-alter", fingered({f.bassStep, f.bassAlter}, c.fret(), keyFifths));
                // A fret diagram shows the concert chord's fingering, not the shape's.
                if (xmlNodePtr frame = child(copy, "frame")) drop(frame);
                xmlSetProp(copy, X("type"), X("alternate"));
                xmlSetProp(copy, X("default-y"), X(tenthsOf(c.vertical).c_str()));
                xmlNodePtr& after = last[number];
                xmlAddNextSibling(after ? after : source.node, copy);
                after = copy;
                p.capoNodes.push_back(copy);
            }
        }
        // The capo fret in the part's first measure.
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
        // Labels: the text blocks of the first measure as <words> directions.
        std::map<uint16_t, xmlNodePtr> labels;
        const auto places = score::measureTexts(static_cast<int16_t>(staff), 1);
        for (const score::MeasureTextRecord& mt : places) {
            auto rawNumber = doc::get(doc::kTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0});
            if (!rawNumber || rawNumber->size() < 2) continue;
            int16_t raw = 0;
            std::memcpy(&raw, rawNumber->data(), sizeof raw);
            const auto units = doc::getText(doc::kRawText, {raw, 0, 0});
            if (!units) continue;
            xmlNodePtr direction = nullptr;
            auto found = p.labels.find(mt.blockNumber);
            if (found != p.labels.end()) {
                direction = found->second;
                p.labels.erase(found);
            } else {
                direction = xmlNewNode(nullptr, X("direction"));
                xmlSetProp(direction, X("placement"), X("above"));
                xmlNewChild(xmlNewChild(direction, nullptr, X("direction-type"), nullptr), nullptr, X("words"), nullptr);
                xmlNodePtr firstNote = child(p.measures[0], "note");
                firstNote ? xmlAddPrevSibling(firstNote, direction) : xmlAddChild(p.measures[0], direction);
            }
            xmlNodePtr words = labelWords(direction);
            xmlChar* escaped = xmlEncodeSpecialChars(d, X(plainText(*units).c_str()));
            xmlNodeSetContent(words, escaped);
            xmlFree(escaped);
            xmlSetProp(words, X("default-y"), X(tenthsOf(mt.vertical).c_str()));
            labels[mt.blockNumber] = direction;
        }
        for (auto& gone : p.labels) drop(gone.second);
        p.labels = labels;
    }
    // Written as MusicXML 4.0.
    xmlNodePtr root = xmlDocGetRootElement(d);
    xmlSetProp(root, X("version"), X("4.0"));
    if (xmlDtdPtr old = xmlGetIntSubset(d)) {
        xmlUnlinkNode(reinterpret_cast<xmlNodePtr>(old));
        xmlFreeDtd(old);
    }
    xmlCreateIntSubset(d, X("score-partwise"), X("-//Recordare//DTD MusicXML 4.0 Partwise//EN"),
                       X("http://www.musicxml.org/dtds/partwise.dtd"));
    const std::string temp = path + ".part" + std::to_string(getpid());
    if (xmlSaveFileEnc(temp.c_str(), d, "UTF-8") < 0) {
        std::remove(temp.c_str());
        *error = "cannot write " + path;
        return false;
    }
    if (std::rename(temp.c_str(), path.c_str()) != 0) {
        std::remove(temp.c_str());
        *error = "cannot write " + path;
        return false;
    }
    return true;
}

}  // namespace musicxml
}  // namespace hostsim
