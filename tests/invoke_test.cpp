// The menu command end to end: the built bundle loaded as the host loads it,
// invoked through its exported entry points on a score in the simulated
// host, with the user's answers to the region question and the dialog
// scripted.
#include "bundles.h"
#include "command.h"
#include "hostsim/document.h"
#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using hostsim::Fx;
namespace doc = hostsim::doc;
namespace edits = hostsim::edits;
namespace score = hostsim::score;
namespace ui = hostsim::ui;
using namespace testing_support;

namespace {

using InvokeFn = int16_t (*)(void*, int16_t, void*, void*);
using ExtInvokeFn = int32_t (*)(void*, int32_t, void*, void*);

constexpr uint32_t kShowTransposed = 0x6F743132;  // ot12, (-2, 0)
constexpr uint16_t kQuestion = 33;
constexpr uint16_t kNotice = 64;
const char* const kNothingSelected = "Nothing is selected. Add capo chords to the whole document?";
const char* const kNothingChanged = "No chord symbols were changed.";

void* parentTag() { return reinterpret_cast<void*>(uintptr_t{0xCAFE}); }

score::ChordRecord chord(int32_t position, int16_t vertical = 24) {
    score::ChordRecord c;
    c.key1 = 7;
    c.key3 = position;
    c.vertical = vertical;
    return c;
}

size_t capoChords(const score::Score& s, int fret = -1) {
    size_t n = 0;
    for (int16_t staff = 1; staff <= s.slots(); ++staff)
        for (int16_t m = 1; m <= s.measures(); ++m)
            for (const score::ChordRecord& c : score::chords(staff, m))
                if (c.isCapo() && (fret < 0 || c.fret() == fret)) ++n;
    return n;
}

// The calls that mark the steps of a run, by name; loads only of ot12.
std::vector<std::string> steps() {
    const Fx marked[] = {Fx::FX_Dialog,       Fx::FX_StartZemloEdit_UTF16, Fx::FX_StartZemloEdit,
                         Fx::FX_StartMassEdit, Fx::FX_EndMassEdit,         Fx::FX_EndZemloEdit,
                         Fx::FX_CancelZemloEdit};
    std::vector<std::string> out;
    for (const hostsim::Call& c : hostsim::calls()) {
        if (c.fx == Fx::FX_AlertMessage_UTF16 || c.fx == Fx::FX_AlertMessage)
            out.push_back((c.fx == Fx::FX_AlertMessage ? "8-bit alert " : "alert ") + std::to_string(c.args[1]));
        else if (c.fx == Fx::FX_LoadEData && static_cast<uint32_t>(c.args[0]) == kShowTransposed)
            out.push_back("transposed");
        else if (std::find(std::begin(marked), std::end(marked), c.fx) != std::end(marked))
            out.push_back(hostsim::info(c.fx).name);
    }
    return out;
}

class Invoke : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        hostsim::setResult(Fx::FX_IsMachO, 1);  // the host runs on macOS
        score_ = std::make_unique<score::Score>(2, 3);
        score_->chord(1, 1, chord(0)).chord(1, 1, chord(512, 30)).chord(2, 2, chord(256));
        selection_ = score_->whole();
        whole_ = score_->whole();
        original_ = doc::snapshot();
        load();
    }
    void TearDown() override {
        EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
        for (const std::string& e : edits::errors()) ADD_FAILURE() << e;
        if (plugin_) {
            EXPECT_EQ(*plugin_->variable<int32_t>("ZemloEditDepth"), 0);
            EXPECT_EQ(*plugin_->variable<int32_t>("MassEditDepth"), 0);
        }
        hostsim::reset();
    }

    // A fresh copy of the bundle, bound as the host binds it.
    void load() {
        plugin_ = std::make_unique<hostsim::Plugin>(CAPOCHORDS_BUNDLE, /*freshCopy=*/true);
        ASSERT_TRUE(plugin_->loaded()) << plugin_->error();
        auto m = plugin_->function<int (*)(int, char**)>("main");
        ASSERT_NE(m, nullptr);
        char arg0[] = "Zemlo";
        char* argv[] = {arg0, nullptr};
        ASSERT_EQ(m(1, argv), 1);
        invoke_ = plugin_->function<InvokeFn>("ZemloExtensionInvoke");
        extInvoke_ = plugin_->function<ExtInvokeFn>("Ext_invoke");
        ASSERT_NE(invoke_, nullptr);
        ASSERT_NE(extInvoke_, nullptr);
        ui::setDialogFolder(plugin_->bundlePath() + "/Contents/Resources");
    }
    int16_t run(std::vector<ui::Step> dialog, bool selected = true, int16_t item = 0) {
        ui::scriptDialog(std::move(dialog));
        return invoke_(parentTag(), item, selected ? &selection_ : nullptr, &whole_);
    }
    int16_t transposed() { return *plugin_->variable<int16_t>("transposed"); }
    int32_t editDepth() { return *plugin_->variable<int32_t>("ZemloEditDepth"); }

    Locale english_{"en_US.UTF-8"};
    std::unique_ptr<score::Score> score_;
    score::Region selection_, whole_;
    doc::Document original_;
    std::unique_ptr<hostsim::Plugin> plugin_;
    InvokeFn invoke_ = nullptr;
    ExtInvokeFn extInvoke_ = nullptr;
};

