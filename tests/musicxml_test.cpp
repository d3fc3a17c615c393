// MusicXML lead sheets through the simulated host: read and written back
// as they came, and zemlo-host apply on them with the built plug-in. The
// files are inspected with libxml2 directly, not through the reader.
#include "bundles.h"
#include "hostsim/host.h"
#include "leadsheet.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <zip.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

namespace mx = hostsim::musicxml;
namespace fs = std::filesystem;
using testing_support::TempDir;
using testing_support::writeFile;

const std::string kSamples = CAPOCHORDS_SOURCE_DIR "/hostsim/samples/";
const char* const kSampleNames[] = {"lantern-road", "harbour-lights", "north-wind", "slow-river"};

struct Ran {
    int status = -1;
    std::string out, err;
};

Ran zemloHost(const std::string& args, const std::string& dir) {
    const std::string err = dir + "/stderr.txt";
    const std::string command = "'" ZEMLO_HOST "' apply " + args + " --lang en_US.UTF-8 2>'" + err + "'";
    Ran r;
    FILE* out = popen(command.c_str(), "r");
    if (!out) return r;
    char buf[512];
    while (size_t n = std::fread(buf, 1, sizeof buf, out)) r.out.append(buf, n);
    const int status = pclose(out);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream e(err);
    r.err.assign(std::istreambuf_iterator<char>(e), std::istreambuf_iterator<char>());
    return r;
}

bool is(xmlNodePtr n, const char* name) {
    return n && n->type == XML_ELEMENT_NODE && !xmlStrcmp(n->name, reinterpret_cast<const xmlChar*>(name));
}
xmlNodePtr child(xmlNodePtr n, const char* name) {
    for (xmlNodePtr c = n ? n->children : nullptr; c; c = c->next)
        if (is(c, name)) return c;
    return nullptr;
}
std::string text(xmlNodePtr n) {
    if (!n) return "";
    xmlChar* t = xmlNodeGetContent(n);
    std::string s(reinterpret_cast<const char*>(t));
    xmlFree(t);
    std::string trimmed;
    for (char c : s)
        if (c != ' ' && c != '\n') trimmed += c;
    return trimmed;
}
std::string prop(xmlNodePtr n, const char* name) {
    xmlChar* v = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
    std::string s = v ? reinterpret_cast<const char*>(v) : "";
    xmlFree(v);
    return s;
}
// An element as text, whitespace between elements dropped.
std::string dump(xmlNodePtr n) {
    std::string s = "<" + std::string(reinterpret_cast<const char*>(n->name));
    for (xmlAttrPtr a = n->properties; a; a = a->next)
        s += " " + std::string(reinterpret_cast<const char*>(a->name)) + "=" + prop(n, reinterpret_cast<const char*>(a->name));
    s += ">";
    bool inner = false;
    for (xmlNodePtr c = n->children; c; c = c->next)
        if (c->type == XML_ELEMENT_NODE) s += dump(c), inner = true;
    if (!inner) s += text(n);
    return s + "</>";
}

const char* kSteps = "CDEFGAB";
const int kNatural[7] = {0, 2, 4, 5, 7, 9, 11};

struct Chord {
    std::string part;
    int measure = 0;
    bool alternate = false;
    std::string root, bass, xml;
    int pc = 0, bassPc = -1, fifths = 0;
};

std::string name(xmlNodePtr parent, const char* step, const char* alter, int* pc) {
    if (!parent) return "";
    const std::string s = text(child(parent, step));
    const int a = child(parent, alter) ? std::atoi(text(child(parent, alter)).c_str()) : 0;
    *pc = ((kNatural[std::string(kSteps).find(s[0])] + a) % 12 + 12) % 12;
    return s + std::string(a > 0 ? a : 0, '#') + std::string(a < 0 ? -a : 0, 'b');
}

