// Runs on random scores: what a run, a second run and a removal do to the
// document, what they cost in host calls, that the same score gives the same
// document and the same host calls in two fresh processes, and that the
// host's Undo takes a run back to the byte.
#include "check.h"
#include "randomscore.h"
#include "session.h"
#include "walkmodel.h"

#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <cerrno>
#include <cstring>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace validate {
namespace {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;
using hostsim::Fx;

constexpr int16_t kLabelHorizontal = -200;

struct RunOutcome {
    int16_t result = 0;
    doc::Document after;
    WalkCost cost;
    size_t displays = 0; // progress displays opened
    size_t notices = 0;  // "nothing changed" alerts
    size_t edits = 0;    // edits opened
    edits::State editState = edits::State::Open;
};

// One run of the command with the dialog answered as `settings` say.
RunOutcome runOnce(Session& s, const RandomScore& sc, const RunSettings& settings,
                   int cancelAt = 0) {
    RunOutcome o;
    doc::clearOps();
    const size_t progressCalls = hostsim::count(Fx::FX_MassEditProgress);
    const size_t displays = ui::progress().size(), alerts = ui::alerts().size(),
                 opened = edits::all().size();
    ui::scriptProgress({cancelAt});
    if (sc.wholeDocument) ui::scriptAlerts({1});
    ui::scriptDialog(sc.dialog(settings));
    const score::Region region = sc.region, whole = sc.whole();
    o.result = s.invoke(sc.wholeDocument ? nullptr : &region, whole);
    o.after = doc::snapshot();
    o.cost.chordLoads = static_cast<long>(doc::countOps(doc::Op::Load, doc::kChord));
    o.cost.chordSaves = static_cast<long>(doc::countOps(doc::Op::Save, doc::kChord));
    o.cost.chordDeletes = static_cast<long>(doc::countOps(doc::Op::Delete, doc::kChord));
    o.cost.progressCalls =
        static_cast<long>(hostsim::count(Fx::FX_MassEditProgress) - progressCalls);
    o.displays = ui::progress().size() - displays;
    for (size_t i = alerts; i < ui::alerts().size(); ++i)
        o.notices += ui::alerts()[i].kind == hostsim::alert::kNotice ? 1 : 0;
    o.edits = edits::all().size() - opened;
    if (o.edits) o.editState = edits::all().back().state;
    return o;
}

WalkInput walkInput(const RandomScore& sc, const RunSettings& settings, int cancelAt = 0) {
    WalkInput in;
    in.region = sc.walked();
    in.staffOf = [&sc](int slot) { return sc.staffOf(slot); };
    in.fret = settings.fret;
    in.offset = static_cast<int16_t>(settings.distance);
    in.showLabel = settings.showLabel;
    in.labelText = !settings.label.empty();
    in.chordFlag = settings.chordFlag;
    in.remove = settings.remove;
    in.cancelAt = cancelAt;
    return in;
}

std::string chordText(const score::ChordRecord& c) {
    char buf[96];
    std::snprintf(buf, sizeof buf, "{keys %d/%d/%d vertical %d flags %04x capo %04x}", c.key1,
                  c.key2, c.key3, c.vertical, c.flags, c.capoBits);
    return buf;
}

// The first staff-measure whose chords differ from the model's, readably.
std::string chordDifference(const ChordMap& want, const ChordMap& got) {
    auto name = [](const StaffMeasure& p) {
        return "staff " + std::to_string(p.first) + ", measure " + std::to_string(p.second);
    };
    for (const auto& [place, list] : want) {
        auto it = got.find(place);
        const size_t n = it == got.end() ? 0 : it->second.size();
        if (n != list.size())
            return name(place) + ": " + std::to_string(n) + " chord records, the walk makes " +
                   std::to_string(list.size());
        for (size_t i = 0; i < n; ++i)
            if (std::memcmp(&list[i], &it->second[i], sizeof list[i]) != 0)
                return name(place) + ", record " + std::to_string(i) + ": " +
                       chordText(it->second[i]) + ", the walk makes " + chordText(list[i]);
    }
    for (const auto& [place, list] : got)
        if (!want.count(place))
            return name(place) + ": " + std::to_string(list.size()) + " chord records appeared";
    return "";
}

// A run against the model: host calls, chord records, result, notice and edit.
void expectAsModelled(Context& cx, const std::string& where, const doc::Document& before,
                      const RunOutcome& o, const WalkPrediction& p) {
    cx.expect(o.cost == p.cost,
              where + ": " + o.cost.describe() + ", the walk makes " + p.cost.describe());
    cx.expect(o.displays == (p.progressShown ? 1u : 0u),
              where + ": " + std::to_string(o.displays) + " progress displays");
    if (o.displays == 1 && p.progressShown) {
        const ui::Progress& shown = ui::progress().back();
        cx.expect(shown.steps == p.steps, where + ": progress over " + std::to_string(shown.steps) +
                                              " steps, not " + std::to_string(p.steps));
        cx.expect(
            shown.ended && (shown.cancelled != 0) == p.cancelled,
            where + ": the progress display ended " +
                (shown.ended ? "with cancelled " + std::to_string(shown.cancelled) : "never"));
    }
    const bool changed = p.changed > 0;
    cx.expect(o.result == (changed ? 1 : 0), where + ": result " + std::to_string(o.result) +
                                                 " after " + std::to_string(p.changed) +
                                                 " chord records changed");
    cx.expect(o.notices == (changed ? 0u : 1u),
              where + ": " + std::to_string(o.notices) + " notices that nothing changed");
    cx.expect(o.edits == 1 &&
                  o.editState == (changed ? edits::State::Committed : edits::State::Cancelled),
              where + ": the edit was not " + (changed ? "committed" : "cancelled"));
    if (!changed) {
        cx.expect(o.after == before, where +
                                         ": a run that changed no chord changed the document: " +
                                         doc::difference(before, o.after));
        return;
    }
    const std::string d = chordDifference(p.chords, chordsOf(o.after));
    cx.expect(d.empty(), where + ": " + d);
}

// Records of any kind but chords that differ between two documents.
std::string otherThanChords(const doc::Document& a, const doc::Document& b) {
    doc::Document x = a, y = b;
    for (doc::Document* d : {&x, &y})
        for (auto it = d->records.begin(); it != d->records.end();)
            it = std::get<0>(it->first) == doc::kChord ? d->records.erase(it) : std::next(it);
    return doc::difference(x, y);
}

size_t measureTextCount(const doc::Document& d, int16_t staff, int16_t measure) {
    size_t n = 0;
    while (d.records.count(
        {doc::kMeasureText, doc::RecordId{staff, measure, static_cast<int16_t>(n)}}))
        ++n;
    return n;
}

// The text label blocks are found by: the bundle's English string.
const std::u16string kLabelSearch = u"Capo";

// What a run that changes no text but may add label blocks leaves, chords
// aside: `b` is `a` with one measure text at the end of a staff's first
// measure per block the label search could not find there, and a text block
// and a raw text for each. Empty when so; else what else changed.
std::string labelBlocksAddedOnly(const RandomScore& sc, const RunSettings& settings,
                                 bool labelWritten, const doc::Document& a,
                                 const doc::Document& b) {
    doc::Document x = a, y = b;
    for (doc::Document* d : {&x, &y})
        for (auto it = d->records.begin(); it != d->records.end();)
            it = std::get<0>(it->first) == doc::kChord ? d->records.erase(it) : std::next(it);
    std::map<int16_t, int> created;
    if (labelWritten) created = labelBlocksCreated(a, walkInput(sc, settings), kLabelSearch);
    const int16_t first = sc.walked().firstMeasure;
    int total = 0;
    for (const auto& [staff, n] : created) {
        int16_t index = 0;
        while (x.records.count({doc::kMeasureText, doc::RecordId{staff, first, index}}))
            ++index;
        for (int k = 0; k < n; ++k, ++index)
            if (!y.records.erase({doc::kMeasureText, doc::RecordId{staff, first, index}}))
                return "no new label block " + std::to_string(k + 1) + " of " + std::to_string(n) +
                       " on staff " + std::to_string(staff);
        total += n;
    }
    for (uint32_t tag : {doc::kTextBlock, doc::kRawText}) {
        int added = 0;
        for (auto it = y.records.begin(); it != y.records.end();) {
            const bool isNew = std::get<0>(it->first) == tag && !x.records.count(it->first);
            added += isNew ? 1 : 0;
            it = isNew ? y.records.erase(it) : std::next(it);
        }
        if (added != total)
            return std::to_string(added) + " new " + doc::tagName(tag) + " records for " +
                   std::to_string(total) + " new label blocks";
    }
    return doc::difference(x, y);
}

// The label on every staff of the region at its first measure: a block at
// the label's place whose text ends with the label. A damaged block the
// search finds there (its text block or raw text gone) cannot take the text.
void expectLabels(Context& cx, const std::string& where, const RandomScore& sc,
                  const RunSettings& settings) {
    const int16_t first = sc.walked().firstMeasure;
    const auto baseline = static_cast<int16_t>(settings.distance + 130);
    const std::u16string label = ui::utf16(settings.label);
    for (int16_t staff : sc.staves()) {
        bool found = false;
        const auto placed = score::measureTexts(staff, first);
        for (const score::MeasureTextRecord& mt : placed) {
            if (mt.horizontal != kLabelHorizontal || mt.vertical != baseline) continue;
            const auto block =
                doc::get(doc::kTextBlock, {static_cast<int16_t>(mt.blockNumber), 0, 0});
            score::TextBlockRecord tb;
            if (block) std::memcpy(&tb, block->data(), sizeof tb);
            const auto text =
                block ? doc::getText(doc::kRawText, {static_cast<int16_t>(tb.rawTextNumber), 0, 0})
                      : std::nullopt;
            found = found || !text ||
                    (text->size() >= label.size() &&
                     text->compare(text->size() - label.size(), label.size(), label) == 0);
        }
        cx.expect(found, where + ": no label block on staff " + std::to_string(staff) +
                             " in measure " + std::to_string(first));
    }
}

// No capo chord left where the removal walked: every staff of the region in
// every measure whose chord flag is set.
void expectNoCapoChords(Context& cx, const std::string& where, const RandomScore& sc,
                        const doc::Document& d) {
    const ChordMap all = chordsOf(d);
    const score::Region w = sc.walked();
    for (int m = w.firstMeasure; m <= w.lastMeasure; ++m) {
        if (!(sc.measureRecords[static_cast<size_t>(m - 1)].chordFlags & score::kMeasureChordFlag))
            continue;
        for (int16_t staff : sc.staves()) {
            auto it = all.find({staff, static_cast<int16_t>(m)});
            if (it == all.end()) continue;
            for (const score::ChordRecord& c : it->second)
                if (!cx.expect(!c.isCapo(), where + ": a capo chord is left at staff " +
                                                std::to_string(staff) + ", measure " +
                                                std::to_string(m)))
                    return;
        }
    }
}

// Run, run again with the same settings, then remove.
void randomRuns(Context& cx) {
    const RandomScore sc = randomScore(cx.random());
    Session s(cx);
    if (!s.start()) return;
    sc.build();
    const std::string about = " (" + sc.describe() + ")";
    const score::Region walked = sc.walked();
    const std::set<int16_t> staves = sc.staves();
    const doc::Document before = doc::snapshot();
    RunSettings settings = sc.settings;

    const WalkPrediction p1 = predictWalk(before, walkInput(sc, settings));
    const RunOutcome first = runOnce(s, sc, settings);
    expectAsModelled(cx, "first run" + about, before, first, p1);
    expectOutsideUnchanged(cx, before, first.after, walked, staves, "first run" + about);
    expectOrdinaryKept(cx, before, first.after, "first run" + about);
    if (p1.changed && p1.labelWritten) {
        expectLabels(cx, "first run" + about, sc, settings);
        const auto created = labelBlocksCreated(before, walkInput(sc, settings), kLabelSearch);
        for (int16_t staff : staves) {
            const size_t had = measureTextCount(before, staff, walked.firstMeasure);
            const size_t has = measureTextCount(first.after, staff, walked.firstMeasure);
            const auto it = created.find(staff);
            const size_t want = had + static_cast<size_t>(it == created.end() ? 0 : it->second);
            cx.expect(has == want, "first run" + about + ": " + std::to_string(has) +
                                       " measure texts on staff " + std::to_string(staff) +
                                       ", not " + std::to_string(want));
        }
    }
    if (p1.changed && !p1.labelWritten)
        cx.expect(otherThanChords(before, first.after).empty(),
                  "first run" + about + " wrote no label but changed " +
                      otherThanChords(before, first.after));
    s.checkHost("first run");

    // A second run updates the capo chords it meets and adds none; it may
    // reach capo chords the first one left alone behind 16 new ones.
    const WalkPrediction p2 = predictWalk(first.after, walkInput(sc, settings));
    const RunOutcome second = runOnce(s, sc, settings);
    expectAsModelled(cx, "second run" + about, first.after, second, p2);
    // Label blocks are found again and rewritten as they are, but where a
    // damaged block comes first the search fails and one more is added.
    const std::string beyondChords = labelBlocksAddedOnly(
        sc, settings, p2.changed && p2.labelWritten, first.after, second.after);
    cx.expect(beyondChords.empty(),
              "second run" + about + " changed more than chords: " + beyondChords);
    if (p2.changed && p2.labelWritten) {
        expectLabels(cx, "second run" + about, sc, settings);
        for (const auto& [staff, n] :
             labelBlocksCreated(first.after, walkInput(sc, settings), kLabelSearch))
            cx.count("label blocks a second run adds behind a damaged one", n);
    }
    expectOrdinaryKept(cx, first.after, second.after, "second run" + about);
    const ChordMap once = chordsOf(first.after), twice = chordsOf(second.after);
    bool sameCounts = once.size() == twice.size();
    for (const auto& [place, list] : once)
        sameCounts = sameCounts && twice.count(place) && twice.at(place).size() == list.size();
    cx.expect(sameCounts, "second run" + about + " added or removed chord records");
    s.checkHost("second run");

    settings.remove = true;
    const WalkPrediction p3 = predictWalk(second.after, walkInput(sc, settings));
    const RunOutcome removal = runOnce(s, sc, settings);
    expectAsModelled(cx, "removal" + about, second.after, removal, p3);
    expectOrdinaryKept(cx, before, removal.after, "removal" + about);
    expectOutsideUnchanged(cx, before, removal.after, walked, staves, "removal" + about);
    expectNoCapoChords(cx, "removal" + about, sc, removal.after);
    s.checkHost("removal");
    s.terminate();
    cx.count("scores");
    cx.count("runs", 3);
    cx.count("walks ended at 16 new capo chords", p1.fullLists + p2.fullLists);
    cx.count("capo chords met", p1.capoChordsMet + p2.capoChordsMet + p3.capoChordsMet);
    if (!sc.slotToStaff.empty()) cx.count("scores with shuffled slots");
}

// Undo: a run and its Undo, a run cancelled at the first progress call, a
// run cancelled halfway (what it changed stays, and Undo takes it back), a
// run that changes nothing, and two runs undone one after the other.
void undoRuns(Context& cx) {
    const RandomScore sc = randomScore(cx.random());
    Session s(cx);
    if (!s.start()) return;
    sc.build();
    const std::string about = " (" + sc.describe() + ")";
    const doc::Document before = doc::snapshot();
    const RunSettings settings = sc.settings;
    auto expectBefore = [&](const std::string& what) {
        const doc::Document now = doc::snapshot();
        cx.expect(now == before, what + about + ": " + doc::difference(before, now));
    };
    auto undoIf = [&](const RunOutcome& o, const std::string& what) {
        if (o.result == 1)
            cx.expect(edits::undo(), what + about + ": nothing to undo after a committed run");
    };

    const RunOutcome run = runOnce(s, sc, settings);
    undoIf(run, "run");
    expectBefore("run and Undo");

    const WalkPrediction none = predictWalk(before, walkInput(sc, settings, 1));
    const RunOutcome atOnce = runOnce(s, sc, settings, 1);
    expectAsModelled(cx, "cancelled at the first step" + about, before, atOnce, none);
    expectBefore("cancelled at the first step");
    cx.count("cancellations");

    const WalkPrediction full = predictWalk(before, walkInput(sc, settings));
    if (full.cost.progressCalls > 1) {
        const int at = cx.between(2, static_cast<int>(full.cost.progressCalls));
        const WalkPrediction part = predictWalk(before, walkInput(sc, settings, at));
        const RunOutcome halfway = runOnce(s, sc, settings, at);
        expectAsModelled(cx, "cancelled at step " + std::to_string(at) + about, before, halfway,
                         part);
        undoIf(halfway, "cancelled at step " + std::to_string(at));
        expectBefore("cancelled at step " + std::to_string(at) + " and Undo");
        cx.count("cancellations");
    }

    // Removal twice: the second finds nothing left to remove.
    RunSettings removal = settings;
    removal.remove = true;
    const RunOutcome removed = runOnce(s, sc, removal);
    const WalkPrediction again = predictWalk(removed.after, walkInput(sc, removal));
    const RunOutcome nothing = runOnce(s, sc, removal);
    cx.expect(again.changed == 0, "the walk model removes capo chords twice" + about);
    expectAsModelled(cx, "second removal" + about, removed.after, nothing, again);
    undoIf(removed, "removal");
    expectBefore("removal and Undo");

    const RunOutcome first = runOnce(s, sc, settings);
    const WalkPrediction rerun = predictWalk(first.after, walkInput(sc, settings));
    const RunOutcome second = runOnce(s, sc, settings);
    const std::string beyondChords = labelBlocksAddedOnly(
        sc, settings, rerun.changed && rerun.labelWritten, first.after, second.after);
    cx.expect(beyondChords.empty(),
              "second run" + about + " changed more than chords: " + beyondChords);
    undoIf(second, "second run");
    const doc::Document afterOne = doc::snapshot();
    cx.expect(afterOne == first.after,
              "Undo of the second run" + about + ": " + doc::difference(first.after, afterOne));
    undoIf(first, "first run");
    expectBefore("two runs and two Undos");
    s.checkHost("");
    s.terminate();
    cx.count("scores");
}

// ---- Two fresh processes ----------------------------------------------------

void putNumber(std::string& out, uint64_t v) {
    out.append(reinterpret_cast<const char*>(&v), sizeof v);
}

std::string serialized(const doc::Document& d) {
    std::string out;
    for (const auto& [key, bytes] : d.records) {
        const auto& [tag, id] = key;
        putNumber(out, tag);
        putNumber(out, (static_cast<uint64_t>(static_cast<uint16_t>(id.first)) << 32) |
                           (static_cast<uint64_t>(static_cast<uint16_t>(id.second)) << 16) |
                           static_cast<uint16_t>(id.third));
        putNumber(out, bytes.size());
        out.append(bytes.begin(), bytes.end());
    }
    for (const auto& [key, bytes] : d.frames) {
        putNumber(out, key.a1);
        putNumber(out, static_cast<uint64_t>(key.a2) ^ (static_cast<uint64_t>(key.a3) << 16) ^
                           (static_cast<uint64_t>(key.a4) << 32) ^
                           (static_cast<uint64_t>(key.a5) << 48));
        out.append(bytes.begin(), bytes.end());
    }
    return out;
}

// Every host call: its name, its arguments but pointers, its result unless a pointer.
std::vector<std::string> trace() {
    std::vector<std::string> out;
    for (const hostsim::Call& c : hostsim::calls()) {
        const hostsim::FxInfo& fx = hostsim::info(c.fx);
        std::string line = fx.name;
        line += '(';
        for (size_t i = 0; i < c.args.size() && i < fx.params.size(); ++i) {
            if (i) line += ',';
            line += fx.params[i] == hostsim::Kind::PTR ? std::string(c.args[i] ? "p" : "null")
                                                       : std::to_string(c.args[i]);
        }
        line += ')';
        if (fx.result != hostsim::Kind::PTR && fx.result != hostsim::Kind::VOID)
            line += '=' + std::to_string(c.result);
        if (c.faulted) line += " faulted";
        out.push_back(line);
    }
    return out;
}

bool writeAll(int fd, const std::string& s) {
    size_t at = 0;
    while (at < s.size()) {
        const ssize_t n = write(fd, s.data() + at, s.size() - at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        at += static_cast<size_t>(n);
    }
    return true;
}

struct Child {
    bool ok = false;
    std::string document;
    std::vector<std::string> calls;
    std::string why;
};

// The score built and run in a process of its own: the bundle loaded anew,
// a run, a second run and a removal. Sends the documents and the call trace.
Child inFreshProcess(Context& cx, const RandomScore& sc) {
    Child out;
    int fds[2];
    if (pipe(fds) != 0) {
        out.why = std::string("pipe: ") + std::strerror(errno);
        return out;
    }
    const pid_t pid = fork();
    if (pid < 0) {
        out.why = std::string("fork: ") + std::strerror(errno);
        close(fds[0]);
        close(fds[1]);
        return out;
    }
    if (pid == 0) {
        // Not to outlive a check the watchdog has killed.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(fds[0]);
        Session s(cx);
        if (!s.start()) _exit(3);
        sc.build();
        // The document after each run: a removal takes away most of what
        // the runs before it wrote.
        RunSettings settings = sc.settings;
        std::string d = serialized(runOnce(s, sc, settings).after);
        d += serialized(runOnce(s, sc, settings).after);
        settings.remove = true;
        d += serialized(runOnce(s, sc, settings).after);
        s.terminate();
        s.checkHost("in a fresh process");
        std::string message;
        putNumber(message, d.size());
        message += d;
        for (const std::string& line : trace())
            message += line + '\n';
        _exit(writeAll(fds[1], message) ? 0 : 4);
    }
    close(fds[1]);
    std::string all;
    char buf[65536];
    for (;;) {
        const ssize_t n = read(fds[0], buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        all.append(buf, static_cast<size_t>(n));
    }
    close(fds[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        out.why = WIFSIGNALED(status)
                      ? "the run died of signal " + std::to_string(WTERMSIG(status))
                      : "the run exited with " + std::to_string(WEXITSTATUS(status));
        return out;
    }
    uint64_t size = 0;
    if (all.size() < sizeof size) {
        out.why = "the run sent nothing";
        return out;
    }
    std::memcpy(&size, all.data(), sizeof size);
    if (all.size() < sizeof size + size) {
        out.why = "the run sent a cut document";
        return out;
    }
    out.document = all.substr(sizeof size, size);
    size_t at = sizeof size + size;
    while (at < all.size()) {
        size_t end = all.find('\n', at);
        if (end == std::string::npos) end = all.size();
        out.calls.push_back(all.substr(at, end - at));
        at = end + 1;
    }
    out.ok = true;
    return out;
}

void determinism(Context& cx) {
    const RandomScore sc = randomScore(cx.random());
    const std::string about = " (" + sc.describe() + ")";
    const Child a = inFreshProcess(cx, sc);
    const Child b = inFreshProcess(cx, sc);
    if (!cx.expect(a.ok && b.ok, "first process: " + a.why + "; second process: " + b.why)) return;
    cx.expect(a.document == b.document, "two processes made different documents" + about);
    cx.expect(!a.calls.empty(), "no host call was traced" + about);
    if (a.calls != b.calls) {
        size_t i = 0;
        while (i < a.calls.size() && i < b.calls.size() && a.calls[i] == b.calls[i])
            ++i;
        cx.fail("the host calls differ at call " + std::to_string(i + 1) + ": " +
                (i < a.calls.size() ? a.calls[i] : "(none)") + " against " +
                (i < b.calls.size() ? b.calls[i] : "(none)") + about);
    }
    cx.count("scores");
    cx.count("host calls compared", static_cast<long>(a.calls.size()));
}

} // namespace

void addScoreChecks(const Plan& plan, Checks& out) {
    const int scores = byLevel(plan, 20, 2500);
    for (int n = 1; n <= scores; ++n)
        out.push_back({"random/" + std::to_string(n), randomRuns});
    const int pairs = byLevel(plan, 3, 200);
    for (int n = 1; n <= pairs; ++n)
        out.push_back({"determinism/" + std::to_string(n), determinism});
    const int undos = byLevel(plan, 10, 600);
    for (int n = 1; n <= undos; ++n)
        out.push_back({"undo/" + std::to_string(n), undoRuns});
}

} // namespace validate
