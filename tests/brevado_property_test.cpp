// Properties of the capo chord run over random scores: a second run with the
// same settings changes nothing, and a removal then leaves the document as it
// was (but for the measures' text flags).
#include "capo.h"

#include <random>

using namespace testing_support;

namespace {

using BrevadoProperties = CommandTest;
using score::ChordRecord;

struct RandomScore {
    int slots, measures;
    Args args;
};

// Chords with marked bytes and random fields; the sibling keys are unique
// within a staff-measure, so that every chord has at most one capo partner.
RandomScore makeScore(std::mt19937& rng, Args base) {
    auto pick = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    RandomScore r{pick(1, 4), pick(1, 5), base};
    score::Score s(r.slots, r.measures);
    for (int m = 1; m <= r.measures; ++m) {
        for (int staff = 1; staff <= r.slots; ++staff) {
            // Mostly few chords, now and then more than a staff-measure's 16 new ones.
            const int n = pick(0, 9) == 0 ? pick(15, 20) : pick(0, 4);
            for (int i = 0; i < n; ++i) {
                ChordRecord c = chordSymbol(i * 1000 + pick(0, 999), static_cast<int16_t>(pick(-32768, 32767)),
                                            static_cast<uint8_t>(pick(0, 255)),
                                            static_cast<uint16_t>(pick(0, 0xFFFF)));
                c.key1 = static_cast<int16_t>(pick(-3, 3));
                c.key2 = static_cast<int16_t>(pick(-3, 3));
                c.capoBits = static_cast<uint16_t>(pick(0, 0xFFFF) & ~0x0040);
                s.chord(static_cast<int16_t>(staff), static_cast<int16_t>(m), c);
            }
        }
        if (pick(0, 5) == 0) s.chordFlag(static_cast<int16_t>(m), false);  // chords the walk never sees
    }
    r.args.fret = static_cast<short>(pick(1, 63));
    r.args.distance = static_cast<short>(pick(-3000, 3000));
    r.args.chordFlag = pick(0, 1) == 1;
    r.args.showLabel = pick(0, 1) == 1;
    return r;
}

// The document without the measures' text flags, which a removal never clears.
doc::Document withoutTextFlags(doc::Document d) {
    for (auto& rec : d.records)
        if (std::get<0>(rec.first) == doc::kMeasure && rec.second.size() == 30) rec.second[15] &= 0xFE;
    return d;
}

size_t capoChords() {
    size_t n = 0;
    for (const doc::RecordId& id : doc::list(doc::kChord)) {
        ChordRecord c;
        std::memcpy(&c, doc::get(doc::kChord, id)->data(), sizeof c);
        n += c.isCapo() ? 1 : 0;
    }
    return n;
}

// Per score: a run, the same run again (property two), then a removal
// (property one).
TEST_F(BrevadoProperties, RerunChangesNothingAndRemovalRestoresTheDocument) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        hostsim::reset();
        std::mt19937 rng(seed);
        RandomScore r = makeScore(rng, {});
        const doc::Document original = doc::snapshot();
        score::Region region = score::region(1, 1, static_cast<int16_t>(r.slots),
                                             static_cast<int16_t>(r.measures));
        short first = 0, second = 0, removed = 0;
        run(region, r.args, &first);
        const doc::Document once = doc::snapshot();
        EXPECT_EQ(run(region, r.args, &second), first ? 1 : 0);
        EXPECT_EQ(second, first) << "each capo chord updated, none added";
        EXPECT_EQ(doc::difference(once, doc::snapshot()), "");
        Args removal = r.args;
        removal.remove = true;
        EXPECT_EQ(run(region, removal, &removed), first ? 1 : 0);
        EXPECT_EQ(removed, first) << "every capo chord written is deleted again";
        EXPECT_EQ(capoChords(), 0u);
        EXPECT_EQ(doc::difference(withoutTextFlags(original), withoutTextFlags(doc::snapshot())), "");
        ASSERT_FALSE(HasFailure());
    }
}

}  // namespace
