// The progress display that cancels at the scenario's step, recorded call by
// call, and its misuse.
#include "hostui_support.h"

#include <tuple>

namespace ui = hostsim::ui;
using hostui::HostUi;
using ui::ErrorKind;

namespace {

using ProgressDisplay = HostUi;

// Runs one display of `calls` progress calls with the arguments a run over
// staves and measures passes, and answers what the display said.
std::vector<int16_t> runDisplay(int calls, int16_t cancelledFlag) {
    void* h = FX_StartMassEdit(nullptr, calls, FXT_VERSION);
    EXPECT_NE(h, nullptr);
    std::vector<int16_t> answers;
    for (int i = 0; i < calls; ++i)
        answers.push_back(FX_MassEditProgress(h, 1, static_cast<int16_t>(i % 3 + 1),
                                              static_cast<int16_t>(i / 3 + 1), -1, FXT_VERSION));
    FX_EndMassEdit(h, cancelledFlag, FXT_VERSION);
    return answers;
}

TEST_F(ProgressDisplay, CancelsAtTheScriptedStepAndEveryStepAfter) {
    struct Case {
        int cancelAt, calls;
        std::vector<int16_t> answers;
    };
    const Case cases[] = {
        {0, 4, {1, 1, 1, 1}},       {1, 3, {0, 0, 0}},          {3, 5, {1, 1, 0, 0, 0}},
        {5, 4, {1, 1, 1, 1}},       {4, 4, {1, 1, 1, 0}},       {-2, 2, {1, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "cancel at " << c.cancelAt);
        hostsim::reset();
        ui::scriptProgress({c.cancelAt});
        EXPECT_EQ(runDisplay(c.calls, 1), c.answers);
        ASSERT_EQ(ui::progress().size(), 1u);
        const ui::Progress& p = ui::progress()[0];
        EXPECT_EQ(p.steps, c.calls);
        EXPECT_EQ(p.first, nullptr);
        EXPECT_TRUE(p.ended);
        EXPECT_EQ(p.cancelled, 1);
        ASSERT_EQ(p.calls.size(), size_t(c.calls));
        for (int i = 0; i < c.calls; ++i) {
            const ui::ProgressCall& k = p.calls[size_t(i)];
            EXPECT_EQ(std::make_tuple(k.a, k.b, k.c, k.d, k.answer),
                      std::make_tuple(1, i % 3 + 1, i / 3 + 1, -1, c.answers[size_t(i)])) << i;
        }
        EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
    }
}

TEST_F(ProgressDisplay, MisuseIsRecorded) {
    int notADisplay = 0;
    // A handle of no display: answered 0, so that the caller stops.
    EXPECT_EQ(FX_MassEditProgress(&notADisplay, 1, 0, 0, -1, FXT_VERSION), 0);
    FX_EndMassEdit(nullptr, 0, FXT_VERSION);
    EXPECT_EQ(errorKinds(), std::vector<ErrorKind>(2, ErrorKind::UnknownProgress));

    hostsim::reset();
    void* h = FX_StartMassEdit(nullptr, 2, FXT_VERSION);
    FX_EndMassEdit(h, 0, FXT_VERSION);
    EXPECT_EQ(FX_MassEditProgress(h, 1, 0, 0, -1, FXT_VERSION), 0);
    FX_EndMassEdit(h, 1, FXT_VERSION);
    EXPECT_EQ(errorKinds(), std::vector<ErrorKind>(2, ErrorKind::ProgressEnded));
    EXPECT_EQ(ui::progress()[0].cancelled, 0);  // the second end changed nothing
    EXPECT_TRUE(ui::progress()[0].calls.empty());

    hostsim::reset();
    void* outer = FX_StartMassEdit(nullptr, 2, FXT_VERSION);
    void* inner = FX_StartMassEdit(nullptr, 2, FXT_VERSION);
    EXPECT_EQ(errorKinds(), (std::vector<ErrorKind>{ErrorKind::ProgressNested,
                                                    ErrorKind::ProgressLeftOpen,
                                                    ErrorKind::ProgressLeftOpen}));
    FX_EndMassEdit(inner, 0, FXT_VERSION);
    EXPECT_EQ(errorKinds(), (std::vector<ErrorKind>{ErrorKind::ProgressNested,
                                                    ErrorKind::ProgressLeftOpen}));
    FX_EndMassEdit(outer, 0, FXT_VERSION);
    EXPECT_EQ(errorKinds(), std::vector<ErrorKind>{ErrorKind::ProgressNested});
}

}  // namespace
