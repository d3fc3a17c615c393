// A check's plug-in, loaded and driven as the host drives it.
#include "session.h"

#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace validate {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;

Guarded::Guarded(size_t size, uint8_t fill) : mem_(size + 2 * kGuard, kPattern), size_(size) {
    std::memset(data(), fill, size);
}

std::string Guarded::damage() const {
    for (size_t i = 0; i < kGuard; ++i)
        if (mem_[kGuard - 1 - i] != kPattern) return std::to_string(i + 1) + " bytes before the start";
    for (size_t i = 0; i < kGuard; ++i)
        if (mem_[kGuard + size_ + i] != kPattern) return "byte " + std::to_string(i) + " past the end";
    return "";
}

Session::Session(Context& cx, bool freshCopy) : cx_(cx) {
    setenv("LC_ALL", "en_US.UTF-8", 1);
    setenv("LANG", "en", 1);
    hostsim::reset();
    plugin_ = std::make_unique<hostsim::Plugin>(cx.plan().bundle, freshCopy);
    if (!plugin_->loaded()) {
        cx.fail("cannot load " + cx.plan().bundle + ": " + plugin_->error());
        return;
    }
    hostsim::driver::attach(*plugin_);
}

namespace {

// The start-up's buffers in guarded memory, checked after each call.
class GuardedStart : public hostsim::driver::StartMemory {
  public:
    explicit GuardedStart(Context& cx) : cx_(cx) {}
    int32_t* initValue() override {
        value_ = std::make_unique<Guarded>(sizeof(int32_t), 0xA5);
        return value_->as<int32_t>();
    }
    void afterInit() override {
        cx_.expect(value_->damage().empty(), "init wrote outside its value: " + value_->damage());
    }
    MenuItemRecord* menuRecord() override {
        record_ = std::make_unique<Guarded>(sizeof(MenuItemRecord), 0x5A);
        return record_->as<MenuItemRecord>();
    }
    void afterEnumerate(int) override {
        cx_.expect(record_->damage().empty(), "enumeration wrote outside the record: " + record_->damage());
        bool hostPartKept = true;
        for (uint8_t b : record_->as<MenuItemRecord>()->hostOnly) hostPartKept = hostPartKept && b == 0x5A;
        cx_.expect(hostPartKept, "enumeration wrote into the host's part of the menu item record");
    }

  private:
    Context& cx_;
    std::unique_ptr<Guarded> value_, record_;
};

}  // namespace

bool Session::start() {
    if (!loaded()) return false;
    GuardedStart memory(cx_);
    // Only the item a check chooses: item 0.
    const hostsim::driver::StartUp s = hostsim::driver::start(*plugin_, 1, memory);
    for (const std::string& name : s.missing) cx_.fail("the bundle does not export " + name);
    if (!s.missing.empty()) return false;
    return cx_.expect(s.bound == 1, "main did not bind the plug-in") &&
           cx_.expect(s.initialised == 1, "init answered " + std::to_string(s.initialised)) &&
           cx_.expect(!s.items.empty(), "no menu item at index 0");
}

int16_t Session::invoke(const score::Region* selection, const score::Region& whole, int16_t item) {
    auto invokeFn = entry<hostsim::driver::InvokeFn>("ZemloExtensionInvoke");
    if (!invokeFn) return 0;
    Guarded selected(sizeof(score::Region)), all(sizeof(score::Region));
    if (selection) std::memcpy(selected.data(), selection, sizeof *selection);
    std::memcpy(all.data(), &whole, sizeof whole);
    const int16_t result = invokeFn(nullptr, item, selection ? selected.data() : nullptr, all.data());
    cx_.expect(selected.damage().empty(), "the command wrote outside the selection it was handed: " +
                                              selected.damage());
    cx_.expect(all.damage().empty(), "the command wrote outside the document's region it was handed: " +
                                         all.damage());
    return result;
}