// What a file holds: its notes, chords, capo frets and first-measure words.
struct Contents {
    bool read = false;
    std::vector<std::string> notes;
    std::vector<Chord> chords;
    std::map<std::string, std::string> capo;
    std::vector<std::string> words;
    std::vector<Chord> ordinary() const {
        std::vector<Chord> out;
        for (const Chord& c : chords)
            if (!c.alternate) out.push_back(c);
        return out;
    }
};

Contents contents(const std::string& path) {
    Contents c;
    xmlDocPtr d = xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!d) return c;
    c.read = true;
    for (xmlNodePtr part = xmlDocGetRootElement(d)->children; part; part = part->next) {
        if (!is(part, "part")) continue;
        int measure = 0, fifths = 0;
        for (xmlNodePtr m = part->children; m; m = m->next) {
            if (!is(m, "measure")) continue;
            ++measure;
            for (xmlNodePtr e = m->children; e; e = e->next) {
                if (is(e, "note")) c.notes.push_back(prop(part, "id") + " " + dump(e));
                if (is(e, "attributes")) {
                    if (xmlNodePtr k = child(e, "key")) fifths = std::atoi(text(child(k, "fifths")).c_str());
                    if (xmlNodePtr capo = child(child(e, "staff-details"), "capo")) c.capo[prop(part, "id")] = text(capo);
                }
                if (is(e, "direction") && measure == 1)
                    if (xmlNodePtr w = child(child(e, "direction-type"), "words")) c.words.push_back(text(w));
                if (!is(e, "harmony")) continue;
                Chord h;
                h.part = prop(part, "id");
                h.measure = measure;
                h.alternate = prop(e, "type") == "alternate";
                h.root = name(child(e, "root"), "root-step", "root-alter", &h.pc);
                h.bass = name(child(e, "bass"), "bass-step", "bass-alter", &h.bassPc);
                h.fifths = fifths;
                h.xml = dump(e);
                c.chords.push_back(h);
            }
        }
    }
    xmlFreeDoc(d);
    return c;
}

std::string fileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Each concert chord followed by one capo chord: the shape `fret` lower,
// spelled for the key; notes and concert chords as in `original`.
void expectCapoChords(const Contents& original, const Contents& out, int fret) {
    ASSERT_TRUE(out.read);
    EXPECT_EQ(out.notes, original.notes);
    const std::vector<Chord> concert = out.ordinary();
    ASSERT_EQ(concert.size(), original.chords.size());
    for (size_t i = 0; i < concert.size(); ++i) EXPECT_EQ(concert[i].xml, original.chords[i].xml);
    ASSERT_EQ(out.chords.size(), 2 * concert.size());
    for (size_t i = 0; i < out.chords.size(); i += 2) {
        const Chord& source = out.chords[i];
        const Chord& capo = out.chords[i + 1];
        SCOPED_TRACE(source.part + " m" + std::to_string(source.measure) + " " + source.root);
        ASSERT_FALSE(source.alternate);
        ASSERT_TRUE(capo.alternate);
        EXPECT_EQ(capo.pc, ((source.pc - fret) % 12 + 12) % 12);
        EXPECT_EQ(capo.bassPc, source.bassPc < 0 ? -1 : ((source.bassPc - fret) % 12 + 12) % 12);
        for (const std::string& n : {capo.root, capo.bass}) {
            EXPECT_TRUE(n.find(source.fifths < 0 ? '#' : 'b') == std::string::npos) << n;
            EXPECT_LE(n.size(), 2u) << n;
            EXPECT_TRUE(n != "E#" && n != "B#" && n != "Cb" && n != "Fb") << n;
        }
        EXPECT_EQ(out.capo.at(source.part), std::to_string(fret));
        EXPECT_EQ(capo.xml.find("<frame"), std::string::npos) << "a capo chord with its source's fret diagram";
    }
}

