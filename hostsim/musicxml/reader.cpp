// Reading a MusicXML lead sheet: the file (unpacked when compressed), the
// tree, and the parts' measures, keys, chords, capo and labels.
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
#include <sstream>
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

// The tree of a partwise score. No network, no external DTD, entities left
// as references; libxml2's own limits on depth and entity amplification stay on.
xmlDocPtr parse(const std::string& data, const std::string& path, std::string* error) {
    xmlSetGenericErrorFunc(nullptr, quiet);
    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (!ctxt) {
        *error = "out of memory";
        return nullptr;
    }
    xmlDocPtr doc =
        xmlCtxtReadMemory(ctxt, data.data(), static_cast<int>(data.size()), path.c_str(), nullptr,
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!doc) {
        const xmlError* e = xmlCtxtGetLastError(ctxt);
        std::string why = e && e->message ? e->message : "unreadable";
        while (!why.empty() && (why.back() == '\n' || why.back() == ' '))
            why.pop_back();
        *error = path + " is not well-formed XML (line " + std::to_string(e ? e->line : 0) + ": " +
                 why + ")";
    }
    xmlFreeParserCtxt(ctxt);
    return doc;
}

// The score element, or null when the tree is not one this host reads.
xmlNodePtr scoreOf(xmlDocPtr doc, const std::string& path, std::string* error) {
    // Entities are left unexpanded in the tree, but reading a text expands
    // them: a file that declares its own could blow up there.
    xmlDtdPtr subset = xmlGetIntSubset(doc);
    if (subset && (subset->entities || subset->pentities)) {
        *error = path + " declares its own XML entities; zemlo-host does not expand them";
        return nullptr;
    }
    xmlNodePtr root = xmlDocGetRootElement(doc);
    if (!is(root, "score-partwise")) {
        *error = path + " is not a partwise MusicXML score (its root element is <" +
                 (root ? reinterpret_cast<const char*>(root->name) : "none") + ">)";
        return nullptr;
    }
    return root;
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

// One part, measure by measure, onsets counted in the part's divisions.
class PartReader {
  public:
    PartReader(Sheet& sheet, Part& part, const std::string& path, std::string* error)
        : sheet_(sheet), part_(part), path_(path), error_(error),
          staff_(static_cast<int>(sheet.parts.size()) + 1) {}

    bool read(xmlNodePtr partNode) {
        const auto measures = children(partNode, "measure");
        // The <capo> is known before any chord, wherever the attributes stand.
        if (!measures.empty())
            for (xmlNodePtr a : children(measures[0], "attributes"))
                if (xmlNodePtr capo = child(child(a, "staff-details"), "capo")) {
                    part_.capo = capo;
                    part_.capoMark = ourMark(capo);
                    part_.capoFret = static_cast<int>(integer(capo, 0));
                }
        // Measures are positions: their numbers may repeat, hold letters or go back.
        for (xmlNodePtr m : measures)
            if (!measure(m)) return false;
        // Ordinary chords are numbered in file order; a capo chord took its source's fields.
        for (const auto& [a, fret] : alternates_) {
            CapoChord capo;
            capo.record.vertical = a.vertical;
            setFields(capo.record, a.fields);
            capo.record.capoBits = static_cast<uint16_t>(0x0040 | fret);
            capo.measure = a.measure;
            part_.capoChords.push_back(capo);
        }
        return true;
    }

  private:
    bool measure(xmlNodePtr m) {
        const int index = static_cast<int>(part_.measures.size()) + 1;
        if (index > kMaxMeasures)
            return fail(path_ + " has more measures than zemlo-host keeps (32767)");
        part_.measures.push_back(m);
        if (sheet_.parts.empty()) sheet_.numbers.push_back(attr(m, "number"));
        pos_ = 0;
        lastOrdinary_ = nullptr;
        for (xmlNodePtr c : children(m)) {
            if (is(c, "attributes"))
                attributes(c);
            else if (is(c, "note"))
                pos_ +=
                    child(c, "chord") || child(c, "grace") ? 0 : integer(child(c, "duration"), 0);
            else if (is(c, "backup"))
                pos_ -= integer(child(c, "duration"), 0);
            else if (is(c, "forward"))
                pos_ += integer(child(c, "duration"), 0);
            else if (is(c, "direction") && index == 1 && pos_ == 0 && !child(c, "offset"))
                label(c);
            else if (is(c, "harmony"))
                harmony(c, index);
        }
        part_.keys.push_back(key_);
        return true;
    }

    void attributes(xmlNodePtr c) {
        divisions_ = std::max(1L, integer(child(c, "divisions"), divisions_));
        if (xmlNodePtr key = child(c, "key")) {
            // A key without <fifths> (a non-traditional one) keeps the one in force.
            if (child(key, "fifths")) {
                key_.fifths =
                    static_cast<int>(std::max(-7L, std::min(7L, integer(child(key, "fifths"), 0))));
                key_.minor = text(child(key, "mode")) == "minor";
            }
        }
    }

    void label(xmlNodePtr direction) {
        if (xmlNodePtr words = labelWords(direction))
            part_.labels.push_back({ui::utf16(text(words)), evpuOf(words), direction});
    }

    void harmony(xmlNodePtr c, int index) {
        Harmony h;
        h.node = c;
        h.staff = staff_;
        h.measure = index;
        h.vertical = evpuOf(c);
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
            part_.capoNodes.push_back(c);
        } else {
            h.fields.harmony = static_cast<uint32_t>(sheet_.harmonies.size() + 1);
            sheet_.harmonies.push_back(std::make_unique<Harmony>(h));
            lastOrdinary_ = sheet_.harmonies.back().get();
        }
    }

    // An alternate chord directly after its source (or the source's other
    // capo chords) at its onset, of its kind, with a bass where it has one,
    // root and bass the same whole number of semitones lower, is a capo
    // chord written by this host. That interval is its fret, unless the
    // part's <capo> agrees with it modulo 12 (frets beyond 11). 0: not one.
    int capoFret(xmlNodePtr c, const Harmony& h) const {
        if (attr(c, "type") != "alternate" || !lastOrdinary_ ||
            lastOrdinary_->fields.onset != h.fields.onset)
            return 0;
        const ChordFields &source = lastOrdinary_->fields, &capo = h.fields;
        if (capo.kind != source.kind || (capo.bassStep < 0) != (source.bassStep < 0)) return 0;
        const int interval =
            semitonesDown({source.rootStep, source.rootAlter}, {capo.rootStep, capo.rootAlter});
        if (source.bassStep >= 0 && semitonesDown({source.bassStep, source.bassAlter},
                                                  {capo.bassStep, capo.bassAlter}) != interval)
            return 0;
        if (part_.capoFret > 0 && part_.capoFret < 64 && part_.capoFret % 12 == interval)
            return part_.capoFret;
        return interval;
    }

    bool fail(const std::string& why) {
        *error_ = why;
        return false;
    }

    Sheet& sheet_;
    Part& part_;
    const std::string& path_;
    std::string* error_;
    const int staff_;
    long divisions_ = 1;
    Key key_;
    long pos_ = 0; // in divisions
    const Harmony* lastOrdinary_ = nullptr;
    std::vector<std::pair<Harmony, int>> alternates_; // with their frets
};

} // namespace

