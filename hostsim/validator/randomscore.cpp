// Random scores: staves whose slots are shuffled now and then, chords with
// every host byte marked, capo chords left behind by earlier runs (with and
// without their source chord, with stale frets and flags), label blocks and
// other texts, and measure flags that do not always tell the truth.
#include "randomscore.h"

#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <algorithm>
#include <cstring>

namespace validate {
namespace {

namespace control = hostsim::control;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

bool chance(std::mt19937_64& r, int percent) {
    return pick(r, 0, 99) < percent;
}

template <size_t N> void mark(std::mt19937_64& r, uint8_t (&bytes)[N]) {
    for (uint8_t& b : bytes)
        b = static_cast<uint8_t>(pick(r, 0, 255));
}

// Keys from a small set, so that chords share keys and stale capo chords
// find (or miss) a source now and then.
score::ChordRecord ordinaryChord(std::mt19937_64& r) {
    score::ChordRecord c;
    c.key1 = static_cast<int16_t>(pick(r, -2, 3));
    c.key2 = static_cast<int16_t>(pick(r, 0, 2));
    c.key3 = pick(r, 0, 5) * 120 + (chance(r, 5) ? INT32_MIN : 0);
    mark(r, c.host4);
    mark(r, c.host10);
    mark(r, c.host24);
    c.vertical = static_cast<int16_t>(chance(r, 10) ? pick(r, -32768, 32767) : pick(r, -200, 200));
    c.flags = static_cast<uint16_t>(pick(r, 0, 0xFFFF));
    c.capoBits = static_cast<uint16_t>(pick(r, 0, 0xFFFF) & ~0x0040);
    return c;
}

// A capo chord an earlier run (or the user) left: fret, distance and flag
// as they were then, host bits above the capo flag marked.
score::ChordRecord staleCapo(std::mt19937_64& r, score::ChordRecord from) {
    from.capoBits = static_cast<uint16_t>((pick(r, 0, 0xFFFF) & ~0x007F) | 0x0040 | pick(r, 0, 63));
    from.vertical = static_cast<int16_t>(from.vertical + pick(r, -100, 300));
    from.flags = static_cast<uint16_t>(from.flags ^ (chance(r, 50) ? 0x8000 : 0));
    if (chance(r, 30)) mark(r, from.host10); // the host rewrote its own bytes since
    return from;
}

const char* const kLabels[] = {"Capo 3",
                               "Capo 1",
                               "capo ^fret",
                               "Kapo 7",
                               "",
                               "Capo",
                               "Capo 12 (play in G)",
                               "\xC3\xA9tage 2",
                               "x",
                               "\xF0\x9F\x8E\xB8 Capo 2"};
const char16_t* const kOtherTexts[] = {
    u"Verse", u"Capo", u"D.S. al Coda", u"^font(Arial,0)^size(9)Intro", u"", u"Capo 5", u"Fine"};

} // namespace

// Now and then slots shuffled over the staves.
void randomSlots(std::mt19937_64& r, RandomScore& s) {
    if (chance(r, 40)) {
        std::vector<int16_t> staves;
        for (int i = 1; i <= s.slots; ++i)
            staves.push_back(static_cast<int16_t>(i));
        shuffle(staves, r);
        // Now and then two slots show the same staff.
        if (s.slots > 1 && chance(r, 20))
            staves[static_cast<size_t>(pick(r, 0, s.slots - 1))] = staves[0];
        s.slotToStaff.push_back(0); // slot 0 is no slot
        s.slotToStaff.insert(s.slotToStaff.end(), staves.begin(), staves.end());
    }
}

void randomChords(std::mt19937_64& r, RandomScore& s) {
    // Busy scores now and then, so that the 16 new capo chords of a
    // staff-measure are reached.
    const int busy = chance(r, 15) ? 20 : 6;
    for (int16_t staff = 1; staff <= s.slots; ++staff) {
        for (int16_t m = 1; m <= s.measures; ++m) {
            if (chance(r, 45)) continue;
            std::vector<score::ChordRecord> cs;
            const int n = pick(r, 0, busy);
            for (int i = 0; i < n; ++i)
                cs.push_back(ordinaryChord(r));
            if (chance(r, 25)) {
                // Capo chords of an earlier run, some of whose sources are gone.
                const size_t sources = cs.size();
                for (size_t i = 0; i < sources; ++i)
                    if (chance(r, 60)) cs.push_back(staleCapo(r, cs[i]));
                for (size_t i = 0; i < sources; ++i)
                    if (chance(r, 20))
                        cs.erase(cs.begin() +
                                 static_cast<long>(pick(r, 0, static_cast<int>(cs.size()) - 1)));
                if (chance(r, 30)) cs.push_back(staleCapo(r, ordinaryChord(r)));
                if (chance(r, 40)) shuffle(cs, r);
            }
            if (cs.size() > 20) cs.resize(20);
            if (!cs.empty()) s.chords[{staff, m}] = std::move(cs);
        }
    }
}

// Measure records with marked host bytes and chord flags mostly right.
void randomMeasureRecords(std::mt19937_64& r, RandomScore& s) {
    s.measureRecords.resize(static_cast<size_t>(s.measures));
    for (int m = 1; m <= s.measures; ++m) {
        score::MeasureRecord& rec = s.measureRecords[static_cast<size_t>(m - 1)];
        mark(r, rec.host0);
        mark(r, rec.host16);
        mark(r, rec.host22);
        rec.textFlags = static_cast<uint16_t>(pick(r, 0, 0xFFFF) & ~score::kMeasureTextFlag);
        rec.chordFlags = static_cast<uint16_t>(pick(r, 0, 0xFFFF) & ~score::kMeasureChordFlag);
        bool hasChords = false;
        for (int16_t staff = 1; staff <= s.slots; ++staff)
            hasChords = hasChords || s.chords.count({staff, static_cast<int16_t>(m)}) > 0;
        // The flag lies in one measure of ten: set over no chords, clear over some.
        if (hasChords != chance(r, 10)) rec.chordFlags |= score::kMeasureChordFlag;
    }
}

void randomSettings(std::mt19937_64& r, RandomScore& s) {
    s.settings.fret = chance(r, 10) ? (chance(r, 50) ? 1 : 63) : pick(r, 1, 63);
    s.settings.distance = chance(r, 10) ? pick(r, 0, 32767) : pick(r, 0, 300);
    s.settings.showLabel = chance(r, 70);
    s.settings.label =
        kLabels[pick(r, 0, static_cast<int>(sizeof kLabels / sizeof kLabels[0]) - 1)];
    // The longest label the field takes: the block's text is longer than the
    // label search reads.
    if (chance(r, 5)) s.settings.label = "Capo 2 " + std::string(248, 'y');
    s.settings.chordFlag = chance(r, 50);
}

void randomTexts(std::mt19937_64& r, RandomScore& s) {
    // Texts: blocks where a label of this run or of an earlier one would be,
    // and others anywhere.
    const int texts = pick(r, 0, 4);
    for (int i = 0; i < texts; ++i) {
        PlacedText t;
        t.staff = static_cast<int16_t>(pick(r, 1, s.slots));
        t.measure = static_cast<int16_t>(chance(r, 50) ? 1 : pick(r, 1, s.measures));
        const bool label = chance(r, 50);
        t.horizontal = static_cast<int16_t>(label ? -200 : pick(r, -300, 300));
        t.vertical = static_cast<int16_t>(label && chance(r, 50) ? s.settings.distance + 130
                                                                 : pick(r, -100, 400));
        t.text = label
                     ? u"^font(Times New Roman,0)^nfx(2)^size(12)Capo 2"
                     : kOtherTexts[pick(
                           r, 0, static_cast<int>(sizeof kOtherTexts / sizeof kOtherTexts[0]) - 1)];
        if (chance(r, 10)) t.text = u"Intro " + std::u16string(260, u'-') + u" Capo";
        if (chance(r, 8)) t.broken = pick(r, 1, 2);
        s.texts.push_back(t);
    }
    s.timesNewRoman = chance(r, 50);
    s.fontDefinition = chance(r, 30);
}

void randomRegion(std::mt19937_64& r, RandomScore& s) {
    const int firstSlot = pick(r, 1, s.slots), lastSlot = pick(r, firstSlot, s.slots);
    const int firstMeasure = pick(r, 1, s.measures),
              lastMeasure = pick(r, firstMeasure, s.measures);
    s.region = score::region(static_cast<int16_t>(firstSlot), static_cast<int16_t>(firstMeasure),
                             static_cast<int16_t>(lastSlot), static_cast<int16_t>(lastMeasure),
                             static_cast<uint16_t>(pick(r, 0, 0xFFFF)));
    // Positions inside the first and last measure do not narrow the walk.
    s.region.firstPosition = pick(r, 0, 2048);
    s.region.lastPosition = pick(r, 0, 2048);
    s.wholeDocument = chance(r, 15);
}

RandomScore randomScore(std::mt19937_64& r) {
    RandomScore s;
    s.slots = pick(r, 1, 6);
    s.measures = pick(r, 1, 12);
    randomSlots(r, s);
    randomChords(r, s);
    randomMeasureRecords(r, s);
    randomSettings(r, s);
    randomTexts(r, s);
    randomRegion(r, s);
    return s;
}

void RandomScore::build() const {
    score::Score sc(slots, measures);
    for (int m = 1; m <= measures; ++m)
        hostsim::doc::putAs(hostsim::doc::kMeasure, {static_cast<int16_t>(m), 0, 0},
                            measureRecords[static_cast<size_t>(m - 1)]);
    for (const auto& [place, cs] : chords)
        for (size_t i = 0; i < cs.size(); ++i)
            hostsim::doc::putAs(hostsim::doc::kChord,
                                {place.first, place.second, static_cast<int16_t>(i)}, cs[i]);
    // textBlock sets the text flag, as the host does for a measure with texts.
    for (const PlacedText& t : texts) {
        sc.textBlock(t.staff, t.measure, t.horizontal, t.vertical, t.text);
        if (!t.broken) continue;
        // Point the block (or its text block) at a number the document has
        // none of, and never hands out: a damaged document.
        const auto missing = static_cast<int16_t>(30000 + t.staff * 100 + t.measure);
        const auto index = static_cast<int16_t>(score::measureTexts(t.staff, t.measure).size() - 1);
        score::MeasureTextRecord mt = score::measureTexts(t.staff, t.measure).back();
        const hostsim::doc::RecordId blockId{static_cast<int16_t>(mt.blockNumber), 0, 0};
        if (t.broken == 1) {
            mt.blockNumber = static_cast<uint16_t>(missing);
            hostsim::doc::putAs(hostsim::doc::kMeasureText, {t.staff, t.measure, index}, mt);
        } else {
            score::TextBlockRecord tb;
            std::memcpy(&tb, hostsim::doc::get(hostsim::doc::kTextBlock, blockId)->data(),
                        sizeof tb);
            tb.rawTextNumber = static_cast<uint16_t>(missing);
            hostsim::doc::putAs(hostsim::doc::kTextBlock, blockId, tb);
        }
    }
    if (timesNewRoman) score::addFont(3, u"Times New Roman", 7);
    score::addFont(0, u"Default Font", 0);
    if (fontDefinition) score::setFontDefinition(14, 3, 10, 0x0001);
    score::setSlotToStaff(slotToStaff);
}

score::Region RandomScore::whole() const {
    return score::region(1, 1, static_cast<int16_t>(slots), static_cast<int16_t>(measures));
}

score::Region RandomScore::walked() const {
    return wholeDocument ? whole() : region;
}

int16_t RandomScore::staffOf(int slot) const {
    if (slot >= 0 && static_cast<size_t>(slot) < slotToStaff.size())
        return slotToStaff[static_cast<size_t>(slot)];
    return static_cast<int16_t>(slot);
}

std::set<int16_t> RandomScore::staves() const {
    const score::Region w = walked();
    std::set<int16_t> out;
    for (int s = w.firstSlot; s <= w.lastSlot; ++s)
        out.insert(staffOf(s));
    return out;
}

std::vector<ui::Step> RandomScore::dialog(const RunSettings& s) const {
    // The fret first: changing it rewrites the digits of the label.
    std::vector<ui::Step> steps{ui::type(control::kFret, std::to_string(s.fret)),
                                ui::type(control::kDistance, std::to_string(s.distance)),
                                ui::setValue(control::kShowLabel, 1),
                                ui::type(control::kLabel, s.label),
                                ui::setValue(control::kShowLabel, s.showLabel ? 1 : 0),
                                ui::setValue(control::kChordFlag, s.chordFlag ? 1 : 0),
                                ui::setValue(control::kRemove, s.remove ? 1 : 0),
                                ui::click(control::kOk)};
    return steps;
}

std::string RandomScore::describe() const {
    const score::Region w = walked();
    size_t n = 0;
    for (const auto& [place, cs] : chords)
        n += cs.size();
    return std::to_string(slots) + " staves, " + std::to_string(measures) + " measures, " +
           std::to_string(n) + " chords, region slots " + std::to_string(w.firstSlot) + ".." +
           std::to_string(w.lastSlot) + " measures " + std::to_string(w.firstMeasure) + ".." +
           std::to_string(w.lastMeasure) + (slotToStaff.empty() ? "" : ", slots shuffled") +
           (wholeDocument ? ", no selection" : "") + ", fret " + std::to_string(settings.fret) +
           ", distance " + std::to_string(settings.distance) +
           (settings.showLabel ? ", label \"" + settings.label + "\"" : ", no label") +
           (settings.chordFlag ? ", chord flag" : "");
}

} // namespace validate
