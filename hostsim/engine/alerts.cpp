// Alerts: each is recorded with its kind and text, and answered from the
// scenario's list of answers, then with 1 (OK).
#include "uistate.h"

namespace hostsim {
namespace ui {

void scriptAlerts(std::vector<int16_t> answers) {
    for (int16_t a : answers) uiState().answers.push_back(a);
}

const std::vector<Alert>& alerts() { return uiState().alerts; }

namespace {

uint64_t alert(Call& c, bool utf16) {
    UiState& s = uiState();
    Alert a;
    a.utf16 = utf16;
    a.parent = c.ptr<void>(0);
    a.kind = static_cast<uint16_t>(c.args[1]);
    a.third = i32(c, 2);
    if (!c.ptr<void>(3)) {
        addError(ErrorKind::BadArgument,
                 utf16 ? "FX_AlertMessage_UTF16: no text" : "FX_AlertMessage: no text");
    } else if (utf16) {
        a.text = utf8(std::u16string(c.ptr<char16_t>(3)));
    } else {
        a.text = utf8(fromMacRoman(c.ptr<char>(3)));  // the application's 8-bit encoding
    }
    a.answer = 1;
    if (!s.answers.empty()) {
        a.answer = s.answers.front();
        s.answers.pop_front();
    }
    s.alerts.push_back(a);
    return static_cast<uint64_t>(static_cast<int64_t>(a.answer));
}

}  // namespace

void addAlertBuiltIns(BuiltIns& b) {
    b[static_cast<int>(Fx::FX_AlertMessage)] = [](Call& c) { return alert(c, false); };
    b[static_cast<int>(Fx::FX_AlertMessage_UTF16)] = [](Call& c) { return alert(c, true); };
}

}  // namespace ui
}  // namespace hostsim
