// Inside the simulated host engine.
#ifndef CAPOCHORDS_HOSTSIM_ENGINE_H
#define CAPOCHORDS_HOSTSIM_ENGINE_H

#include "hostsim/document.h"
#include "hostsim/host.h"

#include <array>
#include <cstring>
#include <functional>
#include <vector>

namespace hostsim {

// Runs one call of a host function: counts it, logs it, applies a scheduled
// fault, else its behaviour, else its programmed result.
uint64_t dispatch(Fx fx, const uint64_t* args, size_t n);
// Called by the resolver at every lookup: counts it, answers presence.
bool resolve(Fx fx);
// The plug-in's buffers of one call (buffers.cpp): the constructor points
// the call's buffer arguments at staged copies, with guard bytes after the
// room the plug-in gave, unless a buffer claims memory that is not the
// plug-in's (then refused() and nothing was touched); finish() checks the
// guards and writes back what the behaviour changed within the room.
class Staging {
  public:
    explicit Staging(Call& c);
    bool refused() const { return refused_; }
    void finish();

    static constexpr size_t kMaxBuffers = 3;  // the most one host function takes

  private:
    static constexpr size_t kGuard = 16;
    static constexpr uint8_t kGuardByte = 0xFD;
    struct Copy {
        size_t arg = 0;
        uint8_t* plugin = nullptr;
        size_t bytes = 0;
        std::vector<uint8_t> before;  // the plug-in's bytes as handed over
        std::vector<uint8_t> work;    // what the behaviour sees, guards after
    };
    Fx fx_;
    bool refused_ = false;
    std::array<Copy, kMaxBuffers> copies_;
    size_t staged_ = 0;
};
void resetBuffers();

// The document store (docstore.cpp): which functions it serves as built-in
// behaviours, and its return to an empty document.
bool servedByDocument(Fx fx);
void resetDocument();
// A copy of the document as it is now, taken only when it is needed: just
// before the document next changes, or at takeDeferredSnapshot(). Undo's
// copy of a committed edit is made so, as most runs never change the
// document again. One at a time: a second takes the first one's copy now.
void deferSnapshot(std::function<void(doc::Document)> into);
void takeDeferredSnapshot();

// The host's own behaviours: what a call does when the scenario has
// programmed neither a behaviour nor a result for it.
using BuiltIns = std::array<Handler, kFxCount>;
// The user interface (dialogs, alerts, progress display): ui.cpp.
void addUiBuiltIns(BuiltIns& b);
void resetUi();
// Scores: the slot-to-staff table and the fonts (score.cpp).
void addScoreBuiltIns(BuiltIns& b);
void resetScore();
// Undoable edits (edits.cpp).
void addEditBuiltIns(BuiltIns& b);
void resetEdits();

}  // namespace hostsim

#endif
