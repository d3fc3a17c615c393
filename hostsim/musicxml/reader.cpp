// Reading a MusicXML lead sheet: the file (unpacked when compressed), the
// tree, and the parts' measures, keys, chords, capo and labels.
#include "bytes.h"
#include "leadsheet.h"
#include "sheet.h"
#include "xml.h"

#include "hostsim/ui.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <zip.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sys/stat.h>

namespace hostsim {
namespace musicxml {
namespace {

using score::ChordRecord;

constexpr int kMaxMeasures = 32767;

int stepOf(const std::string& s) {
    static const std::string kSteps = "CDEFGAB";
    return s.size() == 1 && kSteps.find(s[0]) != std::string::npos
               ? static_cast<int>(kSteps.find(s[0]))
               : -1;
}

int16_t evpuOf(xmlNodePtr n) {
    double v = 0;
    return number(attr(n, "default-y"), &v) ? evpuOfTenths(v) : 0;
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
    // Straight into the string: a large score is not copied through a stream.
    std::ifstream in(path, std::ios::binary);
    data->resize(static_cast<size_t>(st.st_size));
    in.read(data->data(), static_cast<std::streamsize>(data->size()));
    if (!in && !in.eof()) {
        *error = "cannot read " + path;
        return false;
    }
    data->resize(static_cast<size_t>(in.gcount()));
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

// The root file that META-INF/container.xml names; empty when it names none
// or cannot be read.
std::string rootFile(zip_t* z) {
    std::string container, score;
    if (!readEntry(z, "META-INF/container.xml", &container)) return score;
    xmlDocPtr d =
        xmlReadMemory(container.data(), static_cast<int>(container.size()), "container.xml",
                      nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    xmlNodePtr rootfile =
        child(child(d ? xmlDocGetRootElement(d) : nullptr, "rootfiles"), "rootfile");
    score = rootfile ? attr(rootfile, "full-path") : "";
    if (d) xmlFreeDoc(d);
    return score;
}

// The one score at the archive's top level (.musicxml or .xml); empty when
// there is none or more than one.
std::string onlyTopLevelScore(zip_t* z) {
    std::string found;
    const zip_int64_t n = zip_get_num_entries(z, 0);
    for (zip_int64_t i = 0; i < n; ++i) {
        const char* name = zip_get_name(z, static_cast<zip_uint64_t>(i), 0);
        const std::string entry = name ? name : "";
        const size_t dot = entry.find_last_of('.');
        const std::string ext = dot == std::string::npos ? "" : entry.substr(dot);
        if (entry.find('/') != std::string::npos || (ext != ".musicxml" && ext != ".xml")) continue;
        if (!found.empty()) return "";
        found = entry;
    }
    return found;
}

// The score of a compressed MusicXML file: the first root file that
// META-INF/container.xml names, or, when the container cannot be read, the
// one score at the top level (with a warning).
bool unpack(const std::string& path, std::string* data, std::string* error,
            std::vector<std::string>* warnings) {
    int code = 0;
    zip_t* z = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!z) {
        *error = path + " is not compressed MusicXML (not a zip archive)";
        return false;
    }
    std::string score = rootFile(z);
    if (score.empty()) {
        score = onlyTopLevelScore(z);
        if (!score.empty())
            warnings->push_back(path + ": META-INF/container.xml names no score; read " + score +
                                ", the one score at the top level");
    }
    const bool ok = !score.empty() && readEntry(z, score, data);
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

// The file's bytes: as they are, or the score inside a compressed file.
bool loadFile(const std::string& path, std::string* data, std::string* error,
              std::vector<std::string>* warnings) {
    if (!readFile(path, data, error)) return false;
    return path.size() <= 4 || path.compare(path.size() - 4, 4, ".mxl") != 0 ||
           unpack(path, data, error, warnings);
}

// A harmony's first chord: root, kind, bass. False when it has no root
// (a numeral or a function) or is no chord (kind none): left alone.
bool readHarmony(xmlNodePtr h, ChordFields* f) {
    xmlNodePtr root = child(h, "root");
    const int step = stepOf(text(child(root, "root-step")));
    if (!root || step < 0 || text(child(h, "kind")) == "none") return false;
    f->rootStep = step;
    f->rootAlter =
        static_cast<int>(std::max(-2L, std::min(2L, integer(child(root, "root-alter"), 0))));
    f->kind = kindIndex(text(child(h, "kind")));
    f->bassStep = -1;
    if (xmlNodePtr bass = child(h, "bass")) {
        f->bassStep = stepOf(text(child(bass, "bass-step")));
        f->bassAlter =
            static_cast<int>(std::max(-2L, std::min(2L, integer(child(bass, "bass-alter"), 0))));
    }
    return true;
}

int semitonesDown(Pitch from, Pitch to) {
    return ((pitchClass(from) - pitchClass(to)) % 12 + 12) % 12;
}

// The comment right after a <capo>, when this host wrote it; null otherwise.
xmlNodePtr ourMark(xmlNodePtr capo) {
    xmlNodePtr n = capo->next;
    while (n && xmlIsBlankNode(n))
        n = n->next;
    if (!n || n->type != XML_COMMENT_NODE) return nullptr;
    const char* t = reinterpret_cast<const char*>(n->content);
    for (const char* mark : kOurMarks)
        if (t && std::strcmp(t, mark) == 0) return n;
    return nullptr;
}

// Takes a kept element out of the tree; it lives as long as the sheet.
xmlNodePtr keep(Sheet& sheet, xmlNodePtr n) {
    xmlUnlinkNode(n);
    sheet.kept.push_back(n);
    return n;
}

// A capo of the first measure: the staves it is for (0: all of the part's).
struct CapoRead {
    int fret = 0;
    bool ours = false;
    xmlNodePtr node = nullptr, mark = nullptr; // ours only: in the kept <attributes>
};

// One part, measure by measure as the parser finishes each, onsets counted
// in the part's divisions.
class PartReader {
  public:
    PartReader(Sheet& sheet, Part& part, int index) : sheet_(sheet), part_(part), index_(index) {}

    // A measure the parser has finished; `inside` is where its start tag ends.
    bool measure(xmlNodePtr m, size_t inside) {
        const int index = static_cast<int>(part_.measures.size()) + 1;
        if (index > kMaxMeasures) return false;
        MeasureSpan ms;
        ms.span = spanOf(sheet_.data, m);
        ms.inside = inside;
        ms.empty = sheet_.data[ms.span.to - 2] == '/';
        ms.firstNote = ms.empty ? ms.span.to : sheet_.data.rfind("</", ms.span.to);
        ms.firstNoteSpace = ms.firstNote;
        while (ms.firstNoteSpace > inside && isSpace(sheet_.data[ms.firstNoteSpace - 1]))
            --ms.firstNoteSpace;
        if (index_ == 0) sheet_.numbers.push_back(attr(m, "number"));
        pos_ = 0;
        lastOrdinary_ = nullptr;
        const auto elements = children(m);
        if (index == 1) firstAttributes(elements);
        bool noted = false;
        for (xmlNodePtr c : elements) {
            if (is(c, "attributes")) {
                attributes(c);
            } else if (is(c, "note")) {
                if (!noted) {
                    const Span note = spanOf(sheet_.data, c);
                    ms.firstNote = note.from;
                    ms.firstNoteSpace = note.space;
                    ms.beforeNote = true;
                    noted = true;
                }
                pos_ +=
                    child(c, "chord") || child(c, "grace") ? 0 : integer(child(c, "duration"), 0);
            } else if (is(c, "backup")) {
                pos_ -= integer(child(c, "duration"), 0);
            } else if (is(c, "forward")) {
                pos_ += integer(child(c, "duration"), 0);
            } else if (is(c, "direction") && pos_ == 0 && !child(c, "offset")) {
                label(c, index);
            } else if (is(c, "harmony")) {
                harmony(c, index);
            }
        }
        part_.measures.push_back(ms);
        part_.keys.push_back(key_);
        return true;
    }

    // The part's staves as host staves, with their capo, capo chords and labels.
    void finish() {
        part_.firstStaff = static_cast<int>(sheet_.staves.size()) + 1;
        for (int n = 1; n <= part_.staves; ++n) {
            auto staff = std::make_unique<Staff>();
            staff->part = &part_;
            staff->number = n;
            const auto capo = capos_.count(n) ? capos_.find(n) : capos_.find(0);
            if (capo != capos_.end()) {
                staff->capoFret = capo->second.fret;
                staff->capoIsUsers = !capo->second.ours;
                staff->capo = capo->second.node;
                staff->capoMark = capo->second.mark;
            }
            sheet_.staves.push_back(std::move(staff));
        }
        for (auto& [a, fret] : alternates_) {
            CapoChord capo;
            capo.record.vertical = a.vertical;
            setFields(capo.record, a.fields);
            capo.record.capoBits = static_cast<uint16_t>(0x0040 | fret);
            capo.measure = a.measure;
            capo.span = a.span;
            sheet_.staff(part_.firstStaff + a.staff - 1).capoChords.push_back(capo);
        }
        for (auto& [staff, label] : labels_)
            sheet_.staff(part_.firstStaff + std::min(staff, part_.staves) - 1)
                .labels.push_back(label);
    }

  private:
    int staffOf(xmlNodePtr c) {
        const int staff = static_cast<int>(std::max(1L, std::min(64L, integer(child(c, "staff"), 1))));
        part_.staves = std::max(part_.staves, staff);
        return staff;
    }

    // The first measure's <attributes>: the staves and the capos are known
    // before any chord, wherever the attributes stand; the first one is kept
    // for the writer.
    void firstAttributes(const std::vector<xmlNodePtr>& elements) {
        bool first = true;
        for (xmlNodePtr a : elements) {
            if (!is(a, "attributes")) continue;
            part_.staves = std::max(
                part_.staves, static_cast<int>(std::max(1L, std::min(64L, integer(child(a, "staves"), 1)))));
            for (xmlNodePtr details : children(a, "staff-details")) {
                xmlNodePtr capo = child(details, "capo");
                if (!capo) continue;
                CapoRead read;
                read.fret = static_cast<int>(integer(capo, 0));
                xmlNodePtr mark = ourMark(capo);
                // Ours only in the first <attributes>, where this host writes it.
                read.ours = first && mark;
                if (read.ours && xmlStrcmp(mark->content, X(kOurMarks[2])) == 0)
                    part_.attributesOurs = true;
                if (read.ours) read.node = capo, read.mark = mark;
                // Without a number, the staff-details are every staff's.
                const std::string n = attr(details, "number");
                capos_[n.empty() ? 0 : static_cast<int>(std::max(1L, std::min(64L, std::atol(n.c_str()))))] = read;
            }
            if (first) {
                part_.attributesSpan = spanOf(sheet_.data, a);
                part_.attributes = keep(sheet_, a);
            }
            first = false;
        }
    }

    void attributes(xmlNodePtr c) {
        divisions_ = std::max(1L, integer(child(c, "divisions"), divisions_));
        if (xmlNodePtr staves = child(c, "staves"))
            part_.staves = std::max(part_.staves,
                                    static_cast<int>(std::max(1L, std::min(64L, integer(staves, 1)))));
        if (xmlNodePtr key = child(c, "key")) {
            // A key without <fifths> (a non-traditional one) keeps the one in force.
            if (child(key, "fifths")) {
                key_.fifths =
                    static_cast<int>(std::max(-7L, std::min(7L, integer(child(key, "fifths"), 0))));
                key_.minor = text(child(key, "mode")) == "minor";
            }
        }
    }

    void label(xmlNodePtr direction, int measure) {
        xmlNodePtr words = labelWords(direction);
        if (!words) return;
        Label l;
        l.text = ui::utf16(text(words));
        l.vertical = evpuOf(words);
        l.measure = measure;
        l.span = spanOf(sheet_.data, direction);
        const int staff = staffOf(direction);
        l.node = keep(sheet_, direction);
        labels_.emplace_back(staff, l);
    }

    void harmony(xmlNodePtr c, int index) {
        Harmony h;
        h.part = index_;
        h.staff = staffOf(c);
        h.measure = index;
        h.vertical = evpuOf(c);
        h.span = spanOf(sheet_.data, c);
        if (!readHarmony(c, &h.fields)) {
            sheet_.leftAlone.push_back(index);
            lastOrdinary_ = nullptr; // a chord after it does not follow its source directly
            return;
        }
        const long at = pos_ + integer(child(c, "offset"), 0);
        h.fields.onset = static_cast<int32_t>(std::max<long long>(
            -2000000000LL, std::min<long long>(2000000000LL, static_cast<long long>(at) *
                                                                 kOnsetPerQuarter / divisions_)));
        if (const int fret = capoFret(c, h)) {
            h.fields = lastOrdinary_->fields;
            alternates_.emplace_back(h, fret);
        } else {
            h.fields.harmony = static_cast<uint32_t>(sheet_.harmonies.size() + 1);
            h.bytes = bytesOf(c);
            sheet_.harmonies.push_back(std::make_unique<Harmony>(h));
            lastOrdinary_ = sheet_.harmonies.back().get();
        }
    }

    // Where the parts of a chord its capo chord changes stand.
    HarmonyBytes bytesOf(xmlNodePtr h) const {
        HarmonyBytes b;
        const auto at = [this](xmlNodePtr n) { return n ? spanOf(sheet_.data, n) : Span(); };
        xmlNodePtr root = child(h, "root"), bass = child(h, "bass");
        b.rootStep = at(child(root, "root-step"));
        b.rootAlter = at(child(root, "root-alter"));
        b.bassStep = at(child(bass, "bass-step"));
        b.bassAlter = at(child(bass, "bass-alter"));
        b.frame = at(child(h, "frame"));
        for (xmlNodePtr c : children(h)) {
            b.last = at(c);
            const bool after = is(c, "offset") || is(c, "footnote") || is(c, "level") || is(c, "staff");
            if (after && !b.frameBefore.to) b.frameBefore = b.last;
        }
        return b;
    }

    // An alternate chord directly after its source (or the source's other
    // capo chords) at its onset and on its staff, of its kind, with a bass
    // where it has one, root and bass the same whole number of semitones
    // lower, is a capo chord written by this host. That interval is its
    // fret, unless the staff's <capo> agrees with it modulo 12 (frets beyond
    // 11). 0: not one.
    int capoFret(xmlNodePtr c, const Harmony& h) const {
        if (attr(c, "type") != "alternate" || !lastOrdinary_ ||
            lastOrdinary_->fields.onset != h.fields.onset || lastOrdinary_->staff != h.staff)
            return 0;
        const ChordFields &source = lastOrdinary_->fields, &capo = h.fields;
        if (capo.kind != source.kind || (capo.bassStep < 0) != (source.bassStep < 0)) return 0;
        const int interval =
            semitonesDown({source.rootStep, source.rootAlter}, {capo.rootStep, capo.rootAlter});
        if (source.bassStep >= 0 && semitonesDown({source.bassStep, source.bassAlter},
                                                  {capo.bassStep, capo.bassAlter}) != interval)
            return 0;
        const auto read = capos_.count(h.staff) ? capos_.find(h.staff) : capos_.find(0);
        const int capoFret = read == capos_.end() ? 0 : read->second.fret;
        if (capoFret > 0 && capoFret < 64 && capoFret % 12 == interval) return capoFret;
        return interval;
    }

    Sheet& sheet_;
    Part& part_;
    const int index_;
    long divisions_ = 1;
    Key key_;
    long pos_ = 0; // in divisions
    const Harmony* lastOrdinary_ = nullptr;
    std::map<int, CapoRead> capos_;                    // by staff, 0: all
    std::vector<std::pair<Harmony, int>> alternates_;  // with their frets
    std::vector<std::pair<int, Label>> labels_;        // with their staves
};

// The parse, event by event: the default tree building, each element's
// byte range noted in it, and each measure read and freed once it is done.
class Parse {
  public:
    Parse(Sheet& sheet, const std::string& path, std::string* error)
        : sheet_(sheet), path_(path), error_(error) {}

    bool run() {
        xmlSAXHandler sax;
        std::memset(&sax, 0, sizeof sax);
        xmlSAXVersion(&sax, 2);
        sax.startElementNs = start;
        sax.endElementNs = end;
        xmlSetGenericErrorFunc(nullptr, quiet);
        read_ = 0;
        xmlParserCtxtPtr ctxt =
            xmlCreateIOParserCtxt(&sax, nullptr, feed, nullptr, this, XML_CHAR_ENCODING_NONE);
        if (!ctxt) return fail("out of memory");
        ctxt->_private = this;
        ctxt_ = ctxt;
        // No network, no external DTD, entities left as references;
        // libxml2's own limits on depth and entity amplification stay on.
        xmlCtxtUseOptions(ctxt, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        xmlParseDocument(ctxt);
        sheet_.doc = ctxt->myDoc;
        converted_ = ctxt->input && ctxt->input->buf && ctxt->input->buf->encoder;
        const bool wellFormed = ctxt->wellFormed;
        const xmlError* e = xmlCtxtGetLastError(ctxt);
        std::string why = e && e->message ? e->message : "unreadable";
        const int line = e ? e->line : 0;
        xmlFreeParserCtxt(ctxt);
        freePending();
        if (!error_->empty()) return false;
        if (!wellFormed) {
            while (!why.empty() && (why.back() == '\n' || why.back() == ' '))
                why.pop_back();
            return fail(path_ + " is not well-formed XML (line " + std::to_string(line) + ": " +
                        why + ")");
        }
        return true;
    }

    // The parser read the bytes through a conversion: the byte ranges are not the file's.
    bool converted() const { return converted_; }

  private:
    static int feed(void* self, char* buffer, int len) {
        Parse& p = *static_cast<Parse*>(self);
        const size_t n = std::min(static_cast<size_t>(len), p.sheet_.data.size() - p.read_);
        std::memcpy(buffer, p.sheet_.data.data() + p.read_, n);
        p.read_ += n;
        return static_cast<int>(n);
    }

    static Parse& of(void* ctx) {
        return *static_cast<Parse*>(static_cast<xmlParserCtxtPtr>(ctx)->_private);
    }

    size_t at() const {
        return ctxt_->input->consumed + static_cast<size_t>(ctxt_->input->cur - ctxt_->input->base);
    }

    static void start(void* ctx, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaces, const xmlChar** ns, int attributes, int defaulted,
                      const xmlChar** values) {
        Parse& p = of(ctx);
        xmlSAX2StartElementNs(ctx, name, prefix, uri, namespaces, ns, attributes, defaulted, values);
        xmlNodePtr n = p.ctxt_->node;
        const size_t here = p.at(); // at the '>' or "/>" ending the start tag
        const size_t from = p.sheet_.data.rfind('<', here);
        n->_private = reinterpret_cast<void*>(from + 1);
        xmlNodePtr parent = n->parent;
        if (parent && parent->type == XML_DOCUMENT_NODE) {
            p.root(n, from);
        } else if (is(n, "part") && parent == p.rootNode_) {
            p.startPart(n);
        } else if (is(n, "measure") && p.reader_ && parent == p.partNode_) {
            p.freePending();
            p.inside_ = here + (p.sheet_.data[here] == '>' ? 1 : 2);
        } else if (parent == p.rootNode_ && !p.laidOut_) {
            p.layOut(from);
        }
    }

    static void end(void* ctx, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
        Parse& p = of(ctx);
        xmlNodePtr n = p.ctxt_->node;
        n->psvi = reinterpret_cast<void*>(p.at() + 1);
        xmlSAX2EndElementNs(ctx, name, prefix, uri);
        if (is(n, "measure") && p.reader_ && n->parent == p.partNode_) {
            // Freed at the next measure or the part's end: the parser may
            // still add text after it to the part.
            p.pending_ = n;
            if (!p.reader_->measure(n, p.inside_))
                p.stop(p.path_ + " has more measures than zemlo-host keeps (32767)");
        } else if (n == p.partNode_) {
            p.freePending();
            p.endPart();
        }
    }

    void root(xmlNodePtr n, size_t from) {
        rootNode_ = n;
        // Entities are left unexpanded in the tree, but reading a text expands
        // them: a file that declares its own could blow up there.
        xmlDtdPtr subset = xmlGetIntSubset(n->doc);
        if (subset && (subset->entities || subset->pentities))
            return stop(path_ + " declares its own XML entities; zemlo-host does not expand them");
        if (!is(n, "score-partwise"))
            return stop(path_ + " is not a partwise MusicXML score (its root element is <" +
                        reinterpret_cast<const char*>(n->name) + ">)");
        prologPatches(from);
    }

    // The version stamp 4.0 and the MusicXML 4.0 DOCTYPE, in place of the file's.
    void prologPatches(size_t rootFrom) {
        const std::string& d = sheet_.data;
        const size_t bom = d.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
        if (d.compare(bom, 5, "<?xml") != 0)
            sheet_.prolog.push_back({bom, bom, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"});
        const std::string doctype =
            "<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 4.0 Partwise//EN\" "
            "\"http://www.musicxml.org/dtds/partwise.dtd\">";
        const size_t at = doctypeAt(d, rootFrom);
        if (at == std::string::npos)
            sheet_.prolog.push_back({rootFrom, rootFrom, doctype + "\n"});
        else
            sheet_.prolog.push_back({at, declarationEnd(d, at), doctype});
        const Attribute version = attributeIn(d, rootFrom, "version");
        sheet_.prolog.push_back(
            {version.from, version.to, version.found ? "4.0" : " version=\"4.0\""});
    }

    // The file's indentation step, from the root's first element child.
    void layOut(size_t from) {
        laidOut_ = true;
        size_t s = from;
        while (s > 0 && isSpace(sheet_.data[s - 1]))
            --s;
        const std::string before = sheet_.data.substr(s, from - s);
        const size_t newline = before.find_last_of('\n');
        sheet_.layout.lines = newline != std::string::npos;
        sheet_.layout.unit = sheet_.layout.lines ? before.substr(newline + 1) : "";
    }

    void startPart(xmlNodePtr n) {
        auto part = std::make_unique<Part>();
        part->id = attr(n, "id");
        partNode_ = n;
        reader_ = std::make_unique<PartReader>(sheet_, *part, static_cast<int>(sheet_.parts.size()));
        sheet_.parts.push_back(std::move(part));
    }

    void endPart() {
        reader_->finish();
        const Part& part = *sheet_.parts.back();
        if (sheet_.parts.size() > 1 && part.measures.size() != static_cast<size_t>(sheet_.measures))
            return stop(path_ + ": part " + part.id + " has " +
                        std::to_string(part.measures.size()) + " measures, the first part " +
                        std::to_string(sheet_.measures));
        sheet_.measures = static_cast<int>(part.measures.size());
        reader_.reset();
        partNode_ = nullptr;
    }

    void freePending() {
        if (!pending_) return;
        xmlUnlinkNode(pending_);
        xmlFreeNode(pending_);
        pending_ = nullptr;
    }

    void stop(const std::string& why) {
        if (error_->empty()) *error_ = why;
        xmlStopParser(ctxt_);
    }

    bool fail(const std::string& why) {
        *error_ = why;
        return false;
    }

    Sheet& sheet_;
    const std::string& path_;
    std::string* error_;
    xmlParserCtxtPtr ctxt_ = nullptr;
    size_t read_ = 0, inside_ = 0;
    bool converted_ = false, laidOut_ = false;
    xmlNodePtr rootNode_ = nullptr, partNode_ = nullptr, pending_ = nullptr;
    std::unique_ptr<PartReader> reader_;
};

// The file as UTF-8, for a file in another encoding: byte ranges are taken
// in the bytes the parser reads.
bool toUtf8(std::string* data) {
    xmlDocPtr d = xmlReadMemory(data->data(), static_cast<int>(data->size()), "score", nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!d) return false;
    xmlChar* mem = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(d, &mem, &size, "UTF-8");
    xmlFreeDoc(d);
    if (!mem) return false;
    data->assign(reinterpret_cast<const char*>(mem), static_cast<size_t>(size));
    xmlFree(mem);
    return true;
}

} // namespace

Span spanOf(const std::string& data, xmlNodePtr n) {
    Span s;
    s.from = reinterpret_cast<uintptr_t>(n->_private) - 1;
    s.to = reinterpret_cast<uintptr_t>(n->psvi) - 1;
    s.space = s.from;
    while (s.space > 0 && isSpace(data[s.space - 1]))
        --s.space;
    return s;
}

std::string Layout::space(int depth) const {
    if (!lines) return "";
    std::string s = "\n";
    for (int i = 0; i < depth; ++i)
        s += unit;
    return s;
}

Sheet::~Sheet() {
    for (xmlNodePtr n : kept)
        xmlFreeNode(n);
    if (doc) xmlFreeDoc(doc);
}

std::unique_ptr<Sheet> readSheet(const std::string& path, std::string* error) {
    auto sheet = std::make_unique<Sheet>();
    if (!loadFile(path, &sheet->data, error, &sheet->warnings)) return nullptr;
    Parse parse(*sheet, path, error);
    if (!parse.run()) return nullptr;
    if (parse.converted()) {
        // Another encoding than UTF-8: read again from the file as UTF-8.
        auto utf8 = std::make_unique<Sheet>();
        utf8->warnings = sheet->warnings;
        utf8->data = sheet->data;
        sheet = std::move(utf8);
        Parse again(*sheet, path, error);
        if (!toUtf8(&sheet->data) || !again.run() || again.converted()) {
            if (error->empty()) *error = "cannot read " + path + " as UTF-8";
            return nullptr;
        }
    }
    xmlNodePtr root = xmlDocGetRootElement(sheet->doc);
    sheet->title = text(child(child(root, "work"), "work-title"));
    if (sheet->title.empty()) sheet->title = text(child(root, "movement-title"));
    std::map<std::string, std::string> names;
    for (xmlNodePtr sp : children(child(root, "part-list"), "score-part"))
        names[attr(sp, "id")] = text(child(sp, "part-name"));
    for (auto& part : sheet->parts)
        part->name = names.count(part->id) ? names[part->id] : part->id;
    if (sheet->parts.empty() || sheet->measures == 0) {
        *error = path + " holds no measures";
        return nullptr;
    }
    return sheet;
}

} // namespace musicxml
} // namespace hostsim
