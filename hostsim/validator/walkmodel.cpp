// The walk, told as a list of chords per staff-measure: measures outside,
// slots inside; a chord list walked only under a measure chord flag; capo
// chords updated (or deleted in removal) where they are met; ordinary chords
// without a capo chord collected, at most 16 a staff-measure, and appended
// at its end unless the run has met a capo chord anywhere before.
#include "walkmodel.h"

#include <algorithm>
#include <cstring>

namespace validate {
namespace {

namespace doc = hostsim::doc;
namespace score = hostsim::score;

constexpr size_t kNewCapoLimit = 16;
constexpr int16_t kLabelHorizontal = -200;
constexpr size_t kRawTextReadLimit = 256; // units of a raw text the label search reads

bool siblings(const score::ChordRecord& a, const score::ChordRecord& b) {
    return a.isCapo() != b.isCapo() && a.key1 == b.key1 && a.key2 == b.key2 && a.key3 == b.key3;
}

score::ChordRecord asCapo(score::ChordRecord c, int fret, bool chordFlag) {
    c.capoBits = static_cast<uint16_t>((c.capoBits & 0xFFC0) | 0x0040 | fret);
    c.flags = static_cast<uint16_t>(chordFlag ? c.flags | 0x8000 : c.flags & 0x7FFF);
    return c;
}

} // namespace

std::string WalkCost::describe() const {
    return std::to_string(chordLoads) + " chord loads, " + std::to_string(chordSaves) + " saves, " +
           std::to_string(chordDeletes) + " deletes, " + std::to_string(progressCalls) +
           " progress calls";
}

ChordMap chordsOf(const doc::Document& d) {
    ChordMap out;
    for (const auto& [key, bytes] : d.records) {
        if (std::get<0>(key) != doc::kChord) continue;
        const doc::RecordId& id = std::get<1>(key);
        score::ChordRecord c;
        std::memcpy(&c, bytes.data(), bytes.size() < sizeof c ? bytes.size() : sizeof c);
        auto& list = out[{id.first, id.second}];
        // The store keeps a staff-measure's records numbered from 0 without gaps.
        if (list.size() <= static_cast<size_t>(id.third))
            list.resize(static_cast<size_t>(id.third) + 1);
        list[static_cast<size_t>(id.third)] = c;
    }
    return out;
}

namespace {

bool chordFlagged(const doc::Document& before, int m) {
    auto measureRecord = before.records.find({doc::kMeasure, doc::RecordId{static_cast<int16_t>(m), 0, 0}});
    if (measureRecord == before.records.end() || measureRecord->second.size() < sizeof(score::MeasureRecord))
        return false;
    score::MeasureRecord rec;
    std::memcpy(&rec, measureRecord->second.data(), sizeof rec);
    return (rec.chordFlags & score::kMeasureChordFlag) != 0;
}

// One sibling search reads every record of the staff-measure and one past them.
bool search(WalkPrediction& p, const std::vector<score::ChordRecord>& list, const score::ChordRecord& c,
            score::ChordRecord* last) {
    p.cost.chordLoads += static_cast<long>(list.size()) + 1;
    bool found = false;
    for (const score::ChordRecord& other : list)
        if (siblings(c, other)) {
            if (last) *last = other;
            found = true;
        }
    return found;
}

// The walk of one flagged staff-measure: capo chords updated or removed,
// ordinary ones without a capo chord collected, then appended unless a
// capo chord was met anywhere in the walk so far.
void walkStaffMeasure(WalkPrediction& p, const WalkInput& in, std::vector<score::ChordRecord>& list,
                      bool* metCapo) {
    std::vector<score::ChordRecord> collected;
    size_t appendAt = 0;
    for (size_t index = 0;; ++index) {
        ++p.cost.chordLoads;
        if (index >= list.size()) break;
        if (collected.size() == kNewCapoLimit) {
            ++p.fullLists;
            break;
        }
        if (!in.remove && in.showLabel && in.labelText) p.labelWritten = true;
        score::ChordRecord c = list[index];
        if (c.isCapo()) {
            *metCapo = true;
            ++p.capoChordsMet;
            if (in.remove) {
                ++p.cost.chordDeletes;
                ++p.changed;
                list.erase(list.begin() + static_cast<long>(index));
                --index;
            } else {
                c = asCapo(c, in.fret, in.chordFlag);
                score::ChordRecord sibling;
                c.vertical = search(p, list, c, &sibling) ? static_cast<int16_t>(sibling.vertical + in.offset)
                                                          : in.offset;
                list[index] = c;
                ++p.cost.chordSaves;
                ++p.changed;
            }
        } else if (!in.remove) {
            const bool hasCapo = search(p, list, c, nullptr);
            appendAt = list.size();
            if (!hasCapo) {
                c.vertical = static_cast<int16_t>(c.vertical + in.offset);
                collected.push_back(c);
            }
        }
    }
    if (*metCapo) return;
    for (const score::ChordRecord& c : collected) {
        // Appending needs the first free index; the store refuses any later one.
        if (appendAt == list.size()) {
            list.push_back(asCapo(c, in.fret, in.chordFlag));
            ++p.changed;
        }
        ++p.cost.chordSaves;
        ++appendAt;
    }
}

}  // namespace

WalkPrediction predictWalk(const doc::Document& before, const WalkInput& in) {
    WalkPrediction p;
    p.chords = chordsOf(before);
    if (in.fret < 1 || in.fret > 63) return p;
    const score::Region& r = in.region;
    p.progressShown = true;
    p.steps = static_cast<int32_t>((static_cast<int64_t>(r.lastSlot) - r.firstSlot + 1) *
                                   (static_cast<int64_t>(r.lastMeasure) - r.firstMeasure + 1));
    bool metCapo = false;
    for (int m = r.firstMeasure; m <= r.lastMeasure && !p.cancelled; ++m) {
        const bool flagged = chordFlagged(before, m);
        for (int s = r.firstSlot; s <= r.lastSlot; ++s) {
            const int16_t staff = in.staffOf(s);
            ++p.cost.progressCalls;
            if (in.cancelAt > 0 && p.cost.progressCalls >= in.cancelAt) {
                p.cancelled = true;
                break;
            }
            if (flagged) walkStaffMeasure(p, in, p.chords[{staff, static_cast<int16_t>(m)}], &metCapo);
        }
    }
    // An emptied staff-measure is no staff-measure of the document.
    for (auto it = p.chords.begin(); it != p.chords.end();)
        it = it->second.empty() ? p.chords.erase(it) : std::next(it);
    return p;
}

int findLabelBlock(const doc::Document& d, int16_t staff, int16_t measure, int16_t vertical,
                   const std::u16string& search) {
    for (int16_t index = 0; index >= 0; ++index) {
        auto placed = d.records.find({doc::kMeasureText, doc::RecordId{staff, measure, index}});
        if (placed == d.records.end()) return -1;
        score::MeasureTextRecord mt;
        std::memcpy(&mt, placed->second.data(), std::min(placed->second.size(), sizeof mt));
        if (mt.horizontal == kLabelHorizontal && mt.vertical == vertical) return index;
        auto block = d.records.find(
            {doc::kTextBlock, doc::RecordId{static_cast<int16_t>(mt.blockNumber), 0, 0}});
        if (block == d.records.end()) return -1;
        score::TextBlockRecord tb;
        std::memcpy(&tb, block->second.data(), std::min(block->second.size(), sizeof tb));
        auto raw = d.records.find(
            {doc::kRawText, doc::RecordId{static_cast<int16_t>(tb.rawTextNumber), 0, 0}});
        if (raw == d.records.end()) return -1;
        std::u16string text(std::min<size_t>(raw->second.size() / 2, kRawTextReadLimit), u'\0');
        if (!text.empty()) std::memcpy(&text[0], raw->second.data(), text.size() * 2);
        text = text.substr(0, text.find(u'\0'));
        if (!search.empty() && text.find(search) != std::u16string::npos) return index;
    }
    return -1;
}

std::map<int16_t, int> labelBlocksCreated(const doc::Document& before, const WalkInput& in,
                                          const std::u16string& search) {
    doc::Document d = before;
    std::map<int16_t, int> out;
    const int16_t measure = in.region.firstMeasure;
    const auto baseline = static_cast<int16_t>(in.offset + 130);
    for (int s = in.region.firstSlot; s <= in.region.lastSlot; ++s) {
        const int16_t staff = in.staffOf(s);
        if (findLabelBlock(d, staff, measure, baseline, search) != -1) continue;
        ++out[staff];
        int16_t index = 0;
        while (d.records.count({doc::kMeasureText, doc::RecordId{staff, measure, index}}))
            ++index;
        score::MeasureTextRecord mt;
        mt.horizontal = kLabelHorizontal;
        mt.vertical = baseline;
        std::vector<uint8_t> bytes(sizeof mt);
        std::memcpy(bytes.data(), &mt, sizeof mt);
        d.records[{doc::kMeasureText, doc::RecordId{staff, measure, index}}] = bytes;
    }
    return out;
}

} // namespace validate
