// Runs on scores the host got wrong: texts without terminators, records
// pointing nowhere, staff-measures full of chords, regions reversed or out
// of range, measure records short or missing. Each case checks the host's
// record of faults, the ordinary chords and everything outside the region,
// and what the command does with such data.
#include "check.h"
#include "outcome.h"
#include "session.h"

#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <climits>
#include <cstring>
#include <functional>

namespace validate {
namespace {

namespace ui = hostsim::ui;

// A chord symbol whose own bytes are marked, so that a capo chord is seen to
// copy them.
// A run that must change chords: it answers 1, leaves the host nothing to
// hold against the plug-in and keeps every ordinary chord. The document after it.
doc::Document changingRun(Context& cx, Session& s, const score::Region& region, const hostsim::driver::Answers& o,
                          const doc::Document& original, const std::string& where) {
    const int16_t result = s.run(o, &region, region);
    s.checkHost(where);
    const doc::Document after = doc::snapshot();
    cx.expect(result == 1, where + ": the run answered " + std::to_string(result));
    expectOrdinaryKept(cx, original, after, where);
    return after;
}

score::ChordRecord symbol(int32_t key3, int16_t vertical) { return markedChord(key3, vertical, key3); }

hostsim::driver::Answers writing(const std::string& capo = "", const std::string& distance = "") {
    hostsim::driver::Answers o;
    o.capo = capo;
    o.distance = distance;
    return o;
}

// Fails unless `after` is `original` but for text flags set in measure records.
void expectRestored(Context& cx, const doc::Document& original, const doc::Document& after,
                    const std::string& where) {
    auto withoutTextFlags = [](doc::Document d) {
        for (auto& [key, bytes] : d.records)
            if (std::get<0>(key) == doc::kMeasure && bytes.size() > 15)
                bytes[15] &= 0xFE; // 0x0100 of the word at 14
        return d;
    };
    const doc::Document a = withoutTextFlags(original), b = withoutTextFlags(after);
    cx.expect(a == b, where + ": the score was not restored: " + doc::difference(a, b));
}

hostsim::driver::Answers removal() {
    hostsim::driver::Answers o;
    o.remove = true;
    return o;
}

// One run on `region`, checked as the run of a fresh score; the document after it.
doc::Document freshRun(Context& cx, Session& s, const score::Region& region, const Confirmed& c,
                       const std::string& where) {
    const doc::Document before = doc::snapshot();
    hostsim::driver::Answers o = writing(c.fret == 1 ? "" : std::to_string(c.fret),
                                  c.distance == 64 ? "" : std::to_string(c.distance));
    o.noLabel = !c.showLabel;
    const int16_t result = s.run(o, &region, region);
    const doc::Document after = doc::snapshot();
    expectFreshRun(cx, before, after, c, region, result, where);
    s.checkHost(where);
    return after;
}

// ---- Texts the host hands over without a terminator -----------------------

std::u16string units(size_t n, char16_t u) {
    return std::u16string(n, u);
}

struct RawTextCase {
    const char* name;
    std::u16string text; // the raw text of a user's block at staff 1, measure 1
    bool found;          // the search recognises it as the label by its text
};

void rawTextRun(Context& cx, const RawTextCase& k) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(1, 2);
    sc.chord(1, 1, symbol(0, 10)).chord(1, 2, symbol(480, -12));
    sc.textBlock(1, 1, 0, 50, k.text);
    const score::Region region = sc.whole();
    const doc::Document original = doc::snapshot();
    const Confirmed c;
    if (!k.found) {
        freshRun(cx, s, region, c, "writing");
    } else {
        // The user's block is taken for the label: moved and rewritten in place.
        const doc::Document after = changingRun(cx, s, region, writing(), original, "writing");
        const std::vector<Block> was = blocksIn(original, 1, 1), is = blocksIn(after, 1, 1);
        if (cx.expect(is.size() == 1,
                      std::to_string(is.size()) + " blocks at staff 1, measure 1, not 1")) {
            cx.expect(is[0].horizontal == -200 && is[0].vertical == baselineOf(64) &&
                          is[0].blockNumber == was[0].blockNumber,
                      "the user's block was not moved to the label's place");
            cx.expect(is[0].text && *is[0].text == c.text(),
                      "the user's block does not read the label");
        }
        cx.expect(chordsIn(after, 1, 1).size() == 2 && chordsIn(after, 1, 2).size() == 2,
                  "the chords did not get their capo chords");
    }
    // Removal takes the capo chords and the label block back out, and keeps
    // a block that is not the label.
    const doc::Document after = changingRun(cx, s, region, removal(), original, "removal");
    cx.expect(chordsIn(after, 1, 1).size() == 1 && chordsIn(after, 1, 2).size() == 1,
              "the removal left capo chords");
    const std::vector<Block> left = blocksIn(after, 1, 1);
    if (k.found) {
        cx.expect(left.empty(), "the removal left " + std::to_string(left.size()) + " blocks");
    } else {
        cx.expect(after == original,
                  "the removal did not restore the score: " + doc::difference(original, after));
    }
}

// ---- Font name records without a terminator -------------------------------

void fontNameRun(Context& cx, size_t recordBytes) {
    Session s(cx);
    if (!s.start()) return;
    score::Score sc(1, 1);
    sc.chord(1, 1, symbol(0, 10));
    // "Times New Roman" is unknown here, so the label is written in font 0,
    // whose name record has no zero unit anywhere.
    std::vector<uint8_t> rec(recordBytes, 0);
    for (size_t i = 0; i + 1 < rec.size(); i += 2) {
        rec[i] = 'F';
        rec[i + 1] = 0;
    }
    const int16_t nameValue = -5;
    std::memcpy(rec.data(), &nameValue, sizeof nameValue);
    doc::put(doc::kFontName, {0, 0, 0}, rec);
    const score::Region region = sc.whole();
    Confirmed c;
    c.font = fontCommand(units(511, u'F'), nameValue);
    freshRun(cx, s, region, c, "first run");
    // At another distance the label is searched by its text, which the font
    // command has pushed past the 256 units read: not found, so a second
    // label is written at the new place and the first one stays.
    const int16_t result = s.run(writing("", "20"), &region, region);
    s.checkHost("second run");
    cx.expect(result == 1, "the second run answered " + std::to_string(result));
    const std::vector<Block> blocks = blocksIn(doc::snapshot(), 1, 1);
    if (cx.expect(blocks.size() == 2,
                  std::to_string(blocks.size()) + " blocks after the second run, not 2")) {
        cx.expect(blocks[0].vertical == baselineOf(64) && blocks[0].text &&
                      *blocks[0].text == c.text(),
                  "the first run's label changed");
        cx.expect(blocks[1].horizontal == -200 && blocks[1].vertical == baselineOf(20) &&
                      blocks[1].text && *blocks[1].text == c.text(),
                  "the second run's label is not the same text at the new place");
    }
}

// ---- Measure texts and blocks that point nowhere -------------------------

enum class Dangling { Block, RawText };

// A user's measure text whose block (or raw text) is missing sits first in
// staff 1, measure 1: the search ends there, so each writing run adds a
// label and removal finds none.
void danglingRun(Context& cx, Dangling what, bool atLabelPlace) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(1, 2);
    sc.chord(1, 1, symbol(0, 10)).chord(1, 2, symbol(96, 0));
    score::MeasureTextRecord mt;
    mt.horizontal = atLabelPlace ? -200 : 0;
    mt.vertical = atLabelPlace ? baselineOf(64) : 0;
    mt.blockNumber = 41;
    if (what == Dangling::RawText) {
        score::TextBlockRecord tb;
        tb.rawTextNumber = 77;
        doc::putAs(doc::kTextBlock, {41, 0, 0}, tb);
    }
    doc::putAs(doc::kMeasureText, {1, 1, 0}, mt);
    const score::Region region = sc.whole();
    const doc::Document original = doc::snapshot();
    if (!atLabelPlace) {
        freshRun(cx, s, region, Confirmed{}, "writing");
    } else {
        // Found by its place, it cannot be updated: nothing is added either.
        const doc::Document after = changingRun(cx, s, region, writing(), original, "writing");
        const std::vector<Block> is = blocksIn(after, 1, 1);
        cx.expect(is.size() == 1 && !is[0].text && is[0].horizontal == -200,
                  "the dangling block at the label's place was not left as the only block");
        cx.expect(chordsIn(after, 1, 1).size() == 2,
                  "staff 1, measure 1 did not get its capo chord");
    }
    const size_t blocksBefore = blocksIn(doc::snapshot(), 1, 1).size();
    const doc::Document after = changingRun(cx, s, region, removal(), original, "removal");
    cx.expect(chordsIn(after, 1, 1).size() == 1 && chordsIn(after, 1, 2).size() == 1,
              "the removal left capo chords");
    cx.expect(blocksIn(after, 1, 1).size() == blocksBefore,
              "the removal got past a block it cannot read: " +
                  std::to_string(blocksIn(after, 1, 1).size()) + " blocks, " +
                  std::to_string(blocksBefore) + " before");
    cx.expect(doc::get(doc::kMeasureText, {1, 1, 0}) ==
                  original.records.at({doc::kMeasureText, {1, 1, 0}}),
              "the dangling measure text changed");
}