TEST(Spelling, CapoShapesForKeysWithSharpsAndFlats) {
    struct Case {
        mx::Pitch concert;
        int fret, fifths;
        const char* expected;
    } const cases[] = {
        {{4, 0}, 3, 1, "E"},   {{6, -1}, 1, -2, "A"}, {{4, 0}, 1, -2, "Gb"}, {{0, 1}, 1, 4, "C"},
        {{3, 0}, 1, -1, "E"},  {{0, 0}, 1, 0, "B"},   {{2, -1}, 2, -3, "Db"}, {{5, 0}, 4, 0, "F"},
        {{1, 0}, 11, -1, "Eb"}, {{6, 0}, 7, 5, "E"},  {{2, 0}, 5, 2, "B"},   {{3, 1}, 6, -6, "C"},
    };
    for (const Case& c : cases) {
        const mx::Pitch p = mx::fingered(c.concert, c.fret, c.fifths);
        EXPECT_EQ(mx::noteName(p), c.expected) << mx::noteName(c.concert) << " fret " << c.fret;
    }
}

TEST(RoundTrip, ReadAndWrittenWithoutTheCommandKeepsNotesChordsAndWords) {
    TempDir tmp;
    for (const char* sample : kSampleNames) {
        SCOPED_TRACE(sample);
        hostsim::reset();
        std::string error;
        auto sheet = mx::LeadSheet::read(kSamples + sample + ".musicxml", &error);
        ASSERT_TRUE(sheet) << error;
        sheet->build();
        const std::string out = tmp.path() + "/" + sample + ".musicxml";
        ASSERT_TRUE(sheet->write(out, &error)) << error;
        const Contents before = contents(kSamples + sample + ".musicxml"), after = contents(out);
        ASSERT_TRUE(after.read);
        EXPECT_EQ(after.notes, before.notes);
        ASSERT_EQ(after.chords.size(), before.chords.size());
        for (size_t i = 0; i < before.chords.size(); ++i) EXPECT_EQ(after.chords[i].xml, before.chords[i].xml);
        EXPECT_EQ(after.words, before.words);
        EXPECT_TRUE(after.capo.empty());
    }
}

// Two chords at one onset (the second after a note, pulled back by its
// offset), a third later, divisions 3 to the quarter.
const std::string kTwoAtOnce =
    "<?xml version=\"1.0\"?><score-partwise><part-list><score-part id=\"P1\"><part-name>V</part-name>"
    "</score-part></part-list><part id=\"P1\"><measure number=\"1\"><attributes><divisions>3</divisions>"
    "<key><fifths>-3</fifths></key></attributes>"
    "<harmony default-y=\"10\"><root><root-step>E</root-step><root-alter>-1</root-alter></root>"
    "<kind>major</kind></harmony><note><rest/><duration>3</duration></note>"
    "<harmony><root><root-step>C</root-step></root><kind>minor-seventh</kind><bass><bass-step>G</bass-step>"
    "</bass><offset>-3</offset></harmony>"
    "<harmony><root><root-step>A</root-step><root-alter>-1</root-alter></root><kind>dominant</kind>"
    "</harmony><note><rest/><duration>9</duration></note></measure></part></score-partwise>";

