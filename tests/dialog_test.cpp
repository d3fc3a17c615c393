// The settings dialog's handler inside a loaded copy of the test image, shown
// by the simulated host as the host shows it: 272, a user's steps as 273
// messages, then OK or Cancel.
#include "bundles.h"
#include "command.h"
#include "fresh.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"
#include "settings.h"
#include "zemlopdk.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using hostsim::Fx;
namespace ui = hostsim::ui;
using namespace testing_support;

namespace {

using HandlerFn = bool (*)(void*, uint32_t, int64_t, int64_t, void*);
using DialogFn = void* (*)(int16_t, void*, void*, int16_t, void*, uint32_t);

void* parentTag() { return reinterpret_cast<void*>(uintptr_t{0xD1A1}); }

class SettingsDialog : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        ASSERT_TRUE(p_.ok()) << p_.error();
        ASSERT_EQ(p_.bind(), 1);
        handler_ = p_.fn<HandlerFn>("BrevadoDialogHandler");
        dialog_ = p_.fn<DialogFn>("FX_Dialog");
        ui::setDialogFolder(p_.plugin().bundlePath() + "/Contents/Resources");
    }
    void TearDown() override { hostsim::reset(); }

    // Shows dialog 20009 on `s` with the script; the dialog as it ended.
    const ui::DialogRun& show(CapoSettings& s, std::vector<ui::Step> script) {
        ui::scriptDialog(std::move(script));
        dialog_(20009, reinterpret_cast<void*>(handler_), parentTag(), 0x3001, &s, FXT_VERSION);
        EXPECT_FALSE(ui::dialogs().empty());
        return ui::dialogs().back();
    }
    static CapoSettings labelled(const std::u16string& label, int16_t fret = 1) {
        CapoSettings s;
        setLabel(s, label);
        s.capoFret = fret;
        return s;
    }

    Locale english_{"en_US.UTF-8"};
    Probe p_;
    HandlerFn handler_ = nullptr;
    DialogFn dialog_ = nullptr;
};

// ---- Initialisation -------------------------------------------------------

// ---- The fret and the label -----------------------------------------------

