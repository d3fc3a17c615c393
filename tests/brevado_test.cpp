// The capo chord run through the simulated host: what the validator's walk
// model does not pin down (sibling distances, the fret's range, deletes in a
// row, the label's font, failed and short loads), each checked against the
// whole document afterwards.
#include "capo.h"

using hostsim::Fx;
using hostsim::doc::Op;
using namespace testing_support;

namespace {

using Brevado = CommandTest;
using score::ChordRecord;

// ---- Writing -------------------------------------------------------------

// A capo chord takes the distance from its last sibling in index order, or
// the distance itself when its source was deleted (one sibling key apart).
TEST_F(Brevado, CapoChordTakesItsLastSiblingsDistanceOrTheDistanceItself) {
    const ChordRecord a = chordSymbol(0, 40);
    ChordRecord twin = a;
    twin.vertical = 500;
    ChordRecord key1 = a, key2 = a, key3 = a;
    key1.key1 = static_cast<int16_t>(a.key1 + 1);
    key2.key2 = static_cast<int16_t>(a.key2 + 1);
    key3.key3 = a.key3 + 1;
    struct Case {
        const char* what;
        ChordRecord source;
        bool twin;
        int16_t vertical;
    };
    const Case cases[] = {{"key 1 apart", key1, false, 64}, {"key 2 apart", key2, false, 64},
                          {"key 3 apart", key3, false, 64}, {"last of two", a, true, 564}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        hostsim::reset();
        score::Score s(1, 1);
        const ChordRecord capo = capoOf(c.source, 2, 999, false);
        s.chord(1, 1, a).chord(1, 1, capo);
        if (c.twin) s.chord(1, 1, twin);
        Expected e{doc::snapshot()};
        e.chord(1, 1, 1, capoOf(capo, 3, c.vertical, false));
        short count = 0;
        EXPECT_EQ(run(s.whole(), {}, &count), 1);
        EXPECT_EQ(count, 1) << "an ordinary chord met before a capo chord gets none";
        EXPECT_DOCUMENT(e);
    }
}

// ---- Arguments -----------------------------------------------------------

TEST_F(Brevado, FretOutsideOneToSixtyThreeOrNoRegionDoesNothing) {
    struct Case {
        short fret;
        bool remove, region;
        short result;
    };
    const Case cases[] = {{0, false, true, 0},  {64, false, true, 0}, {-1, false, true, 0},
                          {0, true, true, 0},   {3, false, false, 0}, {1, false, true, 1},
                          {63, false, true, 1}, {63, true, true, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE("fret " + std::to_string(c.fret) + (c.remove ? " removal" : "") +
                     (c.region ? "" : " null region"));
        hostsim::reset();
        score::Score s(1, 1);
        const ChordRecord a = chordSymbol(0, 5);
        s.chord(1, 1, a);
        if (c.remove) s.chord(1, 1, capoOf(a, 2, 69, false));
        Expected e{doc::snapshot()};
        if (c.result && c.remove) e.erase(doc::kChord, {1, 1, 1});
        else if (c.result) e.chord(1, 1, 1, capoOf(a, c.fret, 69, false));
        Args args = c.remove ? Args::removal() : Args{};
        args.fret = c.fret;
        score::Region r = s.whole();
        short count = 0;
        EXPECT_EQ(run(c.region ? &r : nullptr, args, &count), c.result);
        EXPECT_EQ(count, c.result);
        EXPECT_DOCUMENT(e);
        EXPECT_EQ(hostsim::calls().empty(), !c.result) << "no progress display, no string, no record";
    }
}

// ---- Removal -------------------------------------------------------------

TEST_F(Brevado, RemovalDeletesCapoChordsInARowAndLeavesOrdinaryOnes) {
    score::Score s(2, 2);
    const ChordRecord a = chordSymbol(0, 10), b = chordSymbol(240, 20, 0x21), c = chordSymbol(480, 30, 0x31);
    s.chord(1, 1, a).chord(1, 1, b).chord(1, 1, capoOf(a, 3, 74, false)).chord(1, 1, capoOf(b, 3, 84, true));
    s.chord(2, 2, capoOf(c, 5, 0, false)).chord(2, 2, capoOf(c, 5, 1, false)).chord(2, 2, c);
    Expected e{doc::snapshot()};
    e.erase(doc::kChord, {1, 1, 2});
    e.erase(doc::kChord, {1, 1, 3});
    e.erase(doc::kChord, {2, 2, 1});
    e.erase(doc::kChord, {2, 2, 2});
    e.chord(2, 2, 0, c);
    short count = 0;
    EXPECT_EQ(run(s.whole(), Args::removal(), &count), 1);
    EXPECT_EQ(count, 4);
    EXPECT_DOCUMENT(e);
}

// ---- Label blocks --------------------------------------------------------

TEST_F(Brevado, LabelFontComesFromDefinitionFourteenOrTimesNewRoman) {
    struct Case {
        const char* what;
        std::vector<uint8_t> definition;  // empty: the document has none
        std::u16string expected;
    };
    auto def = [](uint16_t font, int16_t size, uint16_t effects) {
        std::vector<uint8_t> b(6);
        std::memcpy(&b[0], &font, 2);
        std::memcpy(&b[2], &size, 2);
        std::memcpy(&b[4], &effects, 2);
        return b;
    };
    const Case cases[] = {
        {"no definition: Times New Roman 12", {}, labelText(u"Times New Roman", 7, 2, 12, u"Capo 3")},
        {"definition 14 with effect 0x0002 added", def(5, 10, 0x0001), labelText(u"Arial", -3, 3, 10, u"Capo 3")},
        {"definition 14 with the effect already", def(5, 14, 0x0102), labelText(u"Arial", -3, 0x0102, 14, u"Capo 3")},
        {"a short definition replaces only what it holds", {5, 0}, labelText(u"Arial", -3, 2, 12, u"Capo 3")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        hostsim::reset();
        score::addFont(3, u"Times New Roman", 7);
        score::addFont(5, u"Arial", -3);
        if (!c.definition.empty()) doc::put(doc::kFontDefinition, {14, 0, 0}, c.definition);
        doc::put(doc::kFontDefinition, {13, 0, 0}, def(3, 99, 0x10));  // not ours
        score::Score s(1, 1);
        s.chord(1, 1, chordSymbol(0, 10));
        EXPECT_EQ(run(s.whole(), Args::labelled()), 1);
        EXPECT_EQ(score::texts(1, 1), std::vector<std::u16string>{c.expected});
    }
}

// ---- Host failures -------------------------------------------------------

// A chord load that fails cuts a sibling search short, so it counts fewer
// records than the staff-measure holds. Whichever load fails, the copies
// appended afterwards go past the last record, never onto one: every chord
// stays where it was, and what follows it is capo chords, each one counted.
TEST_F(Brevado, FailedChordLoadNeverPutsACopyOverAChord) {
    for (int chords : {3, 17}) {
        int loads = 0; // the chord loads of the run without a failure
        for (int failing = 0; failing == 0 || failing <= loads; ++failing) {
            SCOPED_TRACE(std::to_string(chords) + " chords, chord load " + std::to_string(failing) +
                         " failing");
            hostsim::reset();
            score::Score s(1, 1);
            std::vector<ChordRecord> source;
            for (int i = 0; i < chords; ++i) {
                source.push_back(
                    chordSymbol(240 * i, static_cast<int16_t>(10 * i), static_cast<uint8_t>(i)));
                s.chord(1, 1, source.back());
            }
            int seen = 0;
            hostsim::setHandler(Fx::FX_LoadEData, [&](hostsim::Call& call) -> uint64_t {
                if (static_cast<uint32_t>(call.args[0]) == doc::kChord && ++seen == failing)
                    return 0;
                return hostsim::doc::serve(call);
            });
            short count = 0;
            run(s.whole(), {}, &count);
            const std::vector<ChordRecord> after = score::chords(1, 1);
            if (failing == 0) {
                loads = seen;
                ASSERT_EQ(after.size(), static_cast<size_t>(chords + std::min(chords, 16)));
                continue;
            }
            ASSERT_GE(after.size(), source.size());
            for (size_t i = 0; i < source.size(); ++i)
                EXPECT_EQ(bytesOf(after[i]), bytesOf(source[i]))
                    << "chord " << i << " was overwritten";
            for (size_t i = source.size(); i < after.size(); ++i)
                EXPECT_TRUE(after[i].isCapo()) << i;
            EXPECT_EQ(count, static_cast<short>(after.size() - source.size()));
        }
    }
}

// A chord record the host answers shorter than a whole record reads as its
// bytes followed by zeros, never as what the record before it left behind:
// here an ordinary chord cut short after a capo chord stays as it is.
TEST_F(Brevado, ShortChordRecordReadsAsItsOwnBytesOnly) {
    for (size_t length : {size_t{0}, size_t{10}, size_t{23}}) {
        SCOPED_TRACE("record of " + std::to_string(length) + " bytes");
        hostsim::reset();
        score::Score s(1, 1);
        const ChordRecord a = chordSymbol(0, 40), b = chordSymbol(240, 20, 0x21);
        s.chord(1, 1, a).chord(1, 1, capoOf(a, 1, 0, false));
        std::vector<uint8_t> cut = bytesOf(b);
        cut.resize(length);
        doc::put(doc::kChord, {1, 1, 2}, cut);
        Expected e{doc::snapshot()};
        e.chord(1, 1, 1, capoOf(a, 3, 104, false));
        short count = 0;
        EXPECT_EQ(run(s.whole(), {}, &count), 1);
        EXPECT_EQ(count, 1);
        EXPECT_DOCUMENT(e);
    }
}

}  // namespace
