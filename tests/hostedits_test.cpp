// The simulated host's undoable edits, driven through the plug-in's own
// forwarders: a cancelled edit restores the document exactly, nested edits,
// committed ones undone.
#include "hostsim/edits.h"
#include "hostsim/score.h"
#include "records.h"

#include <gtest/gtest.h>

using hostsim::Fx;
namespace doc = hostsim::doc;
namespace edits = hostsim::edits;
namespace score = hostsim::score;

namespace {

const auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new testing_support::BoundToEngine);

unsigned short* name16(const char16_t* s) {
    return reinterpret_cast<unsigned short*>(const_cast<char16_t*>(s));
}

class HostEdits : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        score::Score s(2, 3);
        score::ChordRecord c;
        c.key3 = 480;
        s.chord(1, 1, c).chord(1, 1, c).chord(2, 3, c).textBlock(1, 1, -200, 194, u"Capo 2");
        doc::putFrame({1, 1, 1, 0, 0}, std::vector<uint8_t>(2 * doc::kEntryBytes, 7));
        original_ = doc::snapshot();
    }
    void TearDown() override {
        EXPECT_EQ(ZemloEditDepth, 0);
        hostsim::reset();
    }

    // A change of every kind the command makes: save, append, delete, create.
    static void changeEverything() {
        score::ChordRecord c;
        c.capoBits = 0x0043;
        EDataID id{1, 1, 0};
        ASSERT_EQ(FX_SaveEData(doc::kChord, &id, &c, 30, FXT_VERSION), 1);
        id = {1, 1, 2};
        ASSERT_EQ(FX_SaveEData(doc::kChord, &id, &c, 30, FXT_VERSION), 1);
        id = {2, 3, 0};
        ASSERT_EQ(FX_DeleteEData(doc::kChord, &id, FXT_VERSION), 1);
        id = {-1, 0, 0};
        const char16_t raw[] = u"Capo 5";
        ASSERT_EQ(FX_CreateEData(doc::kRawText, &id, const_cast<char16_t*>(raw), 6, FXT_VERSION), 1);
    }

    doc::Document original_;
};

TEST_F(HostEdits, CancelRestoresTheDocumentExactly) {
    EXPECT_EQ(FX_StartZemloEdit_UTF16(name16(u"Capo Chords"), FXT_VERSION), 1);
    changeEverything();
    ASSERT_NE(doc::snapshot(), original_);
    FX_CancelZemloEdit(FXT_VERSION);
    EXPECT_EQ(doc::difference(original_, doc::snapshot()), "");
    ASSERT_EQ(edits::all().size(), 1u);
    EXPECT_EQ(edits::all()[0].name, "Capo Chords");
    EXPECT_TRUE(edits::all()[0].utf16);
    EXPECT_EQ(edits::all()[0].state, edits::State::Cancelled);
    EXPECT_TRUE(edits::errors().empty());
    EXPECT_FALSE(edits::undo()) << "a cancelled edit is not in the history";
}

// An inner edit has a snapshot of its own; committed, it goes with the edit
// around it.
TEST_F(HostEdits, NestedEditsStack) {
    FX_StartZemloEdit_UTF16(name16(u"outer"), FXT_VERSION);
    score::Score(2, 3).chord(2, 2, score::ChordRecord{});
    const doc::Document afterOuter = doc::snapshot();
    FX_StartZemloEdit_UTF16(name16(u"inner"), FXT_VERSION);
    EXPECT_EQ(edits::openCount(), 2u);
    changeEverything();
    FX_CancelZemloEdit(FXT_VERSION);
    EXPECT_EQ(doc::difference(afterOuter, doc::snapshot()), "") << "only the inner edit is undone";
    FX_StartZemloEdit_UTF16(name16(u"inner again"), FXT_VERSION);
    changeEverything();
    EXPECT_EQ(FX_EndZemloEdit(FXT_VERSION), 1);
    EXPECT_FALSE(edits::undo()) << "nothing is undone while an edit is open";
    FX_CancelZemloEdit(FXT_VERSION);
    EXPECT_EQ(doc::difference(original_, doc::snapshot()), "") << "the committed inner edit went with it";
    ASSERT_EQ(edits::all().size(), 3u);
    EXPECT_EQ(edits::all()[1].depth, 1);
    EXPECT_EQ(edits::all()[2].state, edits::State::Committed);
    EXPECT_EQ(edits::all()[0].state, edits::State::Cancelled);

    // Committed all the way out, one undo takes back both levels.
    FX_StartZemloEdit_UTF16(name16(u"outer"), FXT_VERSION);
    FX_StartZemloEdit_UTF16(name16(u"inner"), FXT_VERSION);
    changeEverything();
    FX_EndZemloEdit(FXT_VERSION);
    FX_EndZemloEdit(FXT_VERSION);
    EXPECT_NE(doc::snapshot(), original_);
    EXPECT_TRUE(edits::undo());
    EXPECT_EQ(doc::difference(original_, doc::snapshot()), "");
    EXPECT_TRUE(edits::errors().empty());
}

// Undo takes back the edit alone: what changed after its commit, through a
// host call or set up by the host itself, stays.
TEST_F(HostEdits, UndoKeepsWhatChangedAfterTheEdit) {
    for (bool byTheHost : {false, true}) {
        SetUp();
        FX_StartZemloEdit_UTF16(name16(u"Capo Chords"), FXT_VERSION);
        changeEverything();
        FX_EndZemloEdit(FXT_VERSION);
        doc::Document expected = original_;
        if (byTheHost) {
            doc::put(doc::kMeasure, {9, 0, 0}, {1, 2, 3});
            expected.records[{doc::kMeasure, doc::RecordId{9, 0, 0}}] = {1, 2, 3};
        } else {
            score::ChordRecord c;
            EDataID id{1, 1, 1};  // a chord the edit left alone, now without its onset
            ASSERT_EQ(FX_SaveEData(doc::kChord, &id, &c, 30, FXT_VERSION), 1);
            expected.records[{doc::kChord, doc::RecordId{1, 1, 1}}] =
                *doc::get(doc::kChord, {1, 1, 1});
        }
        EXPECT_TRUE(edits::undo());
        EXPECT_EQ(doc::difference(expected, doc::snapshot()), "");
    }
}

}  // namespace