// ---- Staff-measures at and past the 16 capo chords of one walk ----------

// n ordinary chords in one staff-measure, no label. The first run adds capo
// chords for the first 16. A second run reads on until its list of new capo
// chords is full again: below 32 chords it reaches the capo chords and
// updates them, from 32 on it stops at chord 32 and adds capo chords for
// chords 16 to 31 instead.
void manyChordsRun(Context& cx, int n) {
    Session s(cx);
    if (!s.start()) return;
    score::Score sc(1, 1);
    for (int i = 0; i < n; ++i)
        sc.chord(1, 1, symbol(i * 10, static_cast<int16_t>(i)));
    const score::Region region = sc.whole();
    const doc::Document original = doc::snapshot();
    Confirmed c;
    c.showLabel = false;
    freshRun(cx, s, region, c, "first run");

    const doc::Document before = doc::snapshot();
    hostsim::driver::Answers again = writing("5", "20");
    again.noLabel = true;
    const int16_t result = s.run(again, &region, region);
    s.checkHost("second run");
    const doc::Document after = doc::snapshot();
    cx.expect(result == 1, "the second run answered " + std::to_string(result));
    expectOrdinaryKept(cx, before, after, "second run");
    const std::vector<score::ChordRecord> was = chordsIn(before, 1, 1), is = chordsIn(after, 1, 1);
    std::vector<score::ChordRecord> want = was;
    if (n < 32) {
        for (int i = 0; i < 16 && i < n; ++i)
            want[static_cast<size_t>(n + i)] = capoOf(was[static_cast<size_t>(i)], 5, 20, false);
    } else {
        for (int i = 16; i < 32; ++i)
            want.push_back(capoOf(was[static_cast<size_t>(i)], 5, 20, false));
    }
    bool same = is.size() == want.size();
    for (size_t i = 0; same && i < is.size(); ++i)
        same = std::memcmp(&is[i], &want[i], sizeof is[i]) == 0;
    cx.expect(same, "after the second run " + std::to_string(n) + " chords hold " +
                        std::to_string(is.size()) + " records, not the " +
                        std::to_string(want.size()) + " expected, or one differs");

    // Removal reads past any number of chords and deletes every capo chord.
    const int16_t removed = s.run(removal(), &region, region);
    s.checkHost("removal");
    cx.expect(removed == 1, "the removal answered " + std::to_string(removed));
    cx.expect(doc::snapshot() == original, "the removal did not restore the score: " +
                                               doc::difference(original, doc::snapshot()));
}

