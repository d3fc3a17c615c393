// The simulated host's document store and the behaviours of its
// document-data and frame functions (document.h).
#include "engine.h"
#include "hostsim/document.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>

namespace hostsim {
namespace doc {
namespace {

constexpr size_t kGuard = 16;
constexpr uint8_t kGuardByte = 0xA5;

// A block handed to the plug-in: guard, payload, guard.
struct Guarded {
    std::unique_ptr<uint8_t[]> bytes;
    size_t size = 0;
    explicit Guarded(size_t n) : bytes(new uint8_t[n + 2 * kGuard]), size(n) {
        std::memset(bytes.get(), kGuardByte, n + 2 * kGuard);
        std::memset(payload(), 0, n);
    }
    uint8_t* payload() { return bytes.get() + kGuard; }
    bool intact() const {
        for (size_t i = 0; i < kGuard; ++i)
            if (bytes[i] != kGuardByte || bytes[kGuard + size + i] != kGuardByte) return false;
        return true;
    }
};

struct FrameOut {
    FrameKey key;
    int16_t count;
    Guarded header;
    Guarded entries;
    FrameOut(FrameKey k, int16_t n) : key(k), count(n), header(kFrameBytes), entries(n * kEntryBytes) {}
};

struct Store {
    Document doc;
    std::map<void*, std::unique_ptr<FrameOut>> out;  // by the frame's address
    std::vector<OpRecord> log;
    int guardFaults = 0;
    int foreign = 0;
    std::function<void(Document)> deferred;  // deferSnapshot()
};

Store& store() {
    static Store* s = new Store();  // see state() in host.cpp
    return *s;
}

// The document, about to be changed: a copy deferred till now is taken first.
Document& changing() {
    takeDeferredSnapshot();
    return store().doc;
}

using Key = std::tuple<uint32_t, RecordId>;

const std::vector<TagRule> kRules = {
    {kChord, 0xFFFFFFFF, Numbering::Indexed, 3, 1, "chord record"},
    {kMeasureText, 0xFFFFFFFF, Numbering::Indexed, 3, 1, "measure text"},
    {kTextBlock, 0xFFFFFFFF, Numbering::Assigned, 1, 1, "text block"},
    {kRawText, 0xFFFFFFFF, Numbering::Assigned, 1, 2, "raw text"},
    {kMeasure, 0xFFFFFFFF, Numbering::Plain, 2, 1, "measure record"},
    {kFontName, 0xFFFFFFFF, Numbering::Plain, 2, 1, "font name"},
    {kFontDefinition, 0xFFFFFFFF, Numbering::Plain, 1, 1, "font definition"},
    // Element records: (0xFFFE, i) or (n, 0); the third number is not set.
    {0x6F740000, 0xFFFF0000, Numbering::Plain, 2, 1, "element record"},
    // Preferences: addressed by their number.
    {0x70660000, 0xFFFF0000, Numbering::Plain, 1, 1, "preference"},
    // Anything else: all three numbers, stored as given.
    {0x00000000, 0x00000000, Numbering::Plain, 3, 1, "record"},
};

RecordId readId(const Call& c, size_t i) {
    RecordId id;
    const int16_t* p = c.ptr<int16_t>(i);
    if (p) {
        std::memcpy(&id.first, p, 2);
        std::memcpy(&id.second, p + 1, 2);
        std::memcpy(&id.third, p + 2, 2);
    }
    return id;
}

void writeId(const Call& c, size_t i, RecordId id) {
    int16_t* p = c.ptr<int16_t>(i);
    std::memcpy(p, &id.first, 2);
    std::memcpy(p + 1, &id.second, 2);
    std::memcpy(p + 2, &id.third, 2);
}

bool sameGroup(const RecordId& a, const RecordId& b) {
    return a.first == b.first && a.second == b.second;
}

using Records = decltype(Document::records);

// The identifier as the store keys it, under the kind's rule.
RecordId keyBy(const TagRule& rule, RecordId id) {
    if (rule.numbers < 3) id.third = 0;
    if (rule.numbers < 2) id.second = 0;
    return id;
}

// The records of an indexed kind in id's staff-measure: they sit together in
// the store's order, from `first` to just before `end`.
struct Group {
    Records::iterator first;
    Records::iterator end;
    int16_t count = 0;
};

Group groupOf(uint32_t tag, RecordId id) {
    auto& recs = store().doc.records;
    Group g;
    const int16_t lowest = std::numeric_limits<int16_t>::min();
    g.first = recs.lower_bound({tag, RecordId{id.first, id.second, lowest}});
    for (g.end = g.first; g.end != recs.end() && std::get<0>(g.end->first) == tag &&
                          sameGroup(std::get<1>(g.end->first), id);
         ++g.end)
        ++g.count;
    return g;
}

// Moves records (index >= from) of id's staff-measure by delta. They sit
// together in the store's order, so only they are visited: a delete in a
// large document costs what its staff-measure holds, not the whole store.
void shiftGroup(uint32_t tag, RecordId id, int16_t from, int delta) {
    auto& recs = store().doc.records;
    std::vector<std::pair<Key, std::vector<uint8_t>>> moved;
    for (auto it = recs.lower_bound({tag, RecordId{id.first, id.second, from}});
         it != recs.end() && std::get<0>(it->first) == tag && sameGroup(std::get<1>(it->first), id);) {
        RecordId to = std::get<1>(it->first);
        to.third = static_cast<int16_t>(to.third + delta);
        moved.push_back({{tag, to}, std::move(it->second)});
        it = recs.erase(it);
    }
    for (auto& m : moved) recs[m.first] = std::move(m.second);
}

// The call's record bytes (argument 2, `size` units) stored under key, where
// `at` is the record of that key or, for a new one, the record it goes
// before: the caller's walk of the store is not done again. (A store that
// breaks the host's numbering, set up with put(), may fool the caller's
// guess; the map then looks for itself.)
void storeAt(Records::iterator at, const Key& key, const Call& c, int32_t size, int unit) {
    auto& recs = store().doc.records;
    const uint8_t* p = c.ptr<uint8_t>(2);
    const size_t bytes = static_cast<size_t>(size) * static_cast<size_t>(unit);
    if (at != recs.end() && at->first == key) at->second.assign(p, p + bytes);
    else recs.insert_or_assign(at, key, std::vector<uint8_t>(p, p + bytes));
}

void note(Op op, uint32_t tag, RecordId id, int32_t size, bool ok) {
    if (checking()) store().log.push_back({op, tag, id, size, ok});
}

uint64_t load(Call& c) {
    const uint32_t tag = static_cast<uint32_t>(c.args[0]);
    const RecordId given = readId(c, 1);
    int32_t* size = c.ptr<int32_t>(3);
    int32_t capacity = size ? *size : 0;
    bool ok = false;
    if (c.ptr<void>(1) && size && capacity >= 0) {
        const TagRule& rule = ruleFor(tag);
        auto it = store().doc.records.find({tag, keyBy(rule, given)});
        if (it != store().doc.records.end()) {
            const size_t unit = static_cast<size_t>(rule.unit);
            const size_t have = it->second.size() / unit;
            if (uint8_t* buf = c.ptr<uint8_t>(2)) {
                const size_t n = std::min(have, static_cast<size_t>(capacity));
                // An empty record (a raw text of no units) has no bytes to copy, nor an address.
                if (n) std::memcpy(buf, it->second.data(), n * unit);
            }
            *size = static_cast<int32_t>(have);
            ok = true;
        }
    }
    note(Op::Load, tag, given, capacity, ok);
    return ok ? 1 : 0;
}

uint64_t save(Call& c) {
    const uint32_t tag = static_cast<uint32_t>(c.args[0]);
    const RecordId given = readId(c, 1);
    const int32_t size = static_cast<int32_t>(c.args[3]);
    const TagRule& rule = ruleFor(tag);
    const Key key{tag, keyBy(rule, given)};
    const int16_t index = std::get<1>(key).third;
    auto& recs = changing().records;
    bool ok = false;
    if (c.ptr<void>(1) && c.ptr<void>(2) && size >= 0) {
        Records::iterator at = recs.end();
        switch (rule.numbering) {
        case Numbering::Indexed: {
            const Group g = groupOf(tag, std::get<1>(key));
            ok = index >= 0 && index <= g.count;
            if (ok) at = index == g.count ? g.end : std::next(g.first, index);
            break;
        }
        case Numbering::Assigned:
            at = recs.find(key);
            ok = at != recs.end();
            break;
        case Numbering::Plain:
            at = recs.lower_bound(key);
            ok = true;
            break;
        }
        if (ok) storeAt(at, key, c, size, rule.unit);
    }
    note(Op::Save, tag, given, size, ok);
    return ok ? 1 : 0;
}

uint64_t create(Call& c) {
    const uint32_t tag = static_cast<uint32_t>(c.args[0]);
    const RecordId given = readId(c, 1);
    const int32_t size = static_cast<int32_t>(c.args[3]);
    const TagRule& rule = ruleFor(tag);
    RecordId key = keyBy(rule, given);
    auto& recs = changing().records;
    bool ok = false;
    if (c.ptr<void>(1) && c.ptr<void>(2) && size >= 0) {
        Records::iterator at = recs.end();
        switch (rule.numbering) {
        case Numbering::Indexed: {
            const Group g = groupOf(tag, key);
            if (key.third == -1) key.third = g.count;
            ok = key.third >= 0 && key.third <= g.count;
            if (ok && key.third < g.count) {
                shiftGroup(tag, key, key.third, +1);
                at = recs.lower_bound({tag, key});
            } else {
                at = g.end;
            }
            if (ok) {
                RecordId back = given;
                back.third = key.third;
                writeId(c, 1, back);
            }
            break;
        }
        case Numbering::Assigned: {
            if (key.first == -1) {
                // The kind's highest number is its last record in the store's order.
                int next = 1;
                const int16_t top = std::numeric_limits<int16_t>::max();
                at = recs.upper_bound({tag, RecordId{top, top, top}});
                if (at != recs.begin() && std::get<0>(std::prev(at)->first) == tag)
                    next = std::max(next, std::get<1>(std::prev(at)->first).first + 1);
                ok = next <= std::numeric_limits<int16_t>::max();
                key.first = static_cast<int16_t>(next);
                if (ok) {
                    RecordId back = given;
                    back.first = key.first;
                    writeId(c, 1, back);
                }
            } else {
                at = recs.lower_bound({tag, key});
                ok = key.first > 0 && (at == recs.end() || at->first != Key{tag, key});
            }
            break;
        }
        case Numbering::Plain:
            at = recs.lower_bound({tag, key});
            ok = at == recs.end() || at->first != Key{tag, key};
            break;
        }
        if (ok) storeAt(at, {tag, key}, c, size, rule.unit);
    }
    note(Op::Create, tag, given, size, ok);
    return ok ? 1 : 0;
}

uint64_t remove(Call& c) {
    const uint32_t tag = static_cast<uint32_t>(c.args[0]);
    const RecordId given = readId(c, 1);
    const RecordId key = keyOf(tag, given);
    bool ok = c.ptr<void>(1) && changing().records.erase({tag, key}) == 1;
    if (ok && ruleFor(tag).numbering == Numbering::Indexed)
        shiftGroup(tag, key, static_cast<int16_t>(key.third + 1), -1);
    note(Op::Delete, tag, given, 0, ok);
    return ok ? 1 : 0;
}

// The record of the kind before or after the identifier's, delivered with
// its identifier written back.
uint64_t step(Call& c, bool forward) {
    const uint32_t tag = static_cast<uint32_t>(c.args[0]);
    const RecordId given = readId(c, 1);
    const int32_t size = static_cast<int32_t>(c.args[3]);
    auto& recs = store().doc.records;
    bool ok = false;
    if (c.ptr<void>(1) && size >= 0) {
        const TagRule& rule = ruleFor(tag);
        const Key at{tag, keyBy(rule, given)};
        auto it = forward ? recs.upper_bound(at) : recs.lower_bound(at);
        if (!forward) it = it == recs.begin() ? recs.end() : std::prev(it);
        if (it != recs.end() && std::get<0>(it->first) == tag) {
            const int unit = rule.unit;
            if (uint8_t* buf = c.ptr<uint8_t>(2)) {
                const size_t n = std::min(it->second.size(), static_cast<size_t>(size) * unit);
                if (n) std::memcpy(buf, it->second.data(), n);
            }
            writeId(c, 1, std::get<1>(it->first));
            ok = true;
        }
    }
    note(forward ? Op::Next : Op::Previous, tag, given, size, ok);
    return ok ? 1 : 0;
}

uint64_t loadFrame(Call& c) {
    FrameKey key{static_cast<uint16_t>(c.args[0]), static_cast<int16_t>(c.args[1]),
                 static_cast<int16_t>(c.args[2]), static_cast<int16_t>(c.args[3]),
                 static_cast<int16_t>(c.args[4])};
    auto& frames = store().doc.frames;
    auto it = frames.find(key);
    void* handed = nullptr;
    if (it != frames.end()) {
        const int16_t n = static_cast<int16_t>(it->second.size() / kEntryBytes);
        auto f = std::make_unique<FrameOut>(key, n);
        std::memcpy(f->entries.payload(), it->second.data(), it->second.size());
        uint8_t* entries = f->entries.payload();
        std::memcpy(f->header.payload() + kFrameEntriesAt, &entries, sizeof entries);
        std::memcpy(f->header.payload() + kFrameCountAt, &n, sizeof n);
        handed = f->header.payload();
        store().out[handed] = std::move(f);
    }
    note(Op::LoadFrame, 0, {}, 0, handed != nullptr);
    return reinterpret_cast<uintptr_t>(handed);
}

// A frame coming back: known, with its guards and its own entry array.
FrameOut* takeBack(void* frame) {
    auto it = store().out.find(frame);
    if (it == store().out.end()) {
        ++store().foreign;
        return nullptr;
    }
    FrameOut& f = *it->second;
    uint8_t* entries = nullptr;
    std::memcpy(&entries, f.header.payload() + kFrameEntriesAt, sizeof entries);
    if (!f.header.intact() || !f.entries.intact() || entries != f.entries.payload())
        ++store().guardFaults;
    return &f;
}

uint64_t saveFrame(Call& c) {
    FrameOut* f = takeBack(c.ptr<void>(0));
    bool ok = false;
    if (f) {
        int16_t n = 0;
        std::memcpy(&n, f->header.payload() + kFrameCountAt, sizeof n);
        ok = n == f->count;  // the simulated host keeps no inserted entries
        if (ok) {
            const uint8_t* p = f->entries.payload();
            changing().frames[f->key].assign(p, p + f->entries.size);
        }
    }
    note(Op::SaveFrame, 0, {}, 0, ok);
    return ok ? 1 : 0;
}

uint64_t freeFrame(Call& c) {
    void* frame = c.ptr<void>(0);
    const bool ok = takeBack(frame) != nullptr;
    if (ok) store().out.erase(frame);
    note(Op::FreeFrame, 0, {}, 0, ok);
    return 0;
}

}  // namespace

const std::vector<TagRule>& rules() { return kRules; }

const TagRule& ruleFor(uint32_t tag) {
    for (const TagRule& r : kRules)
        if ((tag & r.mask) == r.tag) return r;
    return kRules.back();
}

RecordId keyOf(uint32_t tag, RecordId id) { return keyBy(ruleFor(tag), id); }

void put(uint32_t tag, RecordId id, std::vector<uint8_t> bytes) {
    changing().records[{tag, keyOf(tag, id)}] = std::move(bytes);
}

void putText(uint32_t tag, RecordId id, const std::u16string& units) {
    std::vector<uint8_t> b(units.size() * 2);
    if (!units.empty()) std::memcpy(b.data(), units.data(), b.size());
    put(tag, id, std::move(b));
}

std::optional<std::vector<uint8_t>> get(uint32_t tag, RecordId id) {
    auto it = store().doc.records.find({tag, keyOf(tag, id)});
    if (it == store().doc.records.end()) return std::nullopt;
    return it->second;
}

std::optional<std::u16string> getText(uint32_t tag, RecordId id) {
    auto b = get(tag, id);
    if (!b) return std::nullopt;
    std::u16string s(b->size() / 2, u'\0');
    if (!s.empty()) std::memcpy(&s[0], b->data(), s.size() * 2);
    return s;
}

bool erase(uint32_t tag, RecordId id) {
    return changing().records.erase({tag, keyOf(tag, id)}) == 1;
}

std::vector<std::vector<uint8_t>> group(uint32_t tag, RecordId id) {
    std::vector<std::vector<uint8_t>> out;
    const auto& recs = store().doc.records;
    const RecordId key = keyOf(tag, {id.first, id.second, 0});
    for (auto it = recs.lower_bound({tag, key});
         it != recs.end() && std::get<0>(it->first) == tag && sameGroup(std::get<1>(it->first), key) &&
         std::get<1>(it->first).third == static_cast<int16_t>(out.size());
         ++it)
        out.push_back(it->second);
    return out;
}

std::vector<RecordId> list(uint32_t tag) {
    // A kind's records sit together in the store's order: only they are visited.
    std::vector<RecordId> ids;
    const auto& recs = store().doc.records;
    const int16_t lowest = std::numeric_limits<int16_t>::min();
    for (auto it = recs.lower_bound({tag, RecordId{lowest, lowest, lowest}});
         it != recs.end() && std::get<0>(it->first) == tag; ++it)
        ids.push_back(std::get<1>(it->first));
    return ids;
}

size_t recordCount() { return store().doc.records.size(); }

void putFrame(FrameKey key, std::vector<uint8_t> entries) {
    changing().frames[key] = std::move(entries);
}

std::optional<std::vector<uint8_t>> getFrame(FrameKey key) {
    auto it = store().doc.frames.find(key);
    if (it == store().doc.frames.end()) return std::nullopt;
    return it->second;
}

size_t framesOut() { return store().out.size(); }
int guardFaults() { return store().guardFaults; }
int foreignFrames() { return store().foreign; }

Document snapshot() { return store().doc; }
void restore(const Document& d) { changing() = d; }

std::string tagName(uint32_t tag) {
    std::string s;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char ch = static_cast<char>((tag >> shift) & 0xFF);
        s.push_back(ch >= 0x20 && ch < 0x7F ? ch : '?');
    }
    return s;
}

std::string difference(const Document& a, const Document& b) {
    char line[160];
    auto describe = [&](const Key& k, const char* what) {
        const RecordId& id = std::get<1>(k);
        std::snprintf(line, sizeof line, "%s (%d, %d, %d): %s", tagName(std::get<0>(k)).c_str(),
                      id.first, id.second, id.third, what);
        return std::string(line);
    };
    for (const auto& r : a.records) {
        auto it = b.records.find(r.first);
        if (it == b.records.end()) return describe(r.first, "only in the first");
        if (it->second != r.second) return describe(r.first, "contents differ");
    }
    for (const auto& r : b.records)
        if (!a.records.count(r.first)) return describe(r.first, "only in the second");
    if (a.frames != b.frames) return "frames differ";
    return std::string();
}

}  // namespace doc

