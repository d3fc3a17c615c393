// Any bytes as a MusicXML file through the simulated host's reader and
// writer: every ordinary chord given a capo chord at a fret the first byte
// picks, the file written back. Whatever is read must be written as
// well-formed XML that reads back with the same chords and every capo chord
// recognised; nothing may crash, leak or read outside the file's bytes.
#include "hostsim/document.h"
#include "hostsim/host.h"
#include "hostsim/score.h"
#include "leadsheet.h"

#include <libxml/parser.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

namespace mx = hostsim::musicxml;
namespace score = hostsim::score;
namespace doc = hostsim::doc;

// A capo chord for every ordinary chord: what the command adds on a first run.
size_t addCapoChords(const mx::LeadSheet& sheet, int fret) {
    size_t added = 0;
    for (int16_t staff = 1; staff <= sheet.staves(); ++staff)
        for (int16_t m = 1; m <= sheet.measures(); ++m) {
            const auto chords = score::chords(staff, m);
            int16_t index = static_cast<int16_t>(chords.size());
            for (score::ChordRecord c : chords) {
                if (c.isCapo() || index >= 32000) continue;
                c.capoBits = static_cast<uint16_t>(0x0040 | fret);
                c.vertical = static_cast<int16_t>(c.vertical + 64);
                doc::putAs(doc::kChord, {staff, m, index++}, c);
                ++added;
            }
        }
    return added;
}

size_t capoChords(const mx::LeadSheet& sheet) {
    size_t n = 0;
    for (int16_t staff = 1; staff <= sheet.staves(); ++staff)
        for (int16_t m = 1; m <= sheet.measures(); ++m)
            for (const score::ChordRecord& c : score::chords(staff, m))
                n += c.isCapo();
    return n;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const int fret = 1 + data[0] % 11; // frets the interval alone tells
    static const std::string in = "/tmp/leadsheet-fuzz-" + std::to_string(getpid()) + ".musicxml";
    static const std::string out = "/tmp/leadsheet-fuzz-" + std::to_string(getpid()) + ".out.musicxml";
    std::ofstream(in, std::ios::binary).write(reinterpret_cast<const char*>(data + 1),
                                              static_cast<std::streamsize>(size - 1));
    hostsim::reset();
    std::string error;
    auto sheet = mx::LeadSheet::read(in, &error);
    if (!sheet) return 0;
    sheet->build();
    const size_t chords = sheet->chordCount();
    const size_t before = capoChords(*sheet);
    const size_t added = addCapoChords(*sheet, fret);
    if (!sheet->write(out, &error)) return 0;
    sheet.reset();

    xmlDocPtr written = xmlReadFile(out.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!written) {
        std::fprintf(stderr, "the output is not well-formed XML\n");
        std::abort();
    }
    xmlFreeDoc(written);
    hostsim::reset();
    auto again = mx::LeadSheet::read(out, &error);
    if (!again) {
        std::fprintf(stderr, "the output is refused: %s\n", error.c_str());
        std::abort();
    }
    again->build();
    if (again->chordCount() != chords || capoChords(*again) != before + added) {
        std::fprintf(stderr, "read back: %zu chords (were %zu), %zu capo chords (were %zu + %zu)\n",
                     again->chordCount(), chords, capoChords(*again), before, added);
        std::abort();
    }
    return 0;
}