// ---- Regions the host got wrong -------------------------------------------

struct RegionCase {
    const char* name;
    int16_t firstSlot, firstMeasure, lastSlot, lastMeasure;
};

void regionRun(Context& cx, const RegionCase& k) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(2, 3);
    sc.chord(1, 1, symbol(0, 10)).chord(1, 1, symbol(240, 10)).chord(2, 2, symbol(0, -30));
    sc.chord(1, 3, symbol(120, 0)).chord(2, 3, symbol(360, 5));
    // And one in the last measure a score can have, which a walk up to it must reach.
    sc.chord(2, INT16_MAX, symbol(600, 1));
    score::Region region = score::region(k.firstSlot, k.firstMeasure, k.lastSlot, k.lastMeasure);
    // The positions inside the measures never narrow the walk.
    region.firstPosition = INT32_MAX;
    region.lastPosition = INT32_MIN;
    // The first field is the host's, handed back to it unchanged with every slot.
    region.slotField = 0xBEEF;
    const doc::Document original = doc::snapshot();
    const doc::Document written = freshRun(cx, s, region, Confirmed{}, k.name);
    for (const hostsim::Call& call : hostsim::calls())
        if (call.fx == hostsim::Fx::FX_SlotToInst &&
            !cx.expect(static_cast<uint16_t>(call.args[1]) == 0xBEEF,
                       "FX_SlotToInst got the first field " +
                           std::to_string(static_cast<uint16_t>(call.args[1]))))
            break;
    // Removal over the same region takes out all the run wrote; measures keep their text flag.
    const int16_t removed = s.run(removal(), &region, region);
    s.checkHost("removal");
    cx.expect(removed == (written == original ? 0 : 1),
              "the removal answered " + std::to_string(removed));
    expectRestored(cx, original, doc::snapshot(), "removal");
}

