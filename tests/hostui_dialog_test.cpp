// Modal dialogs as the host runs them: 272, the script's steps as 273
// messages, the end by the handler or by the host's close box, and the steps
// a user could not take.
#include "hostui_support.h"

#include "hostsim/document.h"

#include <tuple>

namespace ui = hostsim::ui;
using hostui::HostUi;
using hostui::Settings;
using ui::ErrorKind;
using ui::Source;

namespace {

using HostDialog = HostUi;

// message, wParam, source, answer
using Msg = std::tuple<uint32_t, int64_t, Source, bool>;

std::vector<Msg> messagesOf(const ui::DialogRun& r) {
    std::vector<Msg> out;
    for (const ui::Sent& s : r.sent) {
        EXPECT_EQ(s.lParam, 0);
        out.emplace_back(s.message, s.wParam, s.source, s.answer);
    }
    return out;
}

TEST_F(HostDialog, ScriptRunningOutClosesTheWindowWithCancel) {
    Settings s;
    ASSERT_NE(hostui::showSettings(&s), nullptr);
    const ui::DialogRun& r = ui::dialogs()[0];
    const std::vector<Msg> expected = {{272, 0, Source::Host, true},
                                       {273, 2, Source::CloseBox, true}};
    EXPECT_EQ(messagesOf(r), expected);
    EXPECT_TRUE(r.closedByHost);
    EXPECT_EQ(r.ending, ui::Ending::Handler);
    EXPECT_EQ(s.confirmed, 0);
    EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
}

bool neverEnds(OpaqueCocoaWindow*, uint32_t, int64_t, int64_t, void*) { return true; }

TEST_F(HostDialog, HandlerThatNeverEndsTheDialogIsAnError) {
    ui::scriptDialog({ui::click(1)});
    void* h = FX_Dialog(20009, reinterpret_cast<void*>(&neverEnds), nullptr, 0, nullptr,
                        FXT_VERSION);
    EXPECT_NE(h, nullptr);
    const ui::DialogRun& r = ui::dialogs()[0];
    EXPECT_EQ(r.ending, ui::Ending::ForcedByHost);
    EXPECT_TRUE(r.closedByHost);
    EXPECT_EQ(r.sent.size(), 3u);  // 272, OK, the close box
    EXPECT_EQ(errorKinds(), std::vector<ErrorKind>{ErrorKind::NeverEnded});
    // Forced to an end all the same: the handle is dead.
    FX_EndDialog(h, FXT_VERSION);
    EXPECT_EQ(errorKinds(),
              (std::vector<ErrorKind>{ErrorKind::NeverEnded, ErrorKind::EndedDialog}));
}

// A step a user could not take is refused: recorded, not performed, no message.
struct Refusal {
    const char* name;
    std::vector<ui::Step> before;
    ui::Step step;
    const char* why;
};

TEST_F(HostDialog, StepsOnUnknownDisabledHiddenOrUnfitControlsAreRefused) {
    auto hide10 = ui::peek([](const ui::DialogRun& r) {
        FX_ShowHideDlgItem(r.handle, 10, 0, FXT_VERSION);
    });
    const Refusal cases[] = {
        {"fret while removing", {ui::click(11)}, ui::type(4, "7"), "control 4 is disabled"},
        {"label box while removing", {ui::click(11)}, ui::click(9), "control 9 is disabled"},
        {"label text without label", {ui::click(9)}, ui::type(10, "x"), "control 10 is disabled"},
        {"fret value while removing", {ui::click(11)}, ui::setValue(4, 3), "control 4 is disabled"},
        {"unknown field", {}, ui::type(12, "1"), "no control 12"},
        {"unknown button", {}, ui::click(99), "no control 99"},
        {"hidden field", {hide10}, ui::type(10, "x"), "control 10 is hidden"},
        {"typing into a check box", {}, ui::type(9, "1"), "does not take this action"},
        {"clicking a text field", {}, ui::click(6), "does not take this action"},
        {"value of a static", {}, ui::setValue(7, 1), "does not take this action"},
    };
    for (const Refusal& c : cases) {
        SCOPED_TRACE(c.name);
        hostsim::reset();
        ui::setDialogFolder(std::string(CAPOCHORDS_BUNDLE) + "/Contents/Resources");
        std::vector<ui::Step> script = c.before;
        script.push_back(c.step);
        script.push_back(ui::click(1));
        ui::scriptDialog(script);
        Settings s;
        hostui::showSettings(&s);
        ASSERT_EQ(ui::dialogs().size(), 1u);
        const ui::DialogRun& r = ui::dialogs()[0];
        auto errs = ui::errors();
        ASSERT_EQ(errs.size(), 1u) << ui::errorText();
        EXPECT_EQ(errs[0].kind, ErrorKind::RefusedStep);
        EXPECT_NE(errs[0].text.find(c.why), std::string::npos) << errs[0].text;
        EXPECT_NE(errs[0].text.find("step " + std::to_string(script.size() - 1)),
                  std::string::npos)
            << errs[0].text;
        EXPECT_EQ(r.stepsRefused, 1u);
        for (const ui::Sent& m : r.sent)
            if (m.source == Source::Script) {
                EXPECT_NE(m.wParam, c.step.control) << "performed";
            }
        EXPECT_EQ(s.fret, 1);
        EXPECT_EQ(std::u16string(s.label), u"Capo 1");
        EXPECT_EQ(s.confirmed, 1);  // the steps after it still ran
    }
}

TEST_F(HostDialog, FocusOnADisabledControlIsAnError) {
    hostui::withOpenDialog([](OpaqueCocoaWindow* d) {
        FX_EnableDlgItem(d, 4, 0, FXT_VERSION);
        FX_SetDlgFocus(d, 4, FXT_VERSION);
        FX_SetDlgFocus(d, 13, FXT_VERSION);
    });
    EXPECT_EQ(errorKinds(),
              (std::vector<ErrorKind>{ErrorKind::BadArgument, ErrorKind::UnknownControl}));
    EXPECT_TRUE(ui::dialogs()[0].focus.empty());
}

}  // namespace
