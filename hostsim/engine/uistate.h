// Inside the simulated host's user interface: its state, shared by the
// dialogs, alerts and the progress display.
#ifndef CAPOCHORDS_HOSTSIM_UISTATE_H
#define CAPOCHORDS_HOSTSIM_UISTATE_H

#include "engine.h"
#include "hostsim/ui.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The dialog handle the plug-in holds: which run it belongs to. Handles are
// kept until reset, so that a call on an ended dialog is told apart from a
// call on something that never was a dialog.
struct OpaqueCocoaWindow {
    size_t run;
};

namespace hostsim {
namespace ui {

struct ProgressDisplay {
    size_t index;
};

struct UiState {
    // Dialogs
    std::string folder;
    std::map<int16_t, DialogLayout> registered;
    std::string language = "en";
    std::function<bool(int32_t, std::u16string*)> strings;
    std::deque<std::vector<Step>> scripts;
    std::deque<DialogRun> runs;
    std::vector<std::unique_ptr<OpaqueCocoaWindow>> windows;
    // Alerts
    std::deque<int16_t> answers;
    std::vector<Alert> alerts;
    // Progress display
    std::deque<int> cancelPoints;
    std::vector<Progress> progress;
    std::vector<std::unique_ptr<ProgressDisplay>> displays;
    std::function<void(const Progress&)> observer;

    std::vector<Error> errors;
};

UiState& uiState();
void addError(ErrorKind kind, std::string text);

// Texts: Mac Roman maps every byte; a unit Mac Roman lacks becomes '?'.
std::u16string fromMacRoman(const char* bytes);
std::string toMacRoman(const std::u16string& units);
// False on malformed UTF-8.
bool fromUtf8(const std::string& bytes, std::u16string* out);
// The leading decimal number of a field's text, as a number field reads it:
// blanks, an optional sign, digits; 0 when there are none; clamped to 32 bits.
int32_t numberOf(const std::u16string& text);

void addDialogBuiltIns(BuiltIns& b);
void addAlertBuiltIns(BuiltIns& b);
void addProgressBuiltIns(BuiltIns& b);

inline int16_t i16(const Call& c, size_t k) { return static_cast<int16_t>(c.args[k]); }
inline int32_t i32(const Call& c, size_t k) { return static_cast<int32_t>(c.args[k]); }
inline uint64_t addr(const void* p) { return reinterpret_cast<uintptr_t>(p); }

}  // namespace ui
}  // namespace hostsim

#endif
