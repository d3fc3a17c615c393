// Modal dialogs as the host runs them: the steps a user could not take are
// refused, recorded, and reach no handler.
#include "hostui_support.h"

#include "hostsim/document.h"


namespace ui = hostsim::ui;
using hostui::HostUi;
using hostui::Settings;
using ui::ErrorKind;
using ui::Source;

namespace {

using HostDialog = HostUi;

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

}  // namespace