// The largest region there is, cancelled by the user: the walk stops at the
// cancel and the run changes nothing.
void hugeRegionCancelled(Context& cx) {
    Session s(cx);
    if (!s.start()) return;
    score::Score sc(2, 3);
    sc.chord(1, 1, symbol(0, 10));
    const score::Region region = score::region(INT16_MIN, INT16_MIN, INT16_MAX, INT16_MAX);
    const int cancelAt = byLevel(cx.plan(), 500, 20000);
    ui::scriptProgress({cancelAt});
    const doc::Document before = doc::snapshot();
    const int16_t result = s.run(writing(), &region, sc.whole());
    s.checkHost("");
    cx.expect(result == 0, "the cancelled run answered " + std::to_string(result));
    cx.expect(doc::snapshot() == before,
              "the cancelled run changed " + doc::difference(before, doc::snapshot()));
    if (cx.expect(ui::progress().size() == 1,
                  std::to_string(ui::progress().size()) + " progress displays")) {
        const ui::Progress& p = ui::progress()[0];
        cx.expect(p.calls.size() == static_cast<size_t>(cancelAt),
                  std::to_string(p.calls.size()) + " progress calls for a cancel at " +
                      std::to_string(cancelAt));
        cx.expect(p.ended && p.cancelled == 1, "the progress display was not ended as cancelled");
    }
    cx.count("cancellations");
}

// ---- Measure records short or missing -------------------------------------

struct MeasureCase {
    const char* name;
    int16_t measure; // whose record is cut
    int bytes;       // its length now; -1: removed
};

