// MusicXML onto the host's records and back: chord fields in the record's
// bytes, tenths as EVPU, label texts, and a read sheet built as records.
#include "mapping.h"

#include "sheet.h"

#include "hostsim/document.h"
#include "hostsim/ui.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace hostsim {
namespace musicxml {
namespace {

using score::ChordRecord;

// The copied bytes as the record lays them out.
static_assert(offsetof(ChordRecord, host4) == 4 && sizeof(ChordRecord::host4) == 4, "bytes 4-7");
static_assert(offsetof(ChordRecord, host10) == 10 && sizeof(ChordRecord::host10) == 6,
              "bytes 10-15");
static_assert(offsetof(ChordRecord, key3) == 20, "onset key");
static_assert(offsetof(ChordRecord, host24) == 24 && sizeof(ChordRecord::host24) == 6,
              "bytes 24-29");
static_assert(kRootStepByte >= 4 && kBassAlterByte <= 7 && kKindByte >= 10 && kKindByte <= 15 &&
                  kHarmonyByte >= 24 && kHarmonyByte + 4 <= 30,
              "chord fields lie in bytes a capo chord copies");

uint8_t* at(ChordRecord& c, size_t offset) {
    return reinterpret_cast<uint8_t*>(&c) + offset;
}
const uint8_t* at(const ChordRecord& c, size_t offset) {
    return reinterpret_cast<const uint8_t*>(&c) + offset;
}

// The ordinary chords of a staff-measure in onset order, each numbered
// among the chords at its onset.
void buildChords(score::Score& s, int16_t staff, int16_t measure,
                 std::vector<const Harmony*> here) {
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
        s.chord(staff, measure, r);
    }
}

// Capo chords read back (in file order, so by measure), from `*next` on while
// they are of this measure, after the ordinary ones, each with its source's ordinal.
void buildCapoChords(score::Score& s, const Staff& st, int16_t staff, int16_t measure,
                     size_t* next) {
    for (; *next < st.capoChords.size() && st.capoChords[*next].measure == measure; ++*next) {
        ChordRecord r = st.capoChords[*next].record;
        for (const ChordRecord& c : score::chords(staff, measure))
            if (!c.isCapo() && fieldsOf(c).harmony == fieldsOf(r).harmony) r.key1 = c.key1;
        s.chord(staff, measure, r);
    }
}

} // namespace

ChordFields fieldsOf(const ChordRecord& c) {
    ChordFields f;
    f.rootStep = *at(c, kRootStepByte);
    f.rootAlter = static_cast<int8_t>(*at(c, kRootAlterByte));
    f.bassStep = *at(c, kBassStepByte) - 1;
    f.bassAlter = static_cast<int8_t>(*at(c, kBassAlterByte));
    f.kind = *at(c, kKindByte);
    f.onset = c.key3;
    std::memcpy(&f.harmony, at(c, kHarmonyByte), sizeof f.harmony);
    return f;
}

void setFields(ChordRecord& c, const ChordFields& f) {
    *at(c, kRootStepByte) = static_cast<uint8_t>(f.rootStep);
    *at(c, kRootAlterByte) = static_cast<uint8_t>(static_cast<int8_t>(f.rootAlter));
    *at(c, kBassStepByte) = static_cast<uint8_t>(f.bassStep + 1);
    *at(c, kBassAlterByte) = static_cast<uint8_t>(static_cast<int8_t>(f.bassAlter));
    *at(c, kKindByte) = static_cast<uint8_t>(f.kind);
    c.key3 = f.onset;
    std::memcpy(at(c, kHarmonyByte), &f.harmony, sizeof f.harmony);
}

int16_t evpuOfTenths(double tenths) {
    return static_cast<int16_t>(std::max(-32768.0, std::min(32767.0, std::round(tenths * 2.4))));
}

std::string tenthsOf(int16_t evpu) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.4f", evpu / 2.4);
    return buf;
}

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

void buildRecords(Sheet& sheet) {
    score::Score s(static_cast<int>(sheet.staves.size()), sheet.measures);
    score::addFont(4, u"Times New Roman", 4096);
    std::map<std::pair<int, int>, std::vector<const Harmony*>> byPlace; // host staff, measure
    for (const auto& h : sheet.harmonies)
        byPlace[{sheet.parts[static_cast<size_t>(h->part)]->firstStaff + h->staff - 1, h->measure}]
            .push_back(h.get());
    for (size_t i = 0; i < sheet.staves.size(); ++i) {
        Staff& st = *sheet.staves[i];
        const auto staff = static_cast<int16_t>(i + 1);
        size_t next = 0;
        for (int m = 1; m <= sheet.measures; ++m) {
            const auto here = byPlace.find({staff, m});
            if (here != byPlace.end())
                buildChords(s, staff, static_cast<int16_t>(m), here->second);
            buildCapoChords(s, st, staff, static_cast<int16_t>(m), &next);
        }
        st.labelByBlock.clear();
        for (const Label& l : st.labels) {
            const auto m = static_cast<int16_t>(l.measure);
            s.textBlock(staff, m, -200, l.vertical, l.text);
            st.labelByBlock[score::measureTexts(staff, m).back().blockNumber] = l;
        }
    }
}

} // namespace musicxml
} // namespace hostsim