// The label is read from the field, as typed, whatever the copy holds. Fret 0
// (also 65536, in 16 bits) is refused: the field shows the previous fret again
// and gets the focus back, and the label is neither read nor rewritten.
TEST_F(SettingsDialog, FretChangeRewritesTheFirstNumberOfTheLabel) {
    const std::u16string x70(70, u'x'), y70(70, u'y');
    struct {
        const char* what;
        std::u16string before;
        const char* fret;
        std::u16string after;
    } cases[] = {
        {"number inside", u"Capo 3", "12", u"Capo 12"},
        {"only the first run", u"Capo 3 (fret 3)", "12", u"Capo 12 (fret 3)"},
        {"number first", u"3rd fret", "5", u"5rd fret"},
        {"run of digits", u"Capo 0012x", "2", u"Capo 2x"},
        {"no digits", u"Capo III", "5", u"Capo III"},
        {"empty", u"", "5", u""},
        {"other scripts' digits", u"Capo \u0663", "5", u"Capo \u0663"},
        {"long prefix cut to 63", x70 + u"3", "4", std::u16string(63, u'x') + u"4"},
        {"long suffix cut to 63", u"3" + y70, "4", u"4" + std::u16string(63, u'y')},
        {"fret 0 refused", u"Capo 3 here", "0", u"Capo 3 here"},
        {"fret 0 in 16 bits refused", u"Capo 3 here", "65536", u"Capo 3 here"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const bool refused = std::stoi(c.fret) % 65536 == 0;
        CapoSettings s = labelled(u"Kapo 9", 1);
        const ui::DialogRun& r = show(s, {ui::type(10, ui::utf8(c.before)), ui::type(4, c.fret)});
        EXPECT_EQ(ui::utf8(r.control(10)->text), ui::utf8(c.after));
        EXPECT_EQ(labelOf(s), refused ? std::u16string(u"Kapo 9") : c.after) << "the copy follows at once";
        EXPECT_EQ(s.capoFret, refused ? 1 : std::stoi(c.fret));
        EXPECT_EQ(r.text8(4), refused ? "1" : c.fret);
        if (refused) {
            EXPECT_EQ(r.focused, 4);
            ASSERT_FALSE(r.focus.empty());
            EXPECT_EQ(r.focus.back().source, ui::Source::Handler);
        }
        EXPECT_EQ(s.confirmed, 0);
        EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
    }
}

// ---- Check boxes ----------------------------------------------------------

// The label box flips the label field and the copy at once; the removal box
// then enables the label field only when the label box is checked.
TEST_F(SettingsDialog, RemovalBoxDisablesAndEnablesExactlyItsControls) {
    for (int16_t showLabel : {1, 0}) {
        SCOPED_TRACE(showLabel);
        CapoSettings s = labelled(u"Capo 1");
        s.showLabel = showLabel;
        hostsim::clearCalls();
        show(s, {ui::click(9), ui::click(11), ui::click(11), ui::click(11), ui::press(1)});
        EXPECT_EQ(s.removeMode, 1);
        EXPECT_EQ(s.showLabel, !showLabel);
        EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
        std::vector<std::pair<int64_t, int64_t>> enables;
        for (const hostsim::Call& c : hostsim::calls())
            if (c.fx == Fx::FX_EnableDlgItem) enables.push_back({c.args[1], c.args[2]});
        const int64_t label = showLabel ? 1 : 0, flipped = 1 - label;
        const std::vector<std::pair<int64_t, int64_t>> expected = {
            {10, label},                                        // at initialisation
            {10, flipped},                                      // label box clicked
            {4, 0}, {6, 0}, {9, 0}, {10, 0}, {8, 0},            // removal checked
            {4, 1}, {6, 1}, {9, 1}, {10, flipped}, {8, 1},      // unchecked
            {4, 0}, {6, 0}, {9, 0}, {10, 0}, {8, 0}};           // checked again
        EXPECT_EQ(enables, expected);
        hostsim::reset();
        ui::setDialogFolder(p_.plugin().bundlePath() + "/Contents/Resources");
    }
}

// ---- OK and Cancel ----------------------------------------------------------

// ---- Messages the handler leaves alone -------------------------------------

// Before initialisation and after the end, commands answer true and touch
// nothing: any call on the ended dialog would be an error of the host. Null
// user data gets no answer at all.
TEST_F(SettingsDialog, CommandsBeforeInitialisationAndAfterTheEndAreIgnored) {
    CapoSettings s = labelled(u"Capo 1");
    s.confirmed = 7;
    const CapoSettings before = s;
    hostsim::clearCalls();
    for (int64_t control : {1, 2, 4, 9, 11})
        EXPECT_TRUE(handler_(parentTag(), 273, control, 0, &s)) << control;
    EXPECT_EQ(std::memcmp(&s, &before, sizeof s), 0);
    EXPECT_EQ(hostsim::calls().size(), 0u) << "no host call at all";

    const ui::DialogRun& r = show(s, {ui::type(4, "5"), ui::press(1), ui::late(ui::press(1)),
                                      ui::late(ui::press(4)), ui::late(ui::press(2))});
    EXPECT_EQ(s.confirmed, 1);
    EXPECT_EQ(s.capoFret, 5);
    ASSERT_EQ(r.sent.size(), 6u);
    for (const ui::Sent& m : r.sent) EXPECT_TRUE(m.answer);
    EXPECT_TRUE(ui::errors().empty()) << ui::errorText();

    // Without settings the handler answers nothing and calls nothing.
    hostsim::clearCalls();
    for (uint32_t message : {272u, 273u, 0u})
        for (int64_t control : {1, 2, 4})
            EXPECT_FALSE(handler_(parentTag(), message, control, 0, nullptr));
    EXPECT_EQ(hostsim::calls().size(), 0u);
}

}  // namespace