Sheet::~Sheet() {
    if (doc) xmlFreeDoc(doc);
}

std::unique_ptr<Sheet> readSheet(const std::string& path, std::string* error) {
    std::string data;
    auto sheet = std::make_unique<Sheet>();
    if (!loadFile(path, &data, error, &sheet->warnings)) return nullptr;
    sheet->doc = parse(data, path, error);
    xmlNodePtr root = sheet->doc ? scoreOf(sheet->doc, path, error) : nullptr;
    if (!root) return nullptr;
    sheet->title = text(child(child(root, "work"), "work-title"));
    if (sheet->title.empty()) sheet->title = text(child(root, "movement-title"));
    std::map<std::string, std::string> names;
    for (xmlNodePtr sp : children(child(root, "part-list"), "score-part"))
        names[attr(sp, "id")] = text(child(sp, "part-name"));

    for (xmlNodePtr partNode : children(root, "part")) {
        auto part = std::make_unique<Part>();
        part->id = attr(partNode, "id");
        part->name = names.count(part->id) ? names[part->id] : part->id;
        if (!PartReader(*sheet, *part, path, error).read(partNode)) return nullptr;
        if (!sheet->parts.empty() &&
            part->measures.size() != static_cast<size_t>(sheet->measures)) {
            *error = path + ": part " + part->id + " has " + std::to_string(part->measures.size()) +
                     " measures, the first part " + std::to_string(sheet->measures);
            return nullptr;
        }
        sheet->measures = static_cast<int>(part->measures.size());
        sheet->parts.push_back(std::move(part));
    }
    if (sheet->parts.empty() || sheet->measures == 0) {
        *error = path + " holds no measures";
        return nullptr;
    }
    return sheet;
}

} // namespace musicxml
} // namespace hostsim
