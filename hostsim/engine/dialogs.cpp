// Modal dialogs: FX_Dialog builds the controls of the dialog's description,
// sends the handler 272, plays the scenario's script as 273 messages, and
// returns when the handler has ended the dialog. The item calls act on the
// controls of an open dialog.
#include "uistate.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace hostsim {
namespace ui {

using HandlerProc = bool (*)(OpaqueCocoaWindow*, uint32_t, int64_t, int64_t, void*);

void setDialogFolder(const std::string& folder) { uiState().folder = folder; }
void addDialog(const DialogLayout& layout) { uiState().registered[layout.number] = layout; }
void setLanguage(const std::string& language) { uiState().language = language; }
void setStringSource(std::function<bool(int32_t, std::u16string*)> source) {
    uiState().strings = std::move(source);
}
void scriptDialog(std::vector<Step> steps) { uiState().scripts.push_back(std::move(steps)); }
const std::deque<DialogRun>& dialogs() { return uiState().runs; }

Step type(int16_t control, const std::string& text) {
    Step s;
    s.action = Step::Action::Type;
    s.control = control;
    // One unit, assigned as such: GCC 12 at -O3 takes the literal assignment for an overlapping copy.
    if (!fromUtf8(text, &s.text)) s.text.assign(1, u'\uFFFD');
    return s;
}

Step setValue(int16_t control, int32_t value) {
    Step s;
    s.action = Step::Action::SetValue;
    s.control = control;
    s.value = value;
    return s;
}

Step click(int16_t control) {
    Step s;
    s.action = Step::Action::Click;
    s.control = control;
    return s;
}

Step press(int16_t control) {
    Step s;
    s.action = Step::Action::Press;
    s.control = control;
    return s;
}

Step message(uint32_t msg, int64_t wParam, int64_t lParam) {
    Step s;
    s.action = Step::Action::Message;
    s.message = msg;
    s.wParam = wParam;
    s.lParam = lParam;
    return s;
}

Step peek(std::function<void(const DialogRun&)> fn) {
    Step s;
    s.action = Step::Action::Peek;
    s.peek = std::move(fn);
    return s;
}

Step late(Step s) {
    s.late = true;
    return s;
}

namespace {

constexpr uint32_t kInit = 272;
constexpr uint32_t kCommand = 273;
constexpr int16_t kCancel = 2;

std::string name(const DialogRun& r) { return "dialog " + std::to_string(r.number); }

bool describe(int16_t number, DialogLayout* layout) {
    UiState& s = uiState();
    auto it = s.registered.find(number);
    if (it != s.registered.end()) {
        *layout = it->second;
        return true;
    }
    std::string why;
    if (s.folder.empty()) {
        why = "no dialog folder set";
    } else {
        std::string path = s.folder + "/dialog" + std::to_string(number) + ".dlg";
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            why = "cannot read " + path;
        } else {
            std::ostringstream text;
            text << in.rdbuf();
            if (!parseDialog(text.str(), layout, &why)) why = path + ", " + why;
            else if (layout->number != number)
                why = path + " describes dialog " + std::to_string(layout->number);
            else return true;
        }
    }
    addError(ErrorKind::NoDescription,
             "FX_Dialog: no description of dialog " + std::to_string(number) + ": " + why);
    return false;
}

std::u16string captionText(const Caption& c) {
    UiState& s = uiState();
    std::u16string out;
    if (c.stringNumber != 0) {
        if (s.strings && s.strings(c.stringNumber, &out)) return out;
        fromUtf8(std::to_string(c.stringNumber), &out);
        return out;
    }
    auto it = c.byLanguage.find(s.language);
    fromUtf8(it != c.byLanguage.end() ? it->second : c.text, &out);
    return out;
}

void setText(Control& c, std::u16string text) {
    c.text = std::move(text);
    if (c.kind == ControlKind::Number) c.value = numberOf(c.text);
}

// The open dialog of a handle; records why there is none.
DialogRun* openDialog(const Call& c, const char* fn) {
    const void* handle = c.ptr<void>(0);
    for (const auto& w : uiState().windows) {
        if (w.get() != handle) continue;
        DialogRun& r = uiState().runs[w->run];
        if (r.ending != Ending::Open) {
            addError(ErrorKind::EndedDialog, std::string(fn) + ": " + name(r) + " has ended");
            return nullptr;
        }
        return &r;
    }
    addError(ErrorKind::UnknownDialog, std::string(fn) + ": not a dialog of this host");
    return nullptr;
}

Control* item(DialogRun& r, int16_t number, const char* fn) {
    for (Control& c : r.controls)
        if (c.number == number) return &c;
    addError(ErrorKind::UnknownControl,
             std::string(fn) + ": " + name(r) + " has no control " + std::to_string(number));
    return nullptr;
}

Control* item(const Call& c, const char* fn) {
    DialogRun* r = openDialog(c, fn);
    return r ? item(*r, i16(c, 1), fn) : nullptr;
}

void badArgument(const char* fn, const std::string& why) {
    addError(ErrorKind::BadArgument, std::string(fn) + ": " + why);
}

bool send(DialogRun& r, uint32_t msg, int64_t w, int64_t l, Source source) {
    size_t at = r.sent.size();
    r.sent.push_back({msg, w, l, source, false});
    bool answer = reinterpret_cast<HandlerProc>(r.handler)(r.handle, msg, w, l, r.userData);
    r.sent[at].answer = answer;
    return answer;
}

// Why a user could not do this step, or "" when they could.
std::string refusal(const DialogRun& r, const Step& s) {
    const Control* c = r.control(s.control);
    if (!c) return "no control " + std::to_string(s.control);
    std::string what = "control " + std::to_string(s.control);
    if (!c->visible) return what + " is hidden";
    if (!c->enabled) return what + " is disabled";
    bool fits = false;
    switch (s.action) {
    case Step::Action::Type:
        fits = c->kind == ControlKind::Number || c->kind == ControlKind::Text;
        break;
    case Step::Action::SetValue:
        fits = c->kind == ControlKind::Number || c->kind == ControlKind::CheckBox;
        break;
    case Step::Action::Click:
        fits = c->kind == ControlKind::Button || c->kind == ControlKind::CheckBox;
        break;
    default: fits = true;
    }
    return fits ? "" : what + " does not take this action";
}

void userFocus(DialogRun& r, int16_t control) {
    r.focus.push_back({control, Source::User});
    r.focused = control;
}

void play(DialogRun& r, size_t index, const Step& s) {
    switch (s.action) {
    case Step::Action::Peek:
        if (s.peek) s.peek(r);
        ++r.stepsPlayed;
        return;
    case Step::Action::Press:
        ++r.stepsPlayed;
        send(r, kCommand, s.control, 0, Source::Script);
        return;
    case Step::Action::Message:
        ++r.stepsPlayed;
        send(r, s.message, s.wParam, s.lParam, Source::Script);
        return;
    default:
        break;
    }
    std::string why = refusal(r, s);
    if (!why.empty()) {
        ++r.stepsRefused;
        addError(ErrorKind::RefusedStep,
                 name(r) + ", step " + std::to_string(index + 1) + " refused: " + why);
        return;
    }
    Control* c = item(r, s.control, "script");
    if (s.action == Step::Action::Type) {
        setText(*c, s.text);
        userFocus(r, c->number);
    } else if (s.action == Step::Action::SetValue) {
        if (c->kind == ControlKind::CheckBox) {
            c->value = s.value != 0;
        } else {
            std::u16string t;
            fromUtf8(std::to_string(s.value), &t);
            setText(*c, t);
            userFocus(r, c->number);
        }
    } else if (c->kind == ControlKind::CheckBox) {
        c->value = !c->value;
    }
    ++r.stepsPlayed;
    send(r, kCommand, s.control, 0, Source::Script);
}

uint64_t dialog(Call& c) {
    UiState& s = uiState();
    int16_t number = i16(c, 0);
    void* handler = c.ptr<void>(1);
    std::vector<Step> script;
    if (!s.scripts.empty()) {
        script = std::move(s.scripts.front());
        s.scripts.pop_front();
    }
    if (!handler) {
        badArgument("FX_Dialog", "no handler for dialog " + std::to_string(number));
        return 0;
    }
    DialogLayout layout;
    if (!describe(number, &layout)) return 0;

    s.windows.push_back(std::make_unique<OpaqueCocoaWindow>(OpaqueCocoaWindow{s.runs.size()}));
    s.runs.emplace_back();
    DialogRun& r = s.runs.back();  // a deque keeps it in place while nested dialogs run
    r.number = number;
    r.handler = handler;
    r.parent = c.ptr<void>(2);
    r.flags = i16(c, 3);
    r.userData = c.ptr<void>(4);
    r.handle = s.windows.back().get();
    for (const ControlLayout& cl : layout.controls) {
        Control ctl;
        ctl.number = cl.number;
        ctl.kind = cl.kind;
        setText(ctl, captionText(cl.caption));
        r.controls.push_back(ctl);
    }

    send(r, kInit, 0, 0, Source::Host);
    for (size_t i = 0; i < script.size(); ++i) {
        if (r.ending != Ending::Open && !script[i].late) ++r.stepsLeft;
        else play(r, i, script[i]);
    }
    if (r.ending == Ending::Open) {
        // The script is over and the user closes the window: Cancel.
        r.closedByHost = true;
        send(r, kCommand, kCancel, 0, Source::CloseBox);
    }
    if (r.ending == Ending::Open) {
        addError(ErrorKind::NeverEnded, name(r) + ": the handler did not end it on Cancel");
        r.ending = Ending::ForcedByHost;
    }
    return addr(r.handle);
}

uint64_t endDialog(Call& c) {
    if (DialogRun* r = openDialog(c, "FX_EndDialog")) r->ending = Ending::Handler;
    return 0;
}

uint64_t enableItem(Call& c) {
    if (Control* ctl = item(c, "FX_EnableDlgItem")) ctl->enabled = i16(c, 2) != 0;
    return 0;
}

uint64_t showHideItem(Call& c) {
    if (Control* ctl = item(c, "FX_ShowHideDlgItem")) ctl->visible = i16(c, 2) != 0;
    return 0;
}

uint64_t setFocus(Call& c) {
    DialogRun* r = openDialog(c, "FX_SetDlgFocus");
    Control* ctl = r ? item(*r, i16(c, 1), "FX_SetDlgFocus") : nullptr;
    if (!ctl) return 0;
    if (!ctl->enabled || !ctl->visible) {
        badArgument("FX_SetDlgFocus", "control " + std::to_string(ctl->number) +
                                          (ctl->enabled ? " is hidden" : " is disabled"));
        return 0;
    }
    r->focus.push_back({ctl->number, Source::Handler});
    r->focused = ctl->number;
    return 0;
}

// Value kinds: 1 a check box's state, 3 a number field's number.
bool kindFits(const Control& ctl, int16_t kind, const char* fn) {
    if ((kind == 1 && ctl.kind == ControlKind::CheckBox) ||
        (kind == 3 && ctl.kind == ControlKind::Number))
        return true;
    badArgument(fn, "value kind " + std::to_string(kind) + " does not fit control " +
                        std::to_string(ctl.number));
    return false;
}

uint64_t getItemVal(Call& c) {
    Control* ctl = item(c, "FX_GetDlgItemVal");
    if (!ctl || !kindFits(*ctl, i16(c, 2), "FX_GetDlgItemVal")) return 0;
    return static_cast<uint64_t>(static_cast<int64_t>(ctl->value));
}

uint64_t setItemVal(Call& c) {
    Control* ctl = item(c, "FX_SetDlgItemVal");
    if (!ctl || !kindFits(*ctl, i16(c, 2), "FX_SetDlgItemVal")) return 0;
    int32_t v = i32(c, 3);
    if (ctl->kind == ControlKind::CheckBox) {
        ctl->value = v != 0;
    } else {
        std::u16string t;
        fromUtf8(std::to_string(v), &t);
        setText(*ctl, t);
    }
    return 0;
}

// Both getters fill at most limit units, terminator included: limit - 1 of
// text, then 0. A limit below 1 leaves the buffer alone.
template <class Unit> bool room(const Call& c, const char* fn) {
    if (!c.ptr<Unit>(2)) {
        badArgument(fn, "no buffer");
        return false;
    }
    if (i16(c, 3) < 1) {
        badArgument(fn, "limit " + std::to_string(i16(c, 3)) +
                            " leaves no room for the terminator");
        return false;
    }
    return true;
}

uint64_t getString(Call& c) {
    Control* ctl = item(c, "FX_GetDlgString");
    if (!ctl || !room<char>(c, "FX_GetDlgString")) return 0;
    std::string bytes = toMacRoman(ctl->text);
    size_t n = std::min(bytes.size(), static_cast<size_t>(i16(c, 3) - 1));
    char* out = c.ptr<char>(2);
    std::memcpy(out, bytes.data(), n);
    out[n] = 0;
    return 0;
}

uint64_t getString16(Call& c) {
    Control* ctl = item(c, "FX_GetDlgString_UTF16");
    if (!ctl || !room<char16_t>(c, "FX_GetDlgString_UTF16")) return 0;
    size_t n = std::min(ctl->text.size(), static_cast<size_t>(i16(c, 3) - 1));
    // A pair is never cut in two.
    if (n > 0 && n < ctl->text.size() && ctl->text[n - 1] >= 0xD800 && ctl->text[n - 1] < 0xDC00)
        --n;
    char16_t* out = c.ptr<char16_t>(2);
    std::memcpy(out, ctl->text.data(), n * sizeof(char16_t));
    out[n] = 0;
    return 0;
}

uint64_t setString(Call& c) {
    Control* ctl = item(c, "FX_SetDlgString");
    if (!ctl) return 0;
    if (!c.ptr<char>(2)) badArgument("FX_SetDlgString", "no text");
    else setText(*ctl, fromMacRoman(c.ptr<char>(2)));
    return 0;
}

uint64_t setString16(Call& c) {
    Control* ctl = item(c, "FX_SetDlgString_UTF16");
    if (!ctl) return 0;
    const char16_t* p = c.ptr<char16_t>(2);
    if (!p) badArgument("FX_SetDlgString_UTF16", "no text");
    else setText(*ctl, std::u16string(p));
    return 0;
}

}  // namespace

void addDialogBuiltIns(BuiltIns& b) {
    b[static_cast<int>(Fx::FX_Dialog)] = dialog;
    b[static_cast<int>(Fx::FX_EndDialog)] = endDialog;
    b[static_cast<int>(Fx::FX_EnableDlgItem)] = enableItem;
    b[static_cast<int>(Fx::FX_ShowHideDlgItem)] = showHideItem;
    b[static_cast<int>(Fx::FX_SetDlgFocus)] = setFocus;
    b[static_cast<int>(Fx::FX_GetDlgItemVal)] = getItemVal;
    b[static_cast<int>(Fx::FX_SetDlgItemVal)] = setItemVal;
    b[static_cast<int>(Fx::FX_GetDlgString)] = getString;
    b[static_cast<int>(Fx::FX_GetDlgString_UTF16)] = getString16;
    b[static_cast<int>(Fx::FX_SetDlgString)] = setString;
    b[static_cast<int>(Fx::FX_SetDlgString_UTF16)] = setString16;
}

}  // namespace ui
}  // namespace hostsim