void measureRun(Context& cx, const MeasureCase& k) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(1, 3);
    sc.chord(1, 1, symbol(0, 10)).chord(1, 2, symbol(96, 20)).chord(1, 3, symbol(192, 30));
    // Every byte of the record marked, the two flag words as the score set them.
    auto rec = *doc::get(doc::kMeasure, {k.measure, 0, 0});
    for (size_t i = 0; i < rec.size(); ++i)
        if (i != 14 && i != 15 && i != 20 && i != 21) rec[i] = static_cast<uint8_t>(0xC0 + i);
    if (k.bytes < 0) {
        doc::erase(doc::kMeasure, {k.measure, 0, 0});
    } else {
        rec.resize(static_cast<size_t>(k.bytes));
        doc::put(doc::kMeasure, {k.measure, 0, 0}, rec);
    }
    freshRun(cx, s, sc.whole(), Confirmed{}, k.name);
}

struct Case {
    std::string name;
    std::function<void(Context&)> run;
};

std::vector<Case> cases() {
    std::vector<Case> out;
    const RawTextCase texts[] = {
        {"raw-text-256-units", units(256, u'x'), false},
        {"raw-text-label-past-256", units(256, u'x') + u"Capo", false},
        {"raw-text-label-across-256", units(253, u'x') + u"Capo", false},
        {"raw-text-label-ends-at-256", units(252, u'x') + u"Capo", true},
        {"raw-text-4000-units", units(4000, u'C'), false},
    };
    for (const RawTextCase& k : texts)
        out.push_back({k.name, [k](Context& cx) { rawTextRun(cx, k); }});
    out.push_back({"font-name-1036-bytes", [](Context& cx) { fontNameRun(cx, 1036); }});
    out.push_back({"font-name-4000-bytes", [](Context& cx) { fontNameRun(cx, 4000); }});
    out.push_back({"measure-text-without-block",
                   [](Context& cx) { danglingRun(cx, Dangling::Block, false); }});
    out.push_back(
        {"block-without-raw-text", [](Context& cx) { danglingRun(cx, Dangling::RawText, false); }});
    out.push_back({"block-without-raw-text-at-label",
                   [](Context& cx) { danglingRun(cx, Dangling::RawText, true); }});
    for (int n : {16, 17, 31, 32, 40, 200})
        out.push_back({"chords-" + std::to_string(n), [n](Context& cx) { manyChordsRun(cx, n); }});
    const RegionCase regions[] = {
        {"region-measures-reversed", 1, 3, 2, 1},
        {"region-slots-reversed", 2, 1, 1, 3},
        {"region-both-reversed", 2, 3, 1, 1},
        {"region-negative", -2, -3, -1, -1},
        {"region-zero", 0, 0, 0, 0},
        {"region-across-zero", -1, -1, 1, 1},
        {"region-at-32767", INT16_MAX, INT16_MAX, INT16_MAX, INT16_MAX},
        {"region-measures-to-32767", 1, 1, 2, INT16_MAX},
        {"region-slots-beyond-score", 3, 1, 5, 3},
        {"region-slots-across-end", 2, 1, 4, 3},
    };
    for (const RegionCase& k : regions)
        out.push_back({k.name, [k](Context& cx) { regionRun(cx, k); }});
    out.push_back({"region-everything-cancelled", hugeRegionCancelled});
    const MeasureCase measures[] = {
        {"measure-record-22-bytes", 2, 22},       {"measure-record-20-bytes", 2, 20},
        {"measure-record-first-10-bytes", 1, 10}, {"measure-record-first-missing", 1, -1},
        {"measure-record-missing", 2, -1},
    };
    for (const MeasureCase& k : measures)
        out.push_back({k.name, [k](Context& cx) { measureRun(cx, k); }});
    return out;
}

} // namespace

void addHostileChecks(const Plan&, Checks& out) {
    for (Case& c : cases()) {
        auto run = c.run;
        out.push_back({"hostile/" + c.name, [run](Context& cx) {
                           run(cx);
                           cx.count("hostile cases");
                       }});
    }
}

} // namespace validate