TEST(Records, KeepTheChordInTheCopiedBytesAndTheOnsetInTheSiblingKeys) {
    TempDir tmp;
    writeFile(tmp.path() + "/in.musicxml", kTwoAtOnce);
    hostsim::reset();
    std::string error;
    auto sheet = mx::LeadSheet::read(tmp.path() + "/in.musicxml", &error);
    ASSERT_TRUE(sheet) << error;
    sheet->build();
    const auto chords = hostsim::score::chords(1, 1);
    ASSERT_EQ(chords.size(), 3u);
    struct Expected {
        int16_t key1;
        int32_t onset;
        uint8_t bytes4[4];
        uint8_t kind;
        uint32_t harmony;
        int16_t vertical;
        const char *name, *shape;
    } const expected[] = {
        {0, 0, {2, 0xFF, 0, 0}, 0, 1, 24, "Eb", "D"},        // default-y 10 tenths
        {1, 0, {0, 0, 5, 0}, 6, 2, 0, "Cm7/G", "Bm7/Gb"},    // at the same onset
        {0, 960, {5, 0xFF, 0, 0}, 4, 3, 0, "Ab7", "G7"},     // a quarter later
    };
    for (size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const auto& c = chords[i];
        EXPECT_EQ(c.key1, expected[i].key1);
        EXPECT_EQ(c.key2, 0);
        const int32_t onset = c.key3;  // a packed field: copied before it is compared
        EXPECT_EQ(onset, expected[i].onset);
        EXPECT_EQ(std::memcmp(c.host4, expected[i].bytes4, 4), 0);
        EXPECT_EQ(c.host10[0], expected[i].kind);
        uint32_t harmony = 0;
        std::memcpy(&harmony, c.host24, sizeof harmony);
        EXPECT_EQ(harmony, expected[i].harmony);
        EXPECT_EQ(c.vertical, expected[i].vertical);
        EXPECT_FALSE(c.isCapo());
        EXPECT_EQ(mx::chordName(c, -3), expected[i].name);
    }
    // Written with capo chords and read again: each capo chord carries its
    // source's bytes and keys, so the two are siblings and no other pair is.
    const std::string out = tmp.path() + "/out.musicxml";
    ASSERT_EQ(zemloHost("'" + tmp.path() + "/in.musicxml' --capo 1 -o '" + out + "'", tmp.path()).status, 0);
    hostsim::reset();
    sheet = mx::LeadSheet::read(out, &error);
    ASSERT_TRUE(sheet) << error;
    sheet->build();
    const auto again = hostsim::score::chords(1, 1);
    ASSERT_EQ(again.size(), 6u);
    for (size_t i = 0; i < 3; ++i) {
        hostsim::score::ChordRecord capo = again[3 + i];
        EXPECT_EQ(capo.capoBits, 0x0041);
        EXPECT_EQ(mx::chordName(capo, -3), expected[i].shape);
        capo.capoBits = 0;
        capo.vertical = again[i].vertical;
        EXPECT_EQ(std::memcmp(&capo, &again[i], sizeof capo), 0) << i;
    }
}

class ApplyFret : public ::testing::TestWithParam<int> {};

TEST_P(ApplyFret, AddsOneCapoChordPerChordSpelledForTheKey) {
    const int fret = GetParam();
    TempDir tmp;
    for (const char* sample : kSampleNames) {
        SCOPED_TRACE(sample);
        const std::string out = tmp.path() + "/" + sample + ".musicxml";
        const Ran r = zemloHost("'" + kSamples + sample + ".musicxml' --capo " + std::to_string(fret) + " -o '" + out + "'", tmp.path());
        ASSERT_EQ(r.status, 0) << r.out << r.err;
        expectCapoChords(contents(kSamples + sample + ".musicxml"), contents(out), fret);
    }
}
INSTANTIATE_TEST_SUITE_P(Frets, ApplyFret, ::testing::Range(1, 12));

TEST(Apply, NamesTheShapesOfTheBundledSample) {
    TempDir tmp;
    const Ran r = zemloHost("--capo 3 -o '" + tmp.path() + "/out.musicxml'", tmp.path());
    ASSERT_EQ(r.status, 0) << r.err;
    std::vector<std::string> roots;
    for (const Chord& c : contents(tmp.path() + "/out.musicxml").chords)
        if (c.alternate) roots.push_back(c.root + (c.bass.empty() ? "" : "/" + c.bass));
    EXPECT_EQ(roots, (std::vector<std::string>{"E", "C#", "A", "B", "E/G#", "F#", "B", "E", "E", "A"}));
    EXPECT_NE(r.out.find("Voice      m3   G/B  Am7                 | capo 3: E/G#  F#m7\n"), std::string::npos) << r.out;
}

