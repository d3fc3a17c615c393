// Scores for tests, the slot-to-staff table and the document's fonts.
#include "engine.h"
#include "hostsim/score.h"

#include <cstring>
#include <map>

namespace hostsim {
namespace score {
namespace {

struct ScoreState {
    std::vector<int16_t> slotToStaff;
};

ScoreState& scoreState() {
    static ScoreState* s = new ScoreState();
    return *s;
}

template <class T> std::vector<uint8_t> bytesOf(const T& v) {
    std::vector<uint8_t> b(sizeof v);
    std::memcpy(b.data(), &v, sizeof v);
    return b;
}

template <class T> T recordOf(const std::vector<uint8_t>& b) {
    T v{};
    if (!b.empty()) std::memcpy(&v, b.data(), b.size() < sizeof v ? b.size() : sizeof v);
    return v;
}

MeasureRecord measureRecord(int16_t measure) {
    auto b = doc::get(doc::kMeasure, {measure, 0, 0});
    return b ? recordOf<MeasureRecord>(*b) : MeasureRecord{};
}

// The next free number of a kind whose numbers the host assigns.
int16_t nextAssigned(uint32_t tag) {
    int16_t next = 1;
    for (const doc::RecordId& id : doc::list(tag))
        if (id.first >= next) next = static_cast<int16_t>(id.first + 1);
    return next;
}

}  // namespace

Region region(int16_t firstSlot, int16_t firstMeasure, int16_t lastSlot, int16_t lastMeasure,
              uint16_t slotField) {
    Region r;
    r.slotField = slotField;
    r.firstSlot = firstSlot;
    r.firstMeasure = firstMeasure;
    r.lastSlot = lastSlot;
    r.lastMeasure = lastMeasure;
    return r;
}

Score::Score(int slots, int measures) : slots_(slots), measures_(measures) {
    for (int m = 1; m <= measures; ++m) doc::putAs(doc::kMeasure, {static_cast<int16_t>(m), 0, 0}, MeasureRecord{});
}

Score& Score::chord(int16_t staff, int16_t measure, const ChordRecord& c) {
    const auto index = static_cast<int16_t>(chords(staff, measure).size());
    doc::putAs(doc::kChord, {staff, measure, index}, c);
    return chordFlag(measure, true);
}

Score& Score::chordFlag(int16_t measure, bool on) {
    MeasureRecord m = measureRecord(measure);
    m.chordFlags = static_cast<uint16_t>(on ? m.chordFlags | kMeasureChordFlag
                                            : m.chordFlags & ~kMeasureChordFlag);
    doc::putAs(doc::kMeasure, {measure, 0, 0}, m);
    return *this;
}

Score& Score::textBlock(int16_t staff, int16_t measure, int16_t horizontal, int16_t vertical,
                        const std::u16string& text) {
    const int16_t raw = nextAssigned(doc::kRawText);
    doc::putText(doc::kRawText, {raw, 0, 0}, text);
    TextBlockRecord block;
    block.rawTextNumber = static_cast<uint16_t>(raw);
    block.word8 = 100;
    block.word14 = 0x1808;
    block.rawTextKind = 0x626C;
    const int16_t number = nextAssigned(doc::kTextBlock);
    doc::putAs(doc::kTextBlock, {number, 0, 0}, block);
    MeasureTextRecord mt;
    mt.blockNumber = static_cast<uint16_t>(number);
    mt.horizontal = horizontal;
    mt.vertical = vertical;
    const auto index = static_cast<int16_t>(measureTexts(staff, measure).size());
    doc::putAs(doc::kMeasureText, {staff, measure, index}, mt);
    MeasureRecord m = measureRecord(measure);
    m.textFlags |= kMeasureTextFlag;
    doc::putAs(doc::kMeasure, {measure, 0, 0}, m);
    return *this;
}

Region Score::whole() const {
    return region(1, 1, static_cast<int16_t>(slots_), static_cast<int16_t>(measures_));
}

std::vector<ChordRecord> chords(int16_t staff, int16_t measure) {
    std::vector<ChordRecord> out;
    for (const auto& b : doc::group(doc::kChord, {staff, measure, 0}))
        out.push_back(recordOf<ChordRecord>(b));
    return out;
}

std::vector<MeasureTextRecord> measureTexts(int16_t staff, int16_t measure) {
    std::vector<MeasureTextRecord> out;
    for (const auto& b : doc::group(doc::kMeasureText, {staff, measure, 0}))
        out.push_back(recordOf<MeasureTextRecord>(b));
    return out;
}

std::vector<std::u16string> texts(int16_t staff, int16_t measure) {
    std::vector<std::u16string> out;
    for (const MeasureTextRecord& mt : measureTexts(staff, measure)) {
        auto block = doc::get(doc::kTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0});
        if (!block) {
            out.push_back(u"");
            continue;
        }
        auto tb = recordOf<TextBlockRecord>(*block);
        auto raw = doc::getText(doc::kRawText, {static_cast<int16_t>(tb.rawTextNumber), 0, 0});
        out.push_back(raw ? *raw : u"");
    }
    return out;
}

void setSlotToStaff(std::vector<int16_t> table) { scoreState().slotToStaff = std::move(table); }

void addFont(int16_t number, const std::u16string& name, int16_t nameValue) {
    std::vector<uint8_t> rec(1036, 0);
    std::memcpy(rec.data(), &nameValue, sizeof nameValue);
    const size_t n = name.size() < 511 ? name.size() : 511;
    std::memcpy(rec.data() + 12, name.data(), n * 2);
    doc::put(doc::kFontName, {number, 0, 0}, std::move(rec));
}

void setFontDefinition(int16_t number, uint16_t font, int16_t size, uint16_t effects) {
    uint8_t rec[6];
    std::memcpy(rec, &font, 2);
    std::memcpy(rec + 2, &size, 2);
    std::memcpy(rec + 4, &effects, 2);
    doc::put(doc::kFontDefinition, {number, 0, 0}, std::vector<uint8_t>(rec, rec + 6));
}

}  // namespace score

void resetScore() { score::scoreState() = score::ScoreState(); }

void addScoreBuiltIns(BuiltIns& b) {
    // FX_SlotToInst(slot, slotField): the staff of a slot.
    b[static_cast<int>(Fx::FX_SlotToInst)] = [](Call& c) -> uint64_t {
        const auto slot = static_cast<int16_t>(c.args[0]);
        const auto& table = score::scoreState().slotToStaff;
        if (slot >= 0 && static_cast<size_t>(slot) < table.size())
            return static_cast<uint64_t>(static_cast<int64_t>(table[static_cast<size_t>(slot)]));
        return static_cast<uint64_t>(static_cast<int64_t>(slot));
    };
    // FX_FontNameToNum_UTF16(name): the number of the font of that name.
    b[static_cast<int>(Fx::FX_FontNameToNum_UTF16)] = [](Call& c) -> uint64_t {
        const auto* name = c.ptr<const char16_t>(0);
        if (!name) return 0;
        std::u16string want(name);
        for (const doc::RecordId& id : doc::list(doc::kFontName)) {
            auto rec = doc::get(doc::kFontName, id);
            if (!rec || rec->size() < 14) continue;
            std::u16string have;
            for (size_t i = 12; i + 1 < rec->size(); i += 2) {
                char16_t u;
                std::memcpy(&u, rec->data() + i, 2);
                if (!u) break;
                have.push_back(u);
            }
            if (have == want) return static_cast<uint64_t>(static_cast<int64_t>(id.first));
        }
        return 0;
    };
}

}  // namespace hostsim
