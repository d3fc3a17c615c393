// The simulated host's document: records by tag and identifier, as the host
// keeps them, and frames of entries handed out and taken back. It serves
// FX_LoadEData, FX_SaveEData, FX_CreateEData, FX_DeleteEData,
// FX_PreviousEData, FX_NextEData, FX_LoadTGF, FX_SaveTGF and FX_FreeTGF unless
// a test programs a result or a behaviour of its own (host.h);
// hostsim::reset() empties it. A load with no buffer only reports the size.
//
// Numbering follows the host, one rule per kind (rules()):
//   Indexed   records of a kind within one staff-measure (first two numbers)
//             are numbered 0, 1, 2, ... without gaps: a save at the first free
//             index appends, a save beyond it fails, a delete moves the later
//             ones down, a create with -1 in the third number appends and
//             writes the index back.
//   Assigned  addressed by the first number alone; a create with -1 there gets
//             the next free number (from 1), written back; a delete leaves
//             the other numbers alone; a save needs an existing record.
//   Plain     a save stores or replaces; a create needs a free identifier.
// Sizes count bytes, or 16-bit units for kinds whose unit is 2 (raw texts).
// A load copies at most the capacity passed in and reports the record's
// size; a load of a missing record fails and leaves the buffer untouched.
#ifndef CAPOCHORDS_HOSTSIM_DOCUMENT_H
#define CAPOCHORDS_HOSTSIM_DOCUMENT_H

#include "hostsim/host.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace hostsim {
namespace doc {

// Kinds the plug-in reads and writes.
constexpr uint32_t kChord = 0x53444368;         // SDCh (staff, measure, index)
constexpr uint32_t kMeasureText = 0x64746D74;   // dtmt (staff, measure, index)
constexpr uint32_t kTextBlock = 0x534F5458;     // SOTX (number assigned)
constexpr uint32_t kRawText = 0x7478626C;       // txbl (number assigned, 16-bit units)
constexpr uint32_t kMeasure = 0x534F4D53;       // SOMS (measure, 0)
constexpr uint32_t kFontName = 0x534F464E;      // SOFN (font, 0)
constexpr uint32_t kFontDefinition = 0x70666466; // pfdf (number)

// An element record's tag from its two characters: ot plus c1 c2.
constexpr uint32_t elementTag(char c1, char c2) {
    return 0x6F740000u | (static_cast<uint32_t>(static_cast<uint8_t>(c1)) << 8) |
           static_cast<uint8_t>(c2);
}

struct RecordId {
    int16_t first = 0;
    int16_t second = 0;
    int16_t third = 0;
    bool operator<(const RecordId& o) const {
        return std::tie(first, second, third) < std::tie(o.first, o.second, o.third);
    }
    bool operator==(const RecordId& o) const {
        return first == o.first && second == o.second && third == o.third;
    }
};

enum class Numbering : uint8_t { Plain, Indexed, Assigned };

// One row per kind; a row matches a tag when (tag & mask) == tag of the row.
struct TagRule {
    uint32_t tag;
    uint32_t mask;
    Numbering numbering;
    int numbers;  // how many numbers of the identifier address a record: 1 to 3
    int unit;     // bytes per size unit
    const char* name;
};
HOSTSIM_API const std::vector<TagRule>& rules();
HOSTSIM_API const TagRule& ruleFor(uint32_t tag);
// The identifier as the store keys it: numbers the kind ignores are zero.
HOSTSIM_API RecordId keyOf(uint32_t tag, RecordId id);

// Records, bypassing the host's rules (for setting up a document).
HOSTSIM_API void put(uint32_t tag, RecordId id, std::vector<uint8_t> bytes);
template <class T> void putAs(uint32_t tag, RecordId id, const T& value) {
    std::vector<uint8_t> b(sizeof(T));
    std::memcpy(b.data(), &value, sizeof(T));
    put(tag, id, std::move(b));
}
// A raw text from UTF-16 units (no terminator stored).
HOSTSIM_API void putText(uint32_t tag, RecordId id, const std::u16string& units);
HOSTSIM_API std::optional<std::vector<uint8_t>> get(uint32_t tag, RecordId id);
HOSTSIM_API std::optional<std::u16string> getText(uint32_t tag, RecordId id);
HOSTSIM_API bool erase(uint32_t tag, RecordId id);
// The records of an indexed kind under the first two numbers of `id`,
// numbered 0, 1, 2, … up to the first that is missing (one walk, not a
// lookup per record).
HOSTSIM_API std::vector<std::vector<uint8_t>> group(uint32_t tag, RecordId id);
// Identifiers of a kind's records, in the store's order.
HOSTSIM_API std::vector<RecordId> list(uint32_t tag);
HOSTSIM_API size_t recordCount();

// Frames: the entries of one stretch of music, 146 bytes each, keyed by the
// five numbers FX_LoadTGF receives.
struct FrameKey {
    uint16_t a1 = 0;
    int16_t a2 = 0, a3 = 0, a4 = 0, a5 = 0;
    bool operator<(const FrameKey& o) const {
        return std::tie(a1, a2, a3, a4, a5) < std::tie(o.a1, o.a2, o.a3, o.a4, o.a5);
    }
    bool operator==(const FrameKey& o) const { return !(*this < o) && !(o < *this); }
};
constexpr size_t kEntryBytes = 146;
constexpr size_t kFrameBytes = 32;      // the simulated frame record; the plug-in reads 14..23
constexpr size_t kFrameEntriesAt = 14;  // pointer to the entry array
constexpr size_t kFrameCountAt = 22;    // 16-bit entry count
HOSTSIM_API void putFrame(FrameKey key, std::vector<uint8_t> entries);
HOSTSIM_API std::optional<std::vector<uint8_t>> getFrame(FrameKey key);
// Frames handed out and not yet taken back.
HOSTSIM_API size_t framesOut();
// Frames that came back with a guard byte changed, or that the store never
// handed out (saved or freed twice, or foreign).
HOSTSIM_API int guardFaults();
HOSTSIM_API int foreignFrames();

// The whole document, for comparing before and after.
struct Document {
    std::map<std::tuple<uint32_t, RecordId>, std::vector<uint8_t>> records;
    std::map<FrameKey, std::vector<uint8_t>> frames;
    bool operator==(const Document& o) const {
        return records == o.records && frames == o.frames;
    }
    bool operator!=(const Document& o) const { return !(*this == o); }
};
HOSTSIM_API Document snapshot();
HOSTSIM_API void restore(const Document& d);
// The first difference, readably; empty when equal.
HOSTSIM_API std::string difference(const Document& a, const Document& b);

// What the host did, call by call: every load, save, create, delete,
// previous, next and frame call that reached the store while the host was
// checking (host.h).
enum class Op : uint8_t { Load, Save, Create, Delete, Previous, Next, LoadFrame, SaveFrame, FreeFrame };
struct OpRecord {
    Op op;
    uint32_t tag;   // 0 for frames
    RecordId id;    // as the caller passed it (before any number was assigned)
    int32_t size;   // bytes or units as passed (capacity for loads)
    bool ok;
};
HOSTSIM_API const std::vector<OpRecord>& ops();
HOSTSIM_API void clearOps();
HOSTSIM_API size_t countOps(Op op, uint32_t tag);
HOSTSIM_API std::string tagName(uint32_t tag);  // "SDCh", "ot21"

// The store's own behaviour for a call of one of its functions, for a test's
// behaviour that wraps it (setHandler); answers 0 for other functions.
HOSTSIM_API uint64_t serve(Call& c);

}  // namespace doc
}  // namespace hostsim

#endif
