// Expected outcomes of runs, checked on document snapshots.
#include "outcome.h"

#include "hostsim/boundary.h"
#include "hostsim/edits.h"
#include "hostsim/ui.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace validate {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;

namespace {

// A record as a load of sizeof(T) reads it into a zeroed buffer: a shorter
// record fills only its own bytes.
template <class T>
std::optional<T> recordIn(const doc::Document& d, uint32_t tag, doc::RecordId id) {
    auto it = d.records.find({tag, doc::keyOf(tag, id)});
    if (it == d.records.end()) return std::nullopt;
    T v{};
    std::memcpy(&v, it->second.data(), std::min(it->second.size(), sizeof v));
    return v;
}

std::u16string ascii(const std::string& s) {
    return std::u16string(s.begin(), s.end());
}

std::string place(int16_t staff, int16_t measure) {
    return "staff " + std::to_string(staff) + ", measure " + std::to_string(measure);
}

} // namespace

const UnitTexts kUnitTexts[6] = {
    {"evpus", "32767", "32768", "0", "64", 2, "2"},
    {"inches", "113.774", "113.778", "0.000", "0.222", 432, "1.500"},
    {"centimeters", "289.973", "289.982", "0.000", "0.566", 170, "1.504"},
    {"points", "8191.750", "8192", "0.00", "16.00", 6, "1.500"},
    {"picas", "682.646", "682.667", "0.000", "1.333", 72, "1.500"},
    {"spaces", "1365.292", "1365.333", "0.000", "2.667", 36, "1.500"},
};

void addLabelFont() {
    score::addFont(3, u"Times New Roman", 7);
}

std::u16string fontCommand(const std::u16string& name, int nameValue) {
    return u"^font(" + name + ascii("," + std::to_string(nameValue) + ")^nfx(2)^size(12)");
}

std::u16string labelText(const std::u16string& label) {
    return fontCommand(u"Times New Roman", 7) + label;
}

std::u16string Confirmed::text() const {
    return (font ? *font : fontCommand(u"Times New Roman", 7)) + label;
}

std::vector<score::ChordRecord> chordsIn(const doc::Document& d, int16_t staff, int16_t measure) {
    std::vector<score::ChordRecord> out;
    for (int16_t i = 0; i < INT16_MAX; ++i) {
        auto it = d.records.find({doc::kChord, doc::RecordId{staff, measure, i}});
        if (it == d.records.end()) break;
        score::ChordRecord c;
        std::memcpy(&c, it->second.data(), std::min(it->second.size(), sizeof c));
        out.push_back(c);
    }
    return out;
}

score::ChordRecord capoOf(score::ChordRecord source, int fret, int16_t distance, bool flag) {
    source.capoBits = static_cast<uint16_t>((source.capoBits & ~0x003F) | 0x0040 | (fret & 0x3F));
    source.vertical = static_cast<int16_t>(source.vertical + distance);
    source.flags = static_cast<uint16_t>(flag ? source.flags | 0x8000 : source.flags & ~0x8000);
    return source;
}

std::vector<Block> blocksIn(const doc::Document& d, int16_t staff, int16_t measure) {
    std::vector<Block> out;
    for (int16_t i = 0; i < INT16_MAX; ++i) {
        auto mt = recordIn<score::MeasureTextRecord>(d, doc::kMeasureText, {staff, measure, i});
        if (!mt) break;
        Block b;
        b.horizontal = mt->horizontal;
        b.vertical = mt->vertical;
        b.blockNumber = mt->blockNumber;
        if (auto tb = recordIn<score::TextBlockRecord>(
                d, doc::kTextBlock, {static_cast<int16_t>(mt->blockNumber), 0, 0})) {
            auto raw = d.records.find(
                {doc::kRawText, doc::RecordId{static_cast<int16_t>(tb->rawTextNumber), 0, 0}});
            if (raw != d.records.end()) {
                std::u16string text(raw->second.size() / 2, u'\0');
                if (!text.empty()) std::memcpy(&text[0], raw->second.data(), text.size() * 2);
                b.text = text;
            }
        }
        out.push_back(b);
    }
    return out;
}

bool pairsWhole(const std::u16string& t) {
    for (size_t i = 0; i < t.size(); ++i) {
        if (t[i] >= 0xD800 && t[i] < 0xDC00) {
            if (i + 1 >= t.size() || t[i + 1] < 0xDC00 || t[i + 1] >= 0xE000) return false;
            ++i;
        } else if (t[i] >= 0xDC00 && t[i] < 0xE000) {
            return false;
        }
    }
    return true;
}

std::string shown(const std::u16string& text) {
    std::string s = ui::utf8(text);
    return s.size() > 120 ? s.substr(0, 120) + "..." : s;
}

