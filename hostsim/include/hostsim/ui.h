// The simulated host's user interface, for tests and zemlo-host: modal
// dialogs played from a script, alerts answered from a script, and the
// progress display of mass edits, each recorded. Everything the plug-in does
// wrong here lands in one error list (errors()) that a test expects empty.
//
// These are the host's built-in behaviours of FX_Dialog, FX_EndDialog,
// FX_EnableDlgItem, FX_ShowHideDlgItem, FX_SetDlgFocus, FX_GetDlgItemVal,
// FX_SetDlgItemVal, FX_GetDlgString(_UTF16), FX_SetDlgString(_UTF16),
// FX_AlertMessage(_UTF16), FX_StartMassEdit, FX_MassEditProgress and
// FX_EndMassEdit. A behaviour or a result programmed with host.h takes
// precedence over them; hostsim::reset() brings them back and clears
// everything below.
#ifndef CAPOCHORDS_HOSTSIM_UI_H
#define CAPOCHORDS_HOSTSIM_UI_H

#include "hostsim/host.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

struct OpaqueCocoaWindow;  // the host's dialog handle, as the plug-in sees it

namespace hostsim {
namespace ui {

// UTF-16 as UTF-8; an unpaired surrogate becomes U+FFFD.
HOSTSIM_API std::string utf8(const std::u16string& units);
// UTF-8 as UTF-16, for texts typed or read from files.
HOSTSIM_API std::u16string utf16(const std::string& utf8);

// ---- Dialog descriptions -------------------------------------------------

enum class ControlKind : uint8_t { Button, Number, Text, Static, CheckBox };

// A caption: a string of the plug-in's table (stringNumber != 0), or a
// literal in UTF-8 with optional per-language replacements.
struct Caption {
    int32_t stringNumber = 0;
    std::string text;
    std::map<std::string, std::string> byLanguage;
};

struct ControlLayout {
    int16_t number = 0;
    ControlKind kind = ControlKind::Static;
    Caption caption;
};

struct DialogLayout {
    int16_t number = 0;
    Caption title;
    std::vector<ControlLayout> controls;
    const ControlLayout* control(int16_t n) const {
        for (const ControlLayout& c : controls)
            if (c.number == n) return &c;
        return nullptr;
    }
};

// Reads the text of a description file (format: resources/dialog20009.dlg).
// False with "line N: why" in *error when it does not parse.
HOSTSIM_API bool parseDialog(const std::string& text, DialogLayout* out, std::string* error);

// FX_Dialog looks for <folder>/dialog<number>.dlg; the plug-in's bundle's
// Contents/Resources is the folder to pass. A description registered in code
// wins over the folder.
HOSTSIM_API void setDialogFolder(const std::string& folder);
HOSTSIM_API void addDialog(const DialogLayout& layout);
// The language whose captions controls start with ("en" by default).
HOSTSIM_API void setLanguage(const std::string& language);
// Texts of string-number captions; without it, or when it answers false,
// such a caption reads as the number in decimal.
HOSTSIM_API void setStringSource(std::function<bool(int32_t, std::u16string*)> source);

// ---- Dialog scripts ------------------------------------------------------

struct DialogRun;

// One user action. type, setValue and click act as a user would: refused
// (an error, nothing happens, no message) on an unknown, disabled or hidden
// control or one of the wrong kind. press and message are raw: they send
// their message whatever the controls are.
struct Step {
    enum class Action : uint8_t { Type, SetValue, Click, Press, Message, Peek };
    Action action = Action::Press;
    int16_t control = 0;
    std::u16string text;
    int32_t value = 0;
    uint32_t message = 0;
    int64_t wParam = 0;
    int64_t lParam = 0;
    bool late = false;  // played even after the dialog has ended
    std::function<void(const DialogRun&)> peek;
};

// Types UTF-8 text into a number or text field (it takes the focus), then 273.
HOSTSIM_API Step type(int16_t control, const std::string& utf8);
// Sets a number field's number or a check box's state (nonzero: checked), then 273.
HOSTSIM_API Step setValue(int16_t control, int32_t value);
// Clicks a button, or toggles a check box, then 273.
HOSTSIM_API Step click(int16_t control);
// Sends 273 with this control number (1 OK, 2 Cancel, or any), unchecked.
HOSTSIM_API Step press(int16_t control);
// Sends any message.
HOSTSIM_API Step message(uint32_t msg, int64_t wParam, int64_t lParam);
// Calls fn with the dialog as it stands; sends nothing.
HOSTSIM_API Step peek(std::function<void(const DialogRun&)> fn);
// The step, delivered even when the dialog has already ended (a message the
// window had queued).
HOSTSIM_API Step late(Step s);

// Queues the script of the next dialog that FX_Dialog shows; dialogs beyond
// the queue get an empty script, and a dialog that cannot be shown uses its
// script up all the same. Once the handler has called FX_EndDialog the rest
// of the script is dropped (counted in stepsLeft) but for late steps. When a
// script runs out with the dialog still open, the host closes it as its close
// box does: 273 with 2. If the handler does not end it then either, that is
// an error and the host ends it. FX_Dialog answers the dialog's handle (dead
// by then), or null when it has no description or no handler.
HOSTSIM_API void scriptDialog(std::vector<Step> steps);

// What the item calls do, on an open dialog only (any other handle is an
// error and the call does nothing, answering 0):
// - FX_GetDlgItemVal / FX_SetDlgItemVal: kind 1 is a check box's state (set
//   with any nonzero value it reads 1), kind 3 a number field's number (set,
//   it becomes the field's text in decimal). Any other kind, or a kind on a
//   control of another sort, is an error: reads answer 0, writes do nothing.
// - A control has one text. FX_SetDlgString takes and FX_GetDlgString gives
//   it in Mac Roman (a character Mac Roman lacks reads as '?'); the _UTF16
//   calls take and give it as UTF-16. A number field's number follows its text.
// - FX_GetDlgString(dlg, item, buffer, limit) writes at most limit bytes:
//   at most limit - 1 bytes of text, then a 0; nothing beyond. So the
//   plug-in's limit 255 for a 256-byte buffer leaves the last byte alone.
//   FX_GetDlgString_UTF16 likewise counts units and never cuts a surrogate
//   pair in two. A limit below 1, or no buffer, is an error; nothing is written.
// - FX_SetDlgFocus on a disabled or hidden control is an error.

// The host's own behaviour of a dialog, alert or progress call, for a test's
// behaviour that wraps it (setHandler), as doc::serve does for the document:
// a wrapper may change the call's arguments first, e.g. run FX_Dialog with a
// null user data pointer. Answers 0 for functions that are none of these.
HOSTSIM_API uint64_t serve(Call& c);

// ---- Dialog records ------------------------------------------------------

struct Control {
    int16_t number = 0;
    ControlKind kind = ControlKind::Static;
    int32_t value = 0;        // check box 0/1; number field: its text's number
    std::u16string text;      // the one text; 8-bit calls see it as Mac Roman
    bool enabled = true;
    bool visible = true;
};

enum class Source : uint8_t { Host, Script, CloseBox, Handler, User };

struct Sent {
    uint32_t message;
    int64_t wParam;
    int64_t lParam;
    Source source;  // Host (272), Script, CloseBox
    bool answer;    // what the handler answered
};

struct FocusChange {
    int16_t control;
    Source source;  // Handler (FX_SetDlgFocus) or User (typing into a field)
};

enum class Ending : uint8_t { Open, Handler, ForcedByHost };

struct DialogRun {
    int16_t number = 0;
    void* handler = nullptr;
    void* parent = nullptr;
    int16_t flags = 0;
    void* userData = nullptr;
    OpaqueCocoaWindow* handle = nullptr;
    std::vector<Control> controls;
    std::vector<Sent> sent;
    std::vector<FocusChange> focus;
    int16_t focused = 0;        // 0: none
    size_t stepsPlayed = 0;     // performed, refused ones not counted
    size_t stepsRefused = 0;
    size_t stepsLeft = 0;       // not played because the dialog had ended
    Ending ending = Ending::Open;
    bool closedByHost = false;  // the script ran out and the host sent 273/2