TEST(Apply, AgainWithAnotherFretUpdatesAndRemovalGivesTheOriginalBack) {
    TempDir tmp;
    const std::string original = kSamples + "harbour-lights.musicxml";
    const std::string first = tmp.path() + "/first.musicxml", second = tmp.path() + "/second.musicxml",
                      removed = tmp.path() + "/removed.musicxml";
    ASSERT_EQ(zemloHost("'" + original + "' --capo 3 -o '" + first + "'", tmp.path()).status, 0);
    const Ran again = zemloHost("'" + first + "' --capo 5 --distance 40 -o '" + second + "'", tmp.path());
    ASSERT_EQ(again.status, 0) << again.err;
    const Contents before = contents(original);
    expectCapoChords(before, contents(second), 5);
    // The file's label "Capo 1" is found by its text and rewritten, not doubled.
    EXPECT_EQ(before.words, (std::vector<std::string>{"Capo1"}));
    EXPECT_EQ(contents(first).words, (std::vector<std::string>{"Capo3"}));
    EXPECT_EQ(contents(second).words, (std::vector<std::string>{"Capo5"}));

    const Ran removal = zemloHost("'" + second + "' --remove -o '" + removed + "'", tmp.path());
    ASSERT_EQ(removal.status, 0) << removal.err;
    const Contents back = contents(removed);
    EXPECT_EQ(back.notes, before.notes);
    ASSERT_EQ(back.chords.size(), before.chords.size());
    for (size_t i = 0; i < before.chords.size(); ++i) EXPECT_EQ(back.chords[i].xml, before.chords[i].xml);
    EXPECT_TRUE(back.capo.empty());
    EXPECT_TRUE(back.words.empty());
}

TEST(Apply, RemovalWithNothingToRemoveSaysSoAndWritesTheScoreUnchanged) {
    TempDir tmp;
    const std::string out = tmp.path() + "/out.musicxml";
    const Ran r = zemloHost("'" + kSamples + "slow-river.musicxml' --remove -o '" + out + "'", tmp.path());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("Notice: "), std::string::npos) << r.out;
    const Contents before = contents(kSamples + "slow-river.musicxml"), after = contents(out);
    EXPECT_EQ(after.notes, before.notes);
    ASSERT_EQ(after.chords.size(), before.chords.size());
    for (size_t i = 0; i < before.chords.size(); ++i) EXPECT_EQ(after.chords[i].xml, before.chords[i].xml);
}

TEST(Apply, OurOwnFileReadAgainIsTheSameDocument) {
    TempDir tmp;
    const std::string out = tmp.path() + "/out.musicxml", again = tmp.path() + "/again.musicxml";
    ASSERT_EQ(zemloHost("'" + kSamples + "north-wind.musicxml' --capo 2 --chord-flag -o '" + out + "'", tmp.path()).status, 0);
    hostsim::reset();
    std::string error;
    auto sheet = mx::LeadSheet::read(out, &error);
    ASSERT_TRUE(sheet) << error;
    sheet->build();
    size_t capoChords = 0;
    for (int m = 1; m <= sheet->measures(); ++m)
        for (const auto& c : hostsim::score::chords(1, static_cast<int16_t>(m))) capoChords += c.isCapo() && c.fret() == 2;
    EXPECT_EQ(capoChords, sheet->chordCount());
    EXPECT_EQ(sheet->fileCapo(), 2);
    ASSERT_TRUE(sheet->write(again, &error)) << error;
    EXPECT_EQ(fileText(again), fileText(out));
}

TEST(Apply, WorksOnTheSelectedStavesAndMeasuresOnly) {
    TempDir tmp;
    const std::string out = tmp.path() + "/out.musicxml";
    const Ran r = zemloHost("--capo 2 --measures 2-3 --staves 1-1 --no-label -o '" + out + "'", tmp.path());
    ASSERT_EQ(r.status, 0) << r.err;
    const Contents c = contents(out);
    for (const Chord& h : c.chords)
        if (h.alternate) {
            EXPECT_TRUE(h.part == "P1" && h.measure >= 2 && h.measure <= 3) << h.part << h.measure;
        }
    EXPECT_EQ(c.chords.size(), contents(kSamples + "lantern-road.musicxml").chords.size() + 4);
    EXPECT_TRUE(c.words.empty());
}