void deferSnapshot(std::function<void(doc::Document)> into) {
    takeDeferredSnapshot();
    doc::store().deferred = std::move(into);
}

void takeDeferredSnapshot() {
    doc::Store& s = doc::store();
    if (!s.deferred) return;
    std::function<void(doc::Document)> into = std::move(s.deferred);
    s.deferred = nullptr;
    into(s.doc);
}

namespace doc {

const std::vector<OpRecord>& ops() { return store().log; }
void clearOps() { store().log.clear(); }

size_t countOps(Op op, uint32_t tag) {
    return static_cast<size_t>(std::count_if(store().log.begin(), store().log.end(),
                                             [&](const OpRecord& r) { return r.op == op && r.tag == tag; }));
}

uint64_t serve(Call& c) {
    switch (c.fx) {
    case Fx::FX_LoadEData: return load(c);
    case Fx::FX_SaveEData: return save(c);
    case Fx::FX_CreateEData: return create(c);
    case Fx::FX_DeleteEData: return remove(c);
    case Fx::FX_PreviousEData: return step(c, false);
    case Fx::FX_NextEData: return step(c, true);
    case Fx::FX_LoadTGF: return loadFrame(c);
    case Fx::FX_SaveTGF: return saveFrame(c);
    case Fx::FX_FreeTGF: return freeFrame(c);
    default: return 0;
    }
}

}  // namespace doc

bool servedByDocument(Fx fx) {
    switch (fx) {
    case Fx::FX_LoadEData:
    case Fx::FX_SaveEData:
    case Fx::FX_CreateEData:
    case Fx::FX_DeleteEData:
    case Fx::FX_PreviousEData:
    case Fx::FX_NextEData:
    case Fx::FX_LoadTGF:
    case Fx::FX_SaveTGF:
    case Fx::FX_FreeTGF:
        return true;
    default:
        return false;
    }
}

void resetDocument() {
    doc::Store& s = doc::store();
    s.doc = doc::Document();
    s.deferred = nullptr;
    s.out.clear();
    s.log.clear();
    s.guardFaults = 0;
    s.foreign = 0;
}

}  // namespace hostsim