namespace {

// Each walked staff-measure: its chords, then a capo chord of each of the first 16.
void expectCapoChords(Context& cx, const doc::Document& before, const doc::Document& after, const Confirmed& s,
                      const std::set<std::pair<int16_t, int16_t>>& walked, const std::string& where) {
    for (const auto& [staff, measure] : walked) {
        std::vector<score::ChordRecord> want = chordsIn(before, staff, measure);
        const size_t n = want.size();
        for (size_t i = 0; i < n && i < 16; ++i)
            want.push_back(capoOf(want[i], s.fret, s.distance, s.chordFlag));
        const std::vector<score::ChordRecord> got = chordsIn(after, staff, measure);
        bool same = got.size() == want.size();
        for (size_t i = 0; same && i < got.size(); ++i)
            same = std::memcmp(&got[i], &want[i], sizeof got[i]) == 0;
        cx.expect(same, where + ": " + place(staff, measure) + " holds " +
                            std::to_string(got.size()) + " chord records, not the " +
                            std::to_string(want.size()) +
                            " expected, or a capo chord differs from its source with fret " +
                            std::to_string(s.fret) + " and distance " + std::to_string(s.distance));
    }

}

// The first measure of every staff walked: its text blocks kept, and the label behind them.
void expectLabels(Context& cx, const doc::Document& before, const doc::Document& after, const Confirmed& s,
                  int16_t first, const std::set<int16_t>& staves, const std::string& where) {
    const bool labels = s.showLabel && !s.label.empty();
    for (int16_t staff : staves) {
        const std::vector<Block> was = blocksIn(before, staff, first),
                                 is = blocksIn(after, staff, first);
        const std::string at = where + ": " + place(staff, first);
        if (!cx.expect(is.size() == was.size() + (labels ? 1 : 0),
                       at + " holds " + std::to_string(is.size()) + " text blocks, " +
                           std::to_string(was.size()) + " before"))
            continue;
        for (size_t i = 0; i < was.size(); ++i)
            cx.expect(is[i].horizontal == was[i].horizontal && is[i].vertical == was[i].vertical &&
                          is[i].text == was[i].text,
                      at + ": text block " + std::to_string(i) + " changed");
        if (!labels) continue;
        const Block& b = is.back();
        cx.expect(b.horizontal == -200 && b.vertical == baselineOf(s.distance),
                  at + ": the label sits at " + std::to_string(b.horizontal) + ", " +
                      std::to_string(b.vertical) + ", not -200, " +
                      std::to_string(baselineOf(s.distance)));
        cx.expect(b.text && *b.text == s.text(),
                  at + ": the label reads \"" + (b.text ? shown(*b.text) : std::string("(none)")) +
                      "\", not \"" + shown(s.text()) + "\"");
        // A measure record that cannot be read is never saved over.
        auto m = recordIn<score::MeasureRecord>(after, doc::kMeasure, {first, 0, 0});
        if (recordIn<score::MeasureRecord>(before, doc::kMeasure, {first, 0, 0}))
            cx.expect(m && (m->textFlags & score::kMeasureTextFlag),
                      at + ": the measure's text flag is not set");
        else
            cx.expect(!m, at + ": a measure record was made up for a measure that had none");
    }
}

}  // namespace

void expectFreshRun(Context& cx, const doc::Document& before, const doc::Document& after,
                    const Confirmed& s, const score::Region& region, int16_t result,
                    const std::string& where) {
    const bool writes = s.fret >= 1 && s.fret <= 63 && !s.remove;
    auto inside = [&](int16_t staff, int16_t measure) {
        return staff >= region.firstSlot && staff <= region.lastSlot &&
               measure >= region.firstMeasure && measure <= region.lastMeasure;
    };
    // The staff-measures the walk reads: inside the region, in a measure whose chord flag is set.
    std::set<std::pair<int16_t, int16_t>> walked;
    for (const auto& [key, bytes] : before.records) {
        const auto& [tag, id] = key;
        if (tag != doc::kChord || !inside(id.first, id.second)) continue;
        auto m = recordIn<score::MeasureRecord>(before, doc::kMeasure, {id.second, 0, 0});
        if (m && (m->chordFlags & score::kMeasureChordFlag)) walked.insert({id.first, id.second});
    }
    const bool changes = writes && !walked.empty();
    cx.expect(result == (changes ? 1 : 0), where + ": the run answered " + std::to_string(result) +
                                               ", not " + std::to_string(changes ? 1 : 0));
    int notices = 0;
    for (const ui::Alert& a : ui::alerts())
        notices += a.kind == hostsim::alert::kNotice;
    cx.expect(notices == (changes ? 0 : 1),
              where + ": " + std::to_string(notices) + " notices that nothing changed");
    const auto& all = edits::all();
    if (cx.expect(all.size() == 1,
                  where + ": " + std::to_string(all.size()) + " edits opened, not 1"))
        cx.expect(all[0].state == (changes ? edits::State::Committed : edits::State::Cancelled),
                  where +
                      (changes ? ": the edit was not committed" : ": the edit was not cancelled"));
    if (!changes) {
        cx.expect(before == after,
                  where + ": a run that changed no chord left " + doc::difference(before, after));
        return;
    }

    std::set<int16_t> staves;
    for (int s2 = region.firstSlot; s2 <= region.lastSlot; ++s2)
        staves.insert(static_cast<int16_t>(s2));
    expectOrdinaryKept(cx, before, after, where);
    expectOutsideUnchanged(cx, before, after, region, staves, where);
    expectCapoChords(cx, before, after, s, walked, where);
    expectLabels(cx, before, after, s, region.firstMeasure, staves, where);
}

} // namespace validate