int16_t Session::run(const hostsim::driver::Answers& answers, const score::Region* selection,
                     const score::Region& whole) {
    std::string shown, confirmed;
    hostsim::driver::answerWith(answers, &shown, &confirmed);
    return invoke(answers.wholeDocument ? nullptr : selection, whole);
}

void Session::terminate() {
    if (auto t = entry<void (*)(void*)>("ZemloExtensionTerminate")) t(nullptr);
}

int32_t Session::editDepth() const {
    const int32_t* d = plugin_ ? plugin_->variable<int32_t>("ZemloEditDepth") : nullptr;
    return d ? *d : 0;
}

int32_t Session::massDepth() const {
    const int32_t* d = plugin_ ? plugin_->variable<int32_t>("MassEditDepth") : nullptr;
    return d ? *d : 0;
}

void Session::checkHost(const std::string& where) {
    checkHost(where, [](const std::string&) { return false; });
}

void Session::checkHost(const std::string& where, const std::function<bool(const ui::Error&)>& tolerated) {
    for (const ui::Error& e : ui::errors())
        if (!tolerated(e)) cx_.fail((where.empty() ? "" : where + ": ") + e.text);
    checkHostBeyondDialogs(where, nullptr);
}

void Session::checkHost(const std::string& where, const std::function<bool(const std::string&)>& excused) {
    for (const ui::Error& e : ui::errors())
        if (!excused(e.text)) cx_.fail((where.empty() ? "" : where + ": ") + e.text);
    checkHostBeyondDialogs(where, excused);
}

void Session::checkHostBeyondDialogs(const std::string& where,
                                     const std::function<bool(const std::string&)>& excused) {
    const std::string at = where.empty() ? "" : where + ": ";
    for (const std::string& e : edits::errors())
        if (!excused || !excused(e)) cx_.fail(at + e);
    for (const hostsim::BufferFault& f : hostsim::bufferFaults()) cx_.fail(at + f.text);
    cx_.expect(doc::framesOut() == 0, at + std::to_string(doc::framesOut()) + " frames never given back");
    cx_.expect(doc::guardFaults() == 0, at + "a frame came back with its guard bytes changed");
    cx_.expect(doc::foreignFrames() == 0, at + "a frame was given back that the host never handed out");
    cx_.expect(editDepth() == 0, at + "ZemloEditDepth is " + std::to_string(editDepth()) + ", not 0");
    cx_.expect(massDepth() == 0, at + "MassEditDepth is " + std::to_string(massDepth()) + ", not 0");
}

score::ChordRecord markedChord(int32_t key3, int16_t vertical, int mark) {
    score::ChordRecord c;
    c.key1 = static_cast<int16_t>(key3 & 0x7F);
    c.key2 = static_cast<int16_t>(-1 - (key3 & 0x3));
    for (size_t i = 0; i < sizeof c.host4; ++i) c.host4[i] = static_cast<uint8_t>(0x11 + i + mark);
    for (size_t i = 0; i < sizeof c.host10; ++i) c.host10[i] = static_cast<uint8_t>(0x31 + i);
    for (size_t i = 0; i < sizeof c.host24; ++i) c.host24[i] = static_cast<uint8_t>(0x51 + i);
    c.vertical = vertical;
    c.flags = 0x0123;
    c.capoBits = 0x0A95;  // host bits above the capo flag, stale fret bits below it
    c.key3 = key3;
    return c;
}

score::Region wholeOf(int staves, int measures) {
    return score::region(1, 1, static_cast<int16_t>(staves), static_cast<int16_t>(measures));
}

std::map<std::pair<int16_t, int16_t>, std::multiset<ChordBytes>> ordinaryChords(const doc::Document& d) {
    std::map<std::pair<int16_t, int16_t>, std::multiset<ChordBytes>> out;
    for (const auto& [key, bytes] : d.records) {
        const auto& [tag, id] = key;
        if (tag != doc::kChord) continue;
        // A short record reads as its own bytes and zeros after them, as the
        // command reads it.
        score::ChordRecord c;
        std::memcpy(&c, bytes.data(), std::min(bytes.size(), sizeof c));
        if (!c.isCapo()) out[{id.first, id.second}].insert(bytes);
    }
    return out;
}