// ---- Before the dialog ----------------------------------------------------

TEST_F(Invoke, NoSelectionAsksAndOkWorksOnTheWholeDocument) {
    ui::scriptAlerts({1});
    EXPECT_EQ(run({ui::press(1)}, /*selected=*/false), 1);
    ASSERT_GE(ui::alerts().size(), 1u);
    EXPECT_EQ(ui::alerts()[0].kind, kQuestion);
    EXPECT_EQ(ui::alerts()[0].text, kNothingSelected);
    EXPECT_EQ(ui::alerts()[0].parent, parentTag());
    EXPECT_TRUE(ui::alerts()[0].utf16);
    EXPECT_EQ(ui::alerts().size(), 1u) << "no notice: chords changed";
    EXPECT_EQ(capoChords(*score_), 3u) << "the whole document";
    const std::vector<std::string> expected = {"alert 33", "FX_Dialog", "transposed",
                                               "FX_StartZemloEdit_UTF16", "FX_StartMassEdit",
                                               "FX_EndMassEdit", "FX_EndZemloEdit"};
    EXPECT_EQ(steps(), expected);
}

TEST_F(Invoke, NoSelectionAndCancelEndsAtTheQuestion) {
    for (int16_t answer : {2, 0, -1, 7}) {
        ui::scriptAlerts({answer});
        EXPECT_EQ(run({ui::press(1)}, /*selected=*/false), 0) << answer;
    }
    EXPECT_TRUE(ui::dialogs().empty());
    EXPECT_TRUE(edits::all().empty());
    EXPECT_EQ(doc::snapshot(), original_);
    EXPECT_EQ(ui::alerts().size(), 4u);
}

// ---- The dialog -------------------------------------------------------------

// ---- Runs that change nothing -------------------------------------------------

TEST_F(Invoke, RunThatChangesNothingTellsTheUserAndCancelsTheEdit) {
    for (int16_t m = 1; m <= 3; ++m) score_->chordFlag(m, false);
    original_ = doc::snapshot();
    hostsim::clearCalls();
    EXPECT_EQ(run({ui::press(1)}), 0);
    ASSERT_EQ(ui::alerts().size(), 1u);
    EXPECT_EQ(ui::alerts()[0].kind, kNotice);
    EXPECT_EQ(ui::alerts()[0].text, kNothingChanged);
    EXPECT_EQ(ui::alerts()[0].parent, parentTag());
    const std::vector<std::string> expected = {"FX_Dialog", "transposed", "FX_StartZemloEdit_UTF16",
                                               "FX_StartMassEdit", "FX_EndMassEdit", "alert 64",
                                               "FX_CancelZemloEdit"};
    EXPECT_EQ(steps(), expected) << "the notice shows while the edit is open";
    ASSERT_EQ(edits::all().size(), 1u);
    EXPECT_EQ(edits::all()[0].name, "Capo Chords");
    EXPECT_EQ(edits::all()[0].state, edits::State::Cancelled);
    EXPECT_EQ(doc::difference(original_, doc::snapshot()), "");
    EXPECT_EQ(editDepth(), 0);
}

// ---- A run that changes the score ----------------------------------------------

// ---- Hosts without some functions ---------------------------------------------

TEST_F(Invoke, DialogThatIsNotShownConfirmsNothingEvenAfterAConfirmedRun) {
    EXPECT_EQ(run({ui::press(1)}), 1);
    const doc::Document after = doc::snapshot();
    hostsim::failCall(Fx::FX_Dialog, 1);
    EXPECT_EQ(run({}), 0);
    EXPECT_EQ(doc::snapshot(), after);
    EXPECT_EQ(edits::all().size(), 1u) << "no second edit";
}

// Read anew at every confirmed run; a record that cannot be loaded reads as off.
TEST_F(Invoke, ShowTransposedIsReadAtEveryConfirmedRun) {
    const std::vector<uint8_t> on = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, off(12, 0);
    for (const std::vector<uint8_t>* record : {&on, &off, &on, static_cast<decltype(&on)>(nullptr)}) {
        if (record) doc::put(kShowTransposed, {-2, 0, 0}, *record);
        else doc::erase(kShowTransposed, {-2, 0, 0});
        EXPECT_EQ(run({ui::press(1)}), 1);
        EXPECT_EQ(transposed(), record == &on ? 1 : 0);
    }
}

}  // namespace
