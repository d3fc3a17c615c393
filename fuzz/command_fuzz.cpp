// The whole menu command on a score built from the input: staves, measures,
// chord records with any bytes, measure records, text blocks, raw texts and
// font names with any content, a region, the unit, the dialog's answers, a
// cancelled progress display and failing document calls. The bundle is
// loaded once; the simulated host starts empty for every input. After each
// run the host must have recorded no fault of the plug-in, every frame must
// be back, the ordinary chords must be as they were, and the document must
// be as before the run once the run is cancelled or undone.
#include "fuzzinput.h"
#include "hostsim/document.h"
#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"
#include "records.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace doc = hostsim::doc;
namespace edits = hostsim::edits;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

namespace {

using InvokeFn = int16_t (*)(void*, int16_t, EREGION*, EREGION*);

hostsim::Plugin* plugin = nullptr;
InvokeFn invoke = nullptr;
const int32_t* editDepth = nullptr;
const int32_t* massDepth = nullptr;

constexpr uint32_t kUnitPreference = 0x70666770; // pfgp 0: the unit at byte 30 of 66

void fault(const std::string& what) {
    std::fprintf(stderr, "command_fuzz: %s\n", what.c_str());
    std::abort();
}

void check(bool ok, const std::string& what) {
    if (!ok) fault(what);
}

struct Input : FuzzInput {
    // True about in256 times in 256, and never once the input has run out.
    bool chance(int in256) { return byte() >= 256 - in256; }
    std::vector<uint8_t> bytes(size_t count) {
        std::vector<uint8_t> b(count);
        for (uint8_t& v : b)
            v = byte();
        return b;
    }
    // UTF-16 units: mostly ASCII and a few digits, sometimes anything.
    std::u16string units(size_t most) {
        std::u16string s;
        const size_t count = byte() % (most + 1);
        for (size_t i = 0; i < count; ++i) {
            const uint8_t b = byte();
            s.push_back(b & 0x80 ? static_cast<char16_t>(b << 8 | byte())
                                 : static_cast<char16_t>(b));
        }
        return s;
    }
    // Text typed into a field, as UTF-8 from code points the bytes pick.
    std::string typed(size_t most) {
        std::string s;
        const size_t count = byte() % (most + 1);
        for (size_t i = 0; i < count; ++i) {
            uint32_t cp = byte();
            if (cp >= 0xF0) cp = 0x80 + static_cast<uint32_t>(byte()) * 0x100 + byte();
            if (cp == 0 || (cp >= 0xD800 && cp <= 0xDFFF)) cp = '?';
            if (cp < 0x80) {
                s += static_cast<char>(cp);
            } else if (cp < 0x800) {
                s += static_cast<char>(0xC0 | cp >> 6);
                s += static_cast<char>(0x80 | (cp & 0x3F));
            } else {
                s += static_cast<char>(0xE0 | cp >> 12);
                s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
                s += static_cast<char>(0x80 | (cp & 0x3F));
            }
        }
        return s;
    }
};

// A place on the score: 0 reads as 1, then the rest of the score, then the
// places just outside it.
int16_t placeIn(uint8_t b, int count) {
    const int v = b % (count + 3);
    if (v < count) return static_cast<int16_t>(v + 1);
    return static_cast<int16_t>(v == count ? 0 : v == count + 1 ? -1 : count + 1);
}
// The same from the far end: 0 reads as the last.
int16_t placeFromEnd(uint8_t b, int count) {
    const int16_t p = placeIn(b, count);
    return p >= 1 && p <= count ? static_cast<int16_t>(count + 1 - p) : p;
}

score::ChordRecord chordFrom(Input& in, const std::vector<score::ChordRecord>& earlier) {
    score::ChordRecord c;
    if (in.chance(64)) { // any bytes at all
        const std::vector<uint8_t> b = in.bytes(sizeof c);
        std::memcpy(&c, b.data(), sizeof c);
    } else { // a few bytes pick what the command looks at; the host's bytes get a pattern
        const uint8_t fill = in.byte();
        std::memset(&c, fill, sizeof c);
        c.key1 = static_cast<int16_t>(in.byte() % 8);
        c.key2 = -1;
        c.key3 = in.byte() % 4 * 240;
        c.vertical = static_cast<int16_t>(in.byte() * 4 - 256);
        c.flags = static_cast<uint16_t>(fill << 8 | in.byte());
        c.capoBits = static_cast<uint16_t>(in.byte() << 2); // the capo bit is 0x40
    }
    // Often the capo chord of an earlier chord: the three keys agree.
    if (!earlier.empty() && in.chance(96)) {
        const score::ChordRecord& o = earlier[in.byte() % earlier.size()];
        c.key1 = o.key1;
        c.key2 = o.key2;
        c.key3 = o.key3;
        c.capoBits = static_cast<uint16_t>(o.isCapo() ? c.capoBits & ~0x0040 : c.capoBits | 0x0040);
    }
    return c;
}

// A label block's text as the command writes it, with fuzzed pieces.
std::u16string labelLike(Input& in) {
    std::u16string t = u"^font(" + in.units(6) + u",";
    const std::string numbers = std::to_string(in.word()) + ")^nfx(" + std::to_string(in.word()) +
                                ")^size(" + std::to_string(in.byte()) + ")";
    t += std::u16string(numbers.begin(), numbers.end());
    return t + (in.chance(128) ? u"Capo " : u"") + in.units(8);
}

void buildScore(Input& in, int slots, int measures) {
    score::Score s(slots, measures);
    if (in.chance(48)) {
        std::vector<int16_t> table(static_cast<size_t>(slots + 2));
        for (int16_t& t : table)
            t = static_cast<int16_t>(in.byte() % (slots + 3) - 1);
        score::setSlotToStaff(table);
    }
    // Measure records with any bytes, now and then of another length.
    for (int m = 1; m <= measures; ++m) {
        if (!in.chance(40)) continue;
        const size_t length = in.chance(24) ? in.byte() % 40 : sizeof(score::MeasureRecord);
        doc::put(doc::kMeasure, {static_cast<int16_t>(m), 0, 0}, in.bytes(length));
    }
    std::vector<score::ChordRecord> earlier;
    const int chords = in.byte() % 16;
    for (int i = 0; i < chords; ++i) {
        const int16_t staff = placeIn(in.byte(), slots);
        const int16_t measure = placeIn(in.byte(), measures);
        if (in.chance(12)) { // a record of another length, at the next index
            const auto index = static_cast<int16_t>(score::chords(staff, measure).size());
            doc::put(doc::kChord, {staff, measure, index}, in.bytes(in.byte() % 40));
            continue;
        }
        const score::ChordRecord c = chordFrom(in, earlier);
        s.chord(staff, measure, c);
        earlier.push_back(c);
        if (in.chance(24)) s.chordFlag(measure, false);
    }
    const int blocks = in.byte() % 6;
    for (int i = 0; i < blocks; ++i) {
        const int16_t staff = placeIn(in.byte(), slots);
        const int16_t measure = placeIn(in.byte(), measures);
        const int16_t h = in.word(), v = in.word();
        switch (in.byte() % 4) {
        case 0:
            s.textBlock(staff, measure, h, v, in.units(24));
            break;
        case 1:
            s.textBlock(staff, measure, h, v, labelLike(in));
            break;
        case 2: { // a measure text whose block may be missing or point anywhere
            score::MeasureTextRecord mt;
            mt.blockNumber = static_cast<uint16_t>(in.word());
            mt.horizontal = h;
            mt.vertical = v;
            const auto index = static_cast<int16_t>(score::measureTexts(staff, measure).size());
            doc::putAs(doc::kMeasureText, {staff, measure, index}, mt);
            break;
        }
        default: { // a block with any bytes over a raw text with any units
            const auto raw = static_cast<int16_t>(1 + in.byte() % 8);
            doc::putText(doc::kRawText, {raw, 0, 0}, in.chance(128) ? labelLike(in) : in.units(16));
            std::vector<uint8_t> block = in.bytes(sizeof(score::TextBlockRecord));
            if (!in.chance(96)) std::memcpy(block.data(), &raw, sizeof raw);
            doc::put(doc::kTextBlock, {static_cast<int16_t>(1 + in.byte() % 8), 0, 0}, block);
            break;
        }
        }
    }
    const int fonts = in.byte() % 4;
    for (int i = 0; i < fonts; ++i) {
        const auto number = static_cast<int16_t>(in.byte() % 8);
        if (in.chance(56))
            doc::put(doc::kFontName, {number, 0, 0}, in.bytes(in.byte() % 64));
        else
            score::addFont(number, in.units(40), in.word());
        score::setFontDefinition(static_cast<int16_t>(in.byte() % 16),
                                 static_cast<uint16_t>(number), in.word(),
                                 static_cast<uint16_t>(in.word()));
    }
    if (in.chance(128)) {
        std::vector<uint8_t> pref(66, 0xEE);
        const int16_t unit = static_cast<int16_t>(in.byte() % 10 - 1);
        std::memcpy(pref.data() + 30, &unit, sizeof unit);
        doc::put(kUnitPreference, {0, 0, 0}, pref);
    }
}

score::Region regionFrom(Input& in, int slots, int measures) {
    const int16_t firstSlot = placeIn(in.byte(), slots),
                  firstMeasure = placeIn(in.byte(), measures);
    score::Region r = score::region(firstSlot, firstMeasure, placeFromEnd(in.byte(), slots),
                                    placeFromEnd(in.byte(), measures));
    if (in.chance(32)) {
        r.slotField = static_cast<uint16_t>(in.word());
        r.firstPosition = in.word();
        r.lastPosition = in.word();
    }
    return r;
}

// Every answer given, so that little depends on what an earlier input left
// in the dialog; in an order the controls accept them: the label box on
// before the label is typed, the remove box last since it disables the rest.
std::vector<ui::Step> answers(Input& in) {
    std::vector<ui::Step> steps;
    const uint8_t flags = in.byte();
    steps.push_back(ui::type(4, in.chance(32) ? in.typed(4) : std::to_string(in.byte() % 66)));
    steps.push_back(ui::type(6, in.chance(64) ? in.typed(10)
                                              : std::to_string(in.byte()) + "." +
                                                    std::to_string(in.byte() % 10)));
    steps.push_back(ui::setValue(9, 1));
    steps.push_back(ui::type(10, in.chance(32)
                                     ? in.typed(255)
                                     : "Capo " + std::to_string(in.byte() % 10) + in.typed(8)));
    steps.push_back(ui::setValue(9, (flags & 0x01) ? 0 : 1));
    steps.push_back(ui::setValue(8, flags & 0x02));
    steps.push_back(ui::setValue(11, flags & 0x04));
    steps.push_back(ui::click((flags & 0xF8) == 0xF8 ? 2 : 1));
    return steps;
}

// The records of every staff-measure that are no capo chords. The command
// reads a record shorter than a chord record as its bytes followed by zeros.
using ChordBytes = std::vector<uint8_t>;
std::map<std::pair<int16_t, int16_t>, std::multiset<ChordBytes>>
ordinaryChords(const doc::Document& d) {
    std::map<std::pair<int16_t, int16_t>, std::multiset<ChordBytes>> out;
    for (const auto& [key, bytes] : d.records) {
        const auto& [tag, id] = key;
        if (tag != doc::kChord) continue;
        score::ChordRecord c;
        std::memset(&c, 0, sizeof c);
        if (!bytes.empty()) std::memcpy(&c, bytes.data(), std::min(bytes.size(), sizeof c));
        if (!c.isCapo()) out[{id.first, id.second}].insert(bytes);
    }
    return out;
}

void checkHost(const char* where) {
    const std::string at = std::string(where) + ": ";
    for (const ui::Error& e : ui::errors())
        fault(at + e.text);
    for (const std::string& e : edits::errors())
        fault(at + e);
    check(doc::framesOut() == 0, at + "frames never given back");
    check(doc::guardFaults() == 0, at + "a frame came back with its guard bytes changed");
    check(doc::foreignFrames() == 0, at + "a frame came back that the host never handed out");
    check(*editDepth == 0, at + "ZemloEditDepth is " + std::to_string(*editDepth));
    check(*massDepth == 0, at + "MassEditDepth is " + std::to_string(*massDepth));
}

// Host calls that may fail partway through a run.
constexpr hostsim::Fx kFailing[] = {
    hostsim::Fx::FX_LoadEData,   hostsim::Fx::FX_SaveEData, hostsim::Fx::FX_CreateEData,
    hostsim::Fx::FX_DeleteEData, hostsim::Fx::FX_NextEData, hostsim::Fx::FX_LoadTGF,
    hostsim::Fx::FX_SaveTGF,
};

void runOnce(Input& in, int slots, int measures, const char* where) {
    const score::Region whole =
        score::region(1, 1, static_cast<int16_t>(slots), static_cast<int16_t>(measures));
    const score::Region selected = regionFrom(in, slots, measures);
    const bool nothingSelected = in.chance(24);
    if (nothingSelected) ui::scriptAlerts({static_cast<int16_t>(in.chance(56) ? 2 : 1)});
    if (in.chance(48)) ui::scriptProgress({1 + in.byte() % 12});
    if (in.chance(32)) {
        const hostsim::Fx fx = kFailing[in.byte() % (sizeof kFailing / sizeof kFailing[0])];
        hostsim::failCall(fx, 1 + in.byte() % 24);
    }
    ui::scriptDialog(answers(in));

    // The regions in memory of exactly their size, as the host hands them.
    static_assert(sizeof(EREGION) == sizeof(score::Region), "the host's region record");
    std::unique_ptr<EREGION> selection(new EREGION);
    std::unique_ptr<EREGION> document(new EREGION);
    std::memcpy(selection.get(), &selected, sizeof selected);
    std::memcpy(document.get(), &whole, sizeof whole);
    const doc::Document before = doc::snapshot();
    const size_t editsBefore = edits::all().size();
    const int16_t result =
        invoke(nullptr, 0, nothingSelected ? nullptr : selection.get(), document.get());
    hostsim::clearFaults();
    checkHost(where);
    const doc::Document after = doc::snapshot();
    check(ordinaryChords(before) == ordinaryChords(after),
          std::string(where) + ": ordinary chords changed: " + doc::difference(before, after));
    check(std::memcmp(selection.get(), &selected, sizeof selected) == 0 &&
              std::memcmp(document.get(), &whole, sizeof whole) == 0,
          std::string(where) + ": the command wrote into a region it was handed");
    if (result == 0) {
        check(after == before, std::string(where) +
                                   ": a run that answered 0 left the document changed: " +
                                   doc::difference(before, after));
        return;
    }
    check(result == 1, std::string(where) + ": the run answered " + std::to_string(result));
    check(edits::all().size() == editsBefore + 1 &&
              edits::all().back().state == edits::State::Committed,
          std::string(where) + ": a run that answered 1 committed no edit");
    check(edits::undo(), std::string(where) + ": the run's edit cannot be undone");
    check(doc::snapshot() == before, std::string(where) + ": undo left the document changed: " +
                                         doc::difference(before, doc::snapshot()));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("LC_ALL", "en_US.UTF-8", 1);
    setenv("LANG", "en", 1);
    hostsim::reset();
    plugin = new hostsim::Plugin(CAPOCHORDS_BUNDLE);
    if (!plugin->loaded()) fault("cannot load " CAPOCHORDS_BUNDLE ": " + plugin->error());
    auto pluginMain = plugin->function<int (*)(int, char**)>("main");
    invoke = plugin->function<InvokeFn>("ZemloExtensionInvoke");
    editDepth = plugin->variable<int32_t>("ZemloEditDepth");
    massDepth = plugin->variable<int32_t>("MassEditDepth");
    if (!pluginMain || !invoke || !editDepth || !massDepth)
        fault("the bundle lacks an entry point");
    char name[] = "command_fuzz";
    char* args[] = {name, nullptr};
    if (pluginMain(1, args) != 1) fault("main did not bind the plug-in");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    hostsim::reset();
    ui::setDialogFolder(plugin->bundlePath() + "/Contents/Resources");
    hostsim::setResult(hostsim::Fx::FX_IsMachO, 1);
    Input in{{data, size}};
    const int slots = 1 + in.byte() % 4;
    const int measures = 1 + in.byte() % 6;
    buildScore(in, slots, measures);
    runOnce(in, slots, measures, "first run");
    // The same document run again, with the settings the first run kept.
    if (in.chance(96)) runOnce(in, slots, measures, "second run");
    return 0;
}
