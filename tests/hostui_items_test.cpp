// The item calls on an open dialog: value kinds, the capacity of the string
// getters (guard bytes on both sides), the 8-bit view of a control's text,
// and calls on dialogs that ended or never were.
#include "hostui_support.h"

#include <climits>
#include <cstring>
#include <vector>

namespace ui = hostsim::ui;
using hostui::HostUi;
using ui::ErrorKind;

namespace {

using DialogItems = HostUi;

// Every item call on a dialog that ended, or on something that never was a
// dialog: one error each, nothing changed, nothing written.
TEST_F(DialogItems, CallsOnEndedOrUnknownDialogsAreErrorsAndDoNothing) {
    ui::scriptDialog({ui::click(1)});
    hostui::Settings s;
    void* ended = hostui::showSettings(&s);
    ASSERT_NE(ended, nullptr);
    int notADialog = 0;
    char buffer[8] = "keep";
    char16_t units[8] = u"keep";
    using Call = std::function<void(void*)>;
    const std::pair<const char*, Call> calls[] = {
        {"FX_EndDialog", [](void* d) { FX_EndDialog(d, FXT_VERSION); }},
        {"FX_EnableDlgItem", [](void* d) { FX_EnableDlgItem(d, 4, 0, FXT_VERSION); }},
        {"FX_ShowHideDlgItem", [](void* d) { FX_ShowHideDlgItem(d, 4, 0, FXT_VERSION); }},
        {"FX_SetDlgFocus", [](void* d) { FX_SetDlgFocus(d, 6, FXT_VERSION); }},
        {"FX_GetDlgItemVal", [](void* d) { EXPECT_EQ(FX_GetDlgItemVal(d, 4, 3, FXT_VERSION), 0); }},
        {"FX_SetDlgItemVal", [](void* d) { FX_SetDlgItemVal(d, 4, 3, 9, FXT_VERSION); }},
        {"FX_GetDlgString", [&](void* d) { FX_GetDlgString(d, 6, buffer, 8, FXT_VERSION); }},
        {"FX_GetDlgString_UTF16",
         [&](void* d) { FX_GetDlgString_UTF16(d, 10, units, 8, FXT_VERSION); }},
        {"FX_SetDlgString",
         [](void* d) { FX_SetDlgString(d, 6, const_cast<char*>("9"), FXT_VERSION); }},
        {"FX_SetDlgString_UTF16",
         [](void* d) { FX_SetDlgString_UTF16(d, 10, const_cast<char16_t*>(u"9"), FXT_VERSION); }},
    };
    for (void* handle : {ended, static_cast<void*>(&notADialog), static_cast<void*>(nullptr)}) {
        const ErrorKind kind = handle == ended ? ErrorKind::EndedDialog : ErrorKind::UnknownDialog;
        for (const auto& [name, call] : calls) {
            SCOPED_TRACE(name);
            size_t before = ui::errors().size();
            call(handle);
            auto errs = ui::errors();
            ASSERT_EQ(errs.size(), before + 1);
            EXPECT_EQ(errs.back().kind, kind);
            EXPECT_NE(errs.back().text.find(name), std::string::npos) << errs.back().text;
        }
    }
    EXPECT_STREQ(buffer, "keep");
    EXPECT_EQ(std::u16string(units), u"keep");
    const ui::DialogRun& r = ui::dialogs()[0];
    EXPECT_EQ(r.control(4)->value, 1);
    EXPECT_TRUE(r.control(4)->enabled);
    EXPECT_TRUE(r.control(4)->visible);
    EXPECT_EQ(r.focused, 4);
    EXPECT_EQ(r.text8(6), "64");
}

}  // namespace