    const Control* control(int16_t n) const {
        for (const Control& c : controls)
            if (c.number == n) return &c;
        return nullptr;
    }
    // The control's text as UTF-8; empty when there is no such control.
    std::string text8(int16_t n) const {
        const Control* c = control(n);
        return c ? utf8(c->text) : std::string();
    }
};

// Every dialog shown since the last reset, oldest first; references stay
// valid until the next reset.
HOSTSIM_API const std::deque<DialogRun>& dialogs();

// ---- Alerts --------------------------------------------------------------

struct Alert {
    bool utf16 = false;  // FX_AlertMessage_UTF16
    void* parent = nullptr;
    uint16_t kind = 0;   // message-box style (hostsim::alert in boundary.h)
    int32_t third = 0;
    std::string text;    // UTF-8 (the 8-bit call's Mac Roman converted)
    int16_t answer = 0;
};

// Answers of the next alerts, in order; after them every alert answers 1 (OK).
HOSTSIM_API void scriptAlerts(std::vector<int16_t> answers);
HOSTSIM_API const std::vector<Alert>& alerts();

// ---- Progress display ----------------------------------------------------

struct ProgressCall {
    int16_t a, b, c, d;
    int16_t answer;
};

struct Progress {
    void* handle = nullptr;
    void* first = nullptr;   // FX_StartMassEdit's first argument
    int32_t steps = 0;
    int cancelAt = 0;        // 0: never
    std::vector<ProgressCall> calls;
    bool ended = false;
    int16_t cancelled = 0;   // FX_EndMassEdit's flag
};

// Cancel points of the next progress displays, in order: with k > 0 the
// k-th progress call of that display answers 0, and every one after it;
// 0 never cancels. Displays beyond the list never cancel.
HOSTSIM_API void scriptProgress(std::vector<int> cancelAt);
HOSTSIM_API const std::vector<Progress>& progress();
// Told after every start, progress call and end (zemlo-host draws a bar).
HOSTSIM_API void setProgressObserver(std::function<void(const Progress&)> observer);

// ---- Errors the plug-in caused -------------------------------------------

enum class ErrorKind : uint8_t {
    RefusedStep,       // a script step on an unknown, disabled or hidden control
    UnknownDialog,     // a handle that is no dialog of this host
    EndedDialog,       // a call on a dialog that has ended
    UnknownControl,    // a control number the dialog does not have
    BadArgument,       // null text or buffer, no room, wrong value kind
    NoDescription,     // FX_Dialog for a number without (valid) description
    NeverEnded,        // the handler did not end the dialog on Cancel
    UnknownProgress,   // a handle that is no progress display of this host
    ProgressEnded,     // progress or end after the end
    ProgressNested,    // a display started while another was open
    ProgressLeftOpen,  // a display still open when errors() is read
};

struct Error {
    ErrorKind kind;
    std::string text;
};

// The recorded errors, plus one ProgressLeftOpen per display still open.
HOSTSIM_API std::vector<Error> errors();
// The same, one per line, for test messages.
HOSTSIM_API std::string errorText();

}  // namespace ui
}  // namespace hostsim

#endif
