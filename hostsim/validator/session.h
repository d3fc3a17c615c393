// A check's plug-in: the bundle loaded into this child as the host loads it,
// its start-up, runs of its command with the dialog answered, and the host's
// record of what the plug-in did wrong. Every buffer the host hands to the
// plug-in here (menu item record, initialisation value, regions) carries
// guard bytes on both sides, checked after each call.
#ifndef CAPOCHORDS_VALIDATE_SESSION_H
#define CAPOCHORDS_VALIDATE_SESSION_H

#include "check.h"
#include "hostsim/driver.h"

#include "hostsim/document.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace validate {

namespace control = hostsim::control;
namespace doc = hostsim::doc;
namespace score = hostsim::score;

// Memory the host hands out, with guard bytes before and after it.
class Guarded {
  public:
    static constexpr size_t kGuard = 32;
    static constexpr uint8_t kPattern = 0xFD;
    explicit Guarded(size_t size, uint8_t fill = 0);
    uint8_t* data() { return mem_.data() + kGuard; }
    template <class T> T* as() { return reinterpret_cast<T*>(data()); }
    size_t size() const { return size_; }
    // Where the first changed guard byte is: "N bytes before" or "byte N past
    // the end"; empty when every guard byte is as it was.
    std::string damage() const;

  private:
    std::vector<uint8_t> mem_;
    size_t size_;
};

using hostsim::MenuItemRecord;

class Session {
  public:
    // A fresh host (hostsim::reset) in English, and the bundle loaded; with
    // `freshCopy`, from a copy of its own.
    explicit Session(Context& cx, bool freshCopy = false);
    bool loaded() const { return plugin_ && plugin_->loaded(); }
    hostsim::Plugin& plugin() { return *plugin_; }

    // The host's start-up: main, version, init, enumeration of item 0 and its
    // status. False, with the failure reported, when the plug-in is not bound
    // or offers no item.
    bool start();
    // The user chooses the menu item `item`; `selection` null means nothing is
    // selected. Both regions are handed over in guarded memory.
    int16_t invoke(const score::Region* selection, const score::Region& whole, int16_t item = 0);
    // The same with the settings dialog answered as `answers` say.
    int16_t run(const hostsim::driver::Answers& answers, const score::Region* selection,
                const score::Region& whole);
    void terminate();

    int32_t editDepth() const;
    int32_t massDepth() const;

    // Everything the host holds against the plug-in: its dialog and progress
    // errors, edits done wrong or left open, frames not given back or damaged,
    // buffers written or read out of bounds, and edit depths not back at 0.
    void checkHost(const std::string& where);
    // The same, but for dialog and progress errors that `tolerated` answers
    // true for: what a script or a host's own misbehaviour brings about.
    void checkHost(const std::string& where, const std::function<bool(const hostsim::ui::Error&)>& tolerated);
    // The same, but `excused` may pass over dialog, progress and edit errors,
    // by their text, that a check expects (a host lacking a function). Buffer
    // faults, frames and the depths are never excused.
    void checkHost(const std::string& where, const std::function<bool(const std::string&)>& excused);

    // Entry points, for checks that call them with odd arguments.
    using EnumerateFn = int16_t (*)(void*, int16_t, MenuItemRecord*);
    using ExtEnumerateFn = int32_t (*)(void*, int32_t, MenuItemRecord*);
    template <class F> F entry(const char* name) {
        auto f = plugin_->function<F>(name);
        cx_.expect(f != nullptr, std::string("the bundle does not export ") + name);
        return f;
    }

  private:
    // Edits, buffers, frames and depths: the part of checkHost past the dialogs.
    void checkHostBeyondDialogs(const std::string& where,
                                const std::function<bool(const std::string&)>& excused);
    Context& cx_;
    std::unique_ptr<hostsim::Plugin> plugin_;
};

// A chord symbol whose own bytes are all marked (the host's bytes from
// 0x11 + mark on, flag bits and capo bits 7 to 15, stale fret bits), so that a
// capo chord is seen to copy them and an ordinary chord to keep them.
score::ChordRecord markedChord(int32_t key3, int16_t vertical, int mark = 0);

// The region of a score: every staff and measure.
score::Region wholeOf(int staves, int measures);

// Properties of documents.
// Every chord record that is not a capo chord, by staff and measure.
using ChordBytes = std::vector<uint8_t>;
std::map<std::pair<int16_t, int16_t>, std::multiset<ChordBytes>> ordinaryChords(const doc::Document& d);
// Fails when an ordinary chord of `before` is missing or changed in `after`, or one appeared.
void expectOrdinaryKept(Context& cx, const doc::Document& before, const doc::Document& after,
                        const std::string& where);
// Fails when a record outside the walked region changed: chord records and
// measure texts of other staves or measures, measure records of other
// measures, the blocks and texts those measure texts point at, and every
// record of any other kind.
void expectOutsideUnchanged(Context& cx, const doc::Document& before, const doc::Document& after,
                            const score::Region& region, const std::set<int16_t>& staves,
                            const std::string& where);

}  // namespace validate

#endif