// A compressed MusicXML file holding `score` under the name the container gives.
bool writeMxl(const std::string& path, const std::string& score) {
    static const std::string container =
        "<?xml version=\"1.0\"?><container><rootfiles><rootfile full-path=\"song/score.musicxml\"/>"
        "</rootfiles></container>";
    int code = 0;
    zip_t* z = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!z) return false;
    zip_source_t* a = zip_source_buffer(z, container.data(), container.size(), 0);
    zip_source_t* b = zip_source_buffer(z, score.data(), score.size(), 0);
    const bool added = zip_file_add(z, "META-INF/container.xml", a, 0) >= 0 &&
                       zip_file_add(z, "song/score.musicxml", b, 0) >= 0;
    return zip_close(z) == 0 && added;
}

TEST(Apply, ReadsCompressedMusicXml) {
    TempDir tmp;
    const std::string original = kSamples + "harbour-lights.musicxml";
    const std::string mxl = tmp.path() + "/harbour.mxl", out = tmp.path() + "/out.musicxml";
    ASSERT_TRUE(writeMxl(mxl, fileText(original)));
    const Ran r = zemloHost("'" + mxl + "' --capo 2 -o '" + out + "'", tmp.path());
    ASSERT_EQ(r.status, 0) << r.err;
    expectCapoChords(contents(original), contents(out), 2);

    writeFile(tmp.path() + "/plain.mxl", fileText(original));
    const Ran plain = zemloHost("'" + tmp.path() + "/plain.mxl' -o '" + tmp.path() + "/x.musicxml'", tmp.path());
    EXPECT_NE(plain.status, 0);
    EXPECT_NE(plain.err.find("is not compressed MusicXML"), std::string::npos) << plain.err;
    EXPECT_FALSE(fs::exists(tmp.path() + "/x.musicxml"));
}

TEST(Output, IsValidMusicXml4) {
    const std::string schema = CAPOCHORDS_SOURCE_DIR "/../shared/musicxml-4.0/musicxml.xsd";
    if (!fs::exists(schema)) GTEST_SKIP() << "no MusicXML 4.0 schema at " << schema;
    if (std::system("command -v xmllint >/dev/null 2>&1") != 0) GTEST_SKIP() << "xmllint is not installed (libxml2-utils)";
    TempDir tmp;
    for (const char* sample : kSampleNames) {
        const std::string out = tmp.path() + "/" + sample + ".musicxml", removed = tmp.path() + "/removed.musicxml";
        ASSERT_EQ(zemloHost("'" + kSamples + sample + ".musicxml' --capo 4 -o '" + out + "'", tmp.path()).status, 0);
        ASSERT_EQ(zemloHost("'" + out + "' --remove -o '" + removed + "'", tmp.path()).status, 0);
        for (const std::string& f : {out, removed}) {
            const std::string command = "XML_CATALOG_FILES='" + fs::path(schema).parent_path().string() +
                                        "/catalog.xml' xmllint --nonet --noout --schema '" + schema + "' '" + f +
                                        "' >'" + tmp.path() + "/lint.txt' 2>&1";
            EXPECT_EQ(std::system(command.c_str()), 0) << sample << ": " << fileText(tmp.path() + "/lint.txt");
        }
    }
}