void expectOrdinaryKept(Context& cx, const doc::Document& before, const doc::Document& after,
                        const std::string& where) {
    const auto a = ordinaryChords(before), b = ordinaryChords(after);
    if (a == b) return;
    for (const auto& [place, chords] : a) {
        auto it = b.find(place);
        if (it == b.end() || it->second != chords) {
            cx.fail(where + ": the ordinary chords of staff " + std::to_string(place.first) + ", measure " +
                    std::to_string(place.second) + " changed (" + std::to_string(chords.size()) + " before, " +
                    std::to_string(it == b.end() ? 0 : it->second.size()) + " after)");
            return;
        }
    }
    cx.fail(where + ": an ordinary chord appeared");
}

void expectOutsideUnchanged(Context& cx, const doc::Document& before, const doc::Document& after,
                            const score::Region& region, const std::set<int16_t>& staves,
                            const std::string& where) {
    auto inMeasures = [&](int16_t m) { return m >= region.firstMeasure && m <= region.lastMeasure; };
    auto inside = [&](int16_t staff, int16_t m) { return inMeasures(m) && staves.count(staff) > 0; };
    // Blocks and texts that measure texts outside the region point at.
    std::set<int16_t> blocks, texts;
    for (const auto& [key, bytes] : before.records) {
        const auto& [tag, id] = key;
        if (tag != doc::kMeasureText || inside(id.first, id.second) || bytes.size() < 2) continue;
        uint16_t block;
        std::memcpy(&block, bytes.data(), sizeof block);
        blocks.insert(static_cast<int16_t>(block));
        auto tb = before.records.find({doc::kTextBlock, doc::RecordId{static_cast<int16_t>(block), 0, 0}});
        if (tb != before.records.end() && tb->second.size() >= 2) {
            uint16_t raw;
            std::memcpy(&raw, tb->second.data(), sizeof raw);
            texts.insert(static_cast<int16_t>(raw));
        }
    }
    auto watched = [&](uint32_t tag, const doc::RecordId& id) {
        if (tag == doc::kChord || tag == doc::kMeasureText) return !inside(id.first, id.second);
        if (tag == doc::kMeasure) return !inMeasures(id.first);
        if (tag == doc::kTextBlock) return blocks.count(id.first) > 0;
        if (tag == doc::kRawText) return texts.count(id.first) > 0;
        return true;
    };
    auto describe = [](uint32_t tag, const doc::RecordId& id) {
        return doc::tagName(tag) + " (" + std::to_string(id.first) + ", " + std::to_string(id.second) + ", " +
               std::to_string(id.third) + ")";
    };
    for (const auto& [key, bytes] : before.records) {
        if (!watched(std::get<0>(key), std::get<1>(key))) continue;
        auto it = after.records.find(key);
        if (it == after.records.end())
            cx.fail(where + ": " + describe(std::get<0>(key), std::get<1>(key)) + " outside the region was removed");
        else if (it->second != bytes)
            cx.fail(where + ": " + describe(std::get<0>(key), std::get<1>(key)) + " outside the region changed");
    }
    for (const auto& [key, bytes] : after.records) {
        const uint32_t tag = std::get<0>(key);
        if (tag == doc::kTextBlock || tag == doc::kRawText) continue;  // new blocks get new numbers
        if (watched(tag, std::get<1>(key)) && !before.records.count(key))
            cx.fail(where + ": " + describe(tag, std::get<1>(key)) + " appeared outside the region");
    }
    cx.expect(before.frames == after.frames, where + ": a frame changed");
}

}  // namespace validate