TEST(Output, OpensInAMusicXmlReader) {
    if (std::system("command -v mscore3 >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "no MusicXML reader: mscore3 (Debian package musescore3) is not on the PATH";
    TempDir tmp;
    const std::string out = tmp.path() + "/out.musicxml", pdf = tmp.path() + "/out.pdf";
    ASSERT_EQ(zemloHost("'" + kSamples + "harbour-lights.musicxml' --capo 3 -o '" + out + "'", tmp.path()).status, 0);
    const std::string command = "QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR='" + tmp.path() + "' HOME='" +
                                tmp.path() + "' mscore3 -o '" + pdf + "' '" + out + "' >'" + tmp.path() +
                                "/reader.txt' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << fileText(tmp.path() + "/reader.txt");
    ASSERT_TRUE(fs::exists(pdf)) << fileText(tmp.path() + "/reader.txt");
    EXPECT_EQ(fileText(pdf).compare(0, 5, "%PDF-"), 0);
}

struct BadCase {
    const char* what;
    std::string file;  // written to in.musicxml; empty: none
    std::string args;
    const char* message;
};

const std::string kHead = "<?xml version=\"1.0\"?><score-partwise version=\"4.0\"><part-list><score-part id=\"P1\">"
                          "<part-name>V</part-name></score-part></part-list><part id=\"P1\">";
const std::string kChord = "<harmony><root><root-step>C</root-step></root><kind>major</kind></harmony>";
const std::string kNote = "<note><rest/><duration>4</duration></note>";

TEST(Apply, RefusesBadFilesAndOptionsWithOneMessageAndWritesNothing) {
    const BadCase cases[] = {
        {"missing file", "", "'{dir}/absent.musicxml'", "no such file"},
        {"truncated XML", kHead + "<measure number=\"1\">" + kChord, "", "not well-formed XML"},
        {"not MusicXML", "<html><body/></html>", "", "not a partwise MusicXML score"},
        {"its own entities", "<?xml version=\"1.0\"?><!DOCTYPE score-partwise [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>" + kHead.substr(21) + "<measure number=\"1\">" + kChord + "<note><rest/><duration>&b;</duration></note></measure></part></score-partwise>", "", "declares its own XML entities"},
        {"harmony without root", kHead + "<measure number=\"1\"><harmony><kind>major</kind></harmony>" + kNote + "</measure></part></score-partwise>", "", "without a root"},
        {"measure out of order", kHead + "<measure number=\"2\">" + kChord + kNote + "</measure><measure number=\"1\">" + kNote + "</measure></part></score-partwise>", "", "out of order"},
        {"no chords", kHead + "<measure number=\"1\">" + kNote + "</measure></part></score-partwise>", "", "no chord symbols"},
        {"fret 0", kHead + "<measure number=\"1\">" + kChord + kNote + "</measure></part></score-partwise>", "--capo 0", "fret from 1 to 63"},
        {"fret not a number", "", "--capo three", "fret from 1 to 63"},
        {"distance not a number", "", "--distance far", "--distance wants a number"},
        {"unknown unit", "", "--unit furlongs", "unknown unit"},
        {"measures beyond the score", "", "--measures 3-9", "the score has measures 1-4"},
        {"staves beyond the score", "", "--staves 1-3", "the score has staves 1-2"},
        {"bad range", "", "--measures 5-2", "--measures wants FIRST-LAST"},
    };
    TempDir tmp;
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string in = tmp.path() + "/in.musicxml", out = tmp.path() + "/out.musicxml";
        fs::remove(in);
        if (!c.file.empty()) writeFile(in, c.file);
        std::string args = c.args;
        if (args.find("{dir}") != std::string::npos) args.replace(args.find("{dir}"), 5, tmp.path());
        if (!c.file.empty()) args = "'" + in + "' " + args;
        const Ran r = zemloHost(args + " -o '" + out + "'", tmp.path());
        EXPECT_NE(r.status, 0);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_FALSE(fs::exists(out));
    }
}

TEST(Apply, RefusesAFileTooLargeToRead) {
    TempDir tmp;
    const std::string in = tmp.path() + "/large.musicxml", out = tmp.path() + "/out.musicxml";
    writeFile(in, kHead);
    fs::resize_file(in, 50u << 20);  // 50 MB, sparse
    const Ran r = zemloHost("'" + in + "' -o '" + out + "'", tmp.path());
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.err.find("is 50.0 MB; zemlo-host reads MusicXML files up to 16 MB"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(out));
}

}  // namespace
