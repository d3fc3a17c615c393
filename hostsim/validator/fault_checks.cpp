// Host calls that fail, and users who cancel.
//
// fault: a few reference runs of the command, each repeated with one host
// call failing (answering 0 or null without running): every function the run
// calls, at its first, a middle and its last call, and at higher levels at
// more of its calls. Which functions a run calls, and how often, is found by
// running it once in a child process of its own when the checks are listed.
//
// cancel: runs stopped at every step of the host's progress display, first
// runs and removal runs, compared with the same run left to finish.
#include "check.h"
#include "session.h"

#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace validate {
namespace {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;
using hostsim::Fx;

// ---- Scores ---------------------------------------------------------------

score::ChordRecord chordSymbol(int32_t key3, int16_t vertical) { return markedChord(key3, vertical); }

// Four staves and six measures; the runs select staves 1 to 3 of measures 2
// to 5, so staff 4 and measures 1 and 6 are outside. Inside: two chords in
// one staff-measure, one in another, three in a third, measure 4 without
// chords, an unrelated text block where the label goes, and the document's
// font definition 14. Outside: chords and a block that reads like a label.
void buildReferenceScore() {
    score::Score sc(4, 6);
    sc.chord(1, 2, chordSymbol(100, 40)).chord(1, 2, chordSymbol(101, 44));
    sc.chord(2, 3, chordSymbol(102, -12));
    sc.chord(3, 5, chordSymbol(103, 0))
        .chord(3, 5, chordSymbol(104, 8))
        .chord(3, 5, chordSymbol(105, 16));
    sc.chord(4, 3, chordSymbol(106, 20));
    sc.chord(1, 1, chordSymbol(107, 20));
    sc.chord(2, 6, chordSymbol(108, 20));
    sc.textBlock(1, 2, 0, 50, u"Verse");
    sc.textBlock(4, 2, -200, 194, u"Capo 7");
    score::addFont(3, u"Times New Roman", 0x2A);
    score::setFontDefinition(14, 3, 12, 0);
}

const score::Region kSelection = score::region(1, 2, 3, 5);
const score::Region kWhole = score::region(1, 1, 4, 6);

hostsim::driver::Answers labelled(const std::string& capo, const std::string& distance) {
    hostsim::driver::Answers o;
    o.capo = capo;
    o.distance = distance;
    o.label = "Capo " + capo;
    o.setLabel = true;
    return o;
}

// ---- Reference runs for the faults ---------------------------------------

struct Scenario {
    const char* name;
    bool priorRun;             // an unfaulted first run before the one under test
    hostsim::driver::Answers answers; // the run under test
    int16_t result;            // what it answers when no call fails
};

std::vector<Scenario> scenarios() {
    std::vector<Scenario> out;
    hostsim::driver::Answers first = labelled("3", "12");
    first.unit = "points"; // 48 EVPU; the unit preference is read
    first.chordFlag = true;
    out.push_back({"first-run", false, first, 1});
    hostsim::driver::Answers again = labelled("5", "96");
    out.push_back({"re-run", true, again, 1});
    hostsim::driver::Answers removal;
    removal.remove = true;
    out.push_back({"removal", true, removal, 1});
    // Nothing selected, the question answered OK; a removal that finds the
    // label-like block but no capo chord, so the notice shows and the edit is
    // cancelled.
    hostsim::driver::Answers whole;
    whole.remove = true;
    whole.wholeDocument = true;
    out.push_back({"nothing-selected", false, whole, 0});
    return out;
}

const hostsim::driver::Answers& priorAnswers() {
    static const hostsim::driver::Answers o = [] {
        hostsim::driver::Answers p = labelled("3", "64");
        p.chordFlag = true;
        return p;
    }();
    return o;
}

// Everything a run left behind, for judging it.
struct RunTrace {
    int16_t result = 0;
    doc::Document before, after;
    std::vector<hostsim::Call> calls; // the run's calls only
    size_t firstEdit = 0;             // edits::all() index of the run's first edit
    size_t firstProgress = 0;
    std::set<Fx> faulted;
    bool faults(Fx fx) const { return faulted.count(fx) > 0; }
};

// Sets up the scenario's score in a started session, runs what comes before
// the run under test, then the run under test with `arm` called just before
// it. False when the session could not start or the prior run went wrong.
bool runScenario(Context& cx, Session& s, const Scenario& sc, RunTrace& t,
                 const std::function<void()>& arm) {
    if (!s.start()) return false;
    buildReferenceScore();
    if (sc.priorRun) {
        const int16_t r = s.run(priorAnswers(), &kSelection, kWhole);
        s.checkHost("the first run before the one under test");
        if (!cx.expect(r == 1,
                       "the first run before the one under test answered " + std::to_string(r)))
            return false;
    }
    hostsim::driver::setUnitByName(sc.answers.unit); // the user's preference, before the run
    t.before = doc::snapshot();
    t.firstEdit = edits::all().size();
    t.firstProgress = ui::progress().size();
    const size_t firstCall = hostsim::calls().size();
    arm();
    t.result = s.run(sc.answers, &kSelection, kWhole);
    t.after = doc::snapshot();
    t.calls.assign(hostsim::calls().begin() + static_cast<long>(firstCall), hostsim::calls().end());
    for (const auto& c : t.calls)
        if (c.faulted) t.faulted.insert(c.fx);
    return true;
}

// The staves the host named for the region's slots during the run: the run
// works on these and on no others.
std::set<int16_t> stavesNamed(const RunTrace& t) {
    std::set<int16_t> out;
    for (const auto& c : t.calls)
        if (c.fx == Fx::FX_SlotToInst) out.insert(static_cast<int16_t>(c.result & 0xFFFF));
    return out;
}

// What the host holds against the plug-in, less what follows from the host
// call that was made to fail when the plug-in did what it must with the
// answer: it passes on a null progress handle, it closes the edit it opened
// whatever the start answered, its handler has ended the dialog once it
// called FX_EndDialog, and a commit or cancel that failed leaves the edit open.
void judgeHost(Context& cx, Session& s, const RunTrace& t, const std::string& where) {
    const std::string at = where + ": ";
    for (const ui::Error& e : ui::errors()) {
        const bool excused =
            (e.kind == ui::ErrorKind::UnknownProgress && t.faults(Fx::FX_StartMassEdit)) ||
            (e.kind == ui::ErrorKind::ProgressLeftOpen && t.faults(Fx::FX_EndMassEdit)) ||
            (e.kind == ui::ErrorKind::NeverEnded && t.faults(Fx::FX_EndDialog));
        if (!excused) cx.fail(at + e.text);
    }
    for (const std::string& e : edits::errors()) {
        const bool noneOpen = e.find("no edit open") != std::string::npos;
        const bool leftOpen = e.find("left open") != std::string::npos;
        const bool excused =
            (noneOpen && t.faults(Fx::FX_StartZemloEdit_UTF16)) ||
            (leftOpen && (t.faults(Fx::FX_EndZemloEdit) || t.faults(Fx::FX_CancelZemloEdit)));
        if (!excused) cx.fail(at + e);
    }
    cx.expect(doc::framesOut() == 0,
              at + std::to_string(doc::framesOut()) + " frames never given back");
    cx.expect(s.editDepth() == 0,
              at + "ZemloEditDepth is " + std::to_string(s.editDepth()) + ", not 0");
    cx.expect(s.massDepth() == 0,
              at + "MassEditDepth is " + std::to_string(s.massDepth()) + ", not 0");
}

// Properties of every run, faulted or not.
void judgeRun(Context& cx, Session& s, const RunTrace& t, const score::Region& region,
              const std::string& where) {
    judgeHost(cx, s, t, where);
    const std::string at = where + ": ";

    // One edit closed for every edit opened, by commit exactly when the run
    // answers 1.
    size_t starts = 0, ends = 0, cancels = 0;
    const hostsim::Call* start = nullptr;
    size_t massEnds = 0;
    bool progressHandleKept = true, notice = false, chordWritten = false;
    for (const auto& c : t.calls) {
        if (c.fx == Fx::FX_StartZemloEdit_UTF16) ++starts;
        if (c.fx == Fx::FX_EndZemloEdit) ++ends;
        if (c.fx == Fx::FX_CancelZemloEdit) ++cancels;
        if (c.fx == Fx::FX_StartMassEdit) start = &c;
        if (c.fx == Fx::FX_MassEditProgress || c.fx == Fx::FX_EndMassEdit) {
            if (c.fx == Fx::FX_EndMassEdit) ++massEnds;
            progressHandleKept = progressHandleKept && start && c.args[0] == start->result;
        }
        if (c.fx == Fx::FX_AlertMessage_UTF16 && c.args[1] == 64) notice = true;
        if ((c.fx == Fx::FX_SaveEData || c.fx == Fx::FX_DeleteEData) && c.args[0] == doc::kChord &&
            static_cast<int16_t>(c.result & 0xFFFF) != 0)
            chordWritten = true;
    }
    cx.expect(starts <= 1, at + std::to_string(starts) + " edits opened");
    cx.expect(ends + cancels == starts, at + std::to_string(starts) + " edits opened, " +
                                            std::to_string(ends) + " committed and " +
                                            std::to_string(cancels) + " cancelled");
    cx.expect(progressHandleKept,
              at + "a progress call did not pass the handle FX_StartMassEdit answered");
    cx.expect(massEnds == (start ? 1u : 0u), at + std::to_string(massEnds) +
                                                 " FX_EndMassEdit calls for " +
                                                 (start ? "one" : "no") + " display");
    if (starts == 1)
        cx.expect(notice == (t.result == 0),
                  at + (notice ? "the notice showed, yet the run answered 1"
                               : "the run answered 0 without the notice"));

    const std::string diff = doc::difference(t.before, t.after);
    if (t.result == 1) {
        cx.expect(ends == 1 && cancels == 0, at + "the run answered 1 without committing its edit");
        cx.expect(chordWritten, at + "the run answered 1 and saved or deleted no chord record");
        if (ends == 1 && !t.faults(Fx::FX_EndZemloEdit) && t.firstEdit < edits::all().size())
            cx.expect(edits::all()[t.firstEdit].state == edits::State::Committed,
                      at + "the host holds the edit of a run that answered 1 as not committed");
    } else {
        cx.expect(t.result == 0, at + "the run answered " + std::to_string(t.result));
        cx.expect(ends == 0, at + "the run answered 0 after committing its edit");
        cx.expect(!chordWritten,
                  at + "the run answered 0 though it saved or deleted a chord record");
        // Only the host's own failure to open or to cancel the edit can leave
        // a trace of a run that changed nothing.
        if (!t.faults(Fx::FX_StartZemloEdit_UTF16) && !t.faults(Fx::FX_CancelZemloEdit)) {
            cx.expect(diff.empty(), at + "the run answered 0 and the document changed: " + diff);
            if (starts == 1 && t.firstEdit < edits::all().size())
                cx.expect(edits::all()[t.firstEdit].state == edits::State::Cancelled,
                          at + "the host holds the edit of a run that answered 0 as not cancelled");
        }
    }
    expectOrdinaryKept(cx, t.before, t.after, where);
    expectOutsideUnchanged(cx, t.before, t.after, region, stavesNamed(t), where);
}

// ---- Discovery ------------------------------------------------------------

// How often each host function is called by each scenario's run under test,
// found in a child so that the plug-in never runs in the runner.
using CallCounts = std::map<std::string, std::map<Fx, size_t>>;

// In the child: each scenario's calls counted, one "scenario function count" line each.
std::string countCalls(const Plan& plan, int quiet) {
    Context cx(plan, plan.seed, quiet);
    std::string report;
    for (const Scenario& sc : scenarios()) {
        Session s(cx);
        RunTrace t;
        if (!runScenario(cx, s, sc, t, [] {})) continue;
        std::map<Fx, size_t> n;
        for (const auto& c : t.calls)
            ++n[c.fx];
        for (const auto& [fx, k] : n)
            report += std::string(sc.name) + " " + hostsim::info(fx).name + " " + std::to_string(k) + "\n";
    }
    return report;
}

// What the child writes until it ends or the deadline passes; false on the deadline.
bool readUntil(int fd, std::chrono::steady_clock::time_point deadline, std::string* text) {
    char buf[4096];
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now())
                .count();
        if (left <= 0) return false;
        pollfd p{fd, POLLIN, 0};
        const int r = poll(&p, 1, static_cast<int>(left));
        if (r <= 0) continue;
        const ssize_t n = read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return true;
        text->append(buf, static_cast<size_t>(n));
    }
}

CallCounts parseCounts(const std::string& text) {
    CallCounts out;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        char name[64], fxName[64];
        size_t k = 0;
        if (std::sscanf(text.substr(at, end - at).c_str(), "%63s %63s %zu", name, fxName, &k) == 3) {
            Fx fx;
            if (hostsim::fxByName(fxName, &fx)) out[name][fx] = k;
        }
        at = end + 1;
    }
    return out;
}

CallCounts discover(const Plan& plan) {
    int fds[2];
    if (pipe(fds) != 0) return {};
    const pid_t pid = fork();
    if (pid < 0) {
        close(fds[0]);
        close(fds[1]);
        return {};
    }
    if (pid == 0) {
        close(fds[0]);
        const int quiet = open("/dev/null", O_WRONLY);
        if (quiet >= 0) {
            dup2(quiet, STDOUT_FILENO);
            dup2(quiet, STDERR_FILENO);
        }
        const std::string report = countCalls(plan, quiet);
        size_t at = 0;
        while (at < report.size()) {
            const ssize_t w = write(fds[1], report.data() + at, report.size() - at);
            if (w <= 0) break;
            at += static_cast<size_t>(w);
        }
        _exit(0);
    }
    close(fds[1]);
    // A plug-in that hangs here gets no fault checks listed; its reference
    // checks then hang under the runner's watchdog and say so.
    const int limit = plan.timeoutSeconds > 0 ? plan.timeoutSeconds : 60;
    std::string text;
    const bool ended = readUntil(fds[0], std::chrono::steady_clock::now() + std::chrono::seconds(limit), &text);
    close(fds[0]);
    if (!ended) kill(pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return {};
    return parseCounts(text);
}

// The calls of a function with n calls that get a check: first, middle and
// last, and at higher levels more of them, evenly spread, up to all n at
// level 10.
std::vector<std::pair<std::string, int>> faultPoints(const Plan& plan, size_t n) {
    std::vector<std::pair<std::string, int>> out;
    if (n == 0) return out;
    const int calls = static_cast<int>(n);
    out.push_back({"first", 1});
    if (calls >= 3) out.push_back({"middle", (calls + 1) / 2});
    if (calls >= 2) out.push_back({"last", calls});
    const int wanted = std::min(calls, byLevel(plan, 3, calls));
    std::set<int> taken = {1, (calls + 1) / 2, calls};
    const int extra = wanted - static_cast<int>(out.size());
    for (int i = 1; i <= extra; ++i) {
        const int k = 1 + static_cast<int>(static_cast<long>(i) * (calls - 1) / (extra + 1));
        if (taken.insert(k).second) out.push_back({"call-" + std::to_string(k), k});
    }
    return out;
}

void reference(Context& cx, const Scenario& sc, const std::map<Fx, size_t>& expected) {
    Session s(cx);
    RunTrace t;
    if (!runScenario(cx, s, sc, t, [] {})) return;
    judgeRun(cx, s, t, sc.answers.wholeDocument ? kWhole : kSelection, sc.name);
    cx.expect(t.result == sc.result, std::string(sc.name) + ": answered " +
                                         std::to_string(t.result) + " instead of " +
                                         std::to_string(sc.result));
    std::map<Fx, size_t> n;
    for (const auto& c : t.calls)
        ++n[c.fx];
    cx.expect(n == expected,
              std::string(sc.name) + ": the run's host calls differ from the run that listed them");
}

void faultAt(Context& cx, const Scenario& sc, Fx fx, int k) {
    Session s(cx);
    RunTrace t;
    if (!runScenario(cx, s, sc, t, [&] { hostsim::failCall(fx, k); })) return;
    const std::string where = std::string(sc.name) + " with call " + std::to_string(k) + " of " +
                              hostsim::info(fx).name + " failing";
    if (!cx.expect(t.faulted == std::set<Fx>{fx}, where + ": the failing call was never made"))
        return;
    cx.count("fault points");
    judgeRun(cx, s, t, sc.answers.wholeDocument ? kWhole : kSelection, where);
}

// ---- Cancellation ---------------------------------------------------------

struct Layout {
    int staves = 3, measures = 4;              // the selection: staves 1.., measures 2..
    std::map<std::pair<int, int>, int> chords; // staff-measure -> ordinary chords
    score::Region selection() const {
        return score::region(1, 2, static_cast<int16_t>(staves),
                             static_cast<int16_t>(measures + 1));
    }
    score::Region whole() const { return wholeOf(staves + 1, measures + 2); }
};

// A score one staff and a measure either side wider than the selection,
// with 0 to 3 chords in each staff-measure and a few measures without any.
Layout randomLayout(Context& cx, int staves, int measures) {
    Layout l;
    l.staves = staves;
    l.measures = measures;
    for (int m = 1; m <= measures + 2; ++m) {
        if (m > 1 && cx.between(0, 3) == 0) continue; // a measure without chords
        for (int s = 1; s <= staves + 1; ++s)
            l.chords[{s, m}] = cx.between(0, 3);
    }
    l.chords[{1, 2}] = cx.between(1, 3); // the finished run changes something
    return l;
}

void buildLayout(const Layout& l) {
    score::Score sc(l.staves + 1, l.measures + 2);
    int key = 200;
    for (const auto& [place, n] : l.chords)
        for (int i = 0; i < n; ++i)
            sc.chord(static_cast<int16_t>(place.first), static_cast<int16_t>(place.second),
                     chordSymbol(key++, static_cast<int16_t>(10 * i)));
    sc.textBlock(1, 2, 0, 50, u"Verse");
    score::addFont(3, u"Times New Roman", 0x2A);
}

using Records = std::map<std::tuple<uint32_t, doc::RecordId>, std::vector<uint8_t>>;

Records recordsAt(const doc::Document& d, uint32_t tag, int16_t staff, int16_t measure) {
    Records out;
    for (const auto& [key, bytes] : d.records) {
        const auto& [t, id] = key;
        if (t == tag && id.first == staff && id.second == measure) out[key] = bytes;
    }
    return out;
}

bool chordsDiffer(const doc::Document& a, const doc::Document& b, int16_t staff, int16_t measure) {
    return recordsAt(a, doc::kChord, staff, measure) != recordsAt(b, doc::kChord, staff, measure);
}

// Runs the layout's command once, cancelled at progress call `cancelAt` (0:
// never), over a fresh host. With `removal`, an unfaulted first run comes
// before the removal under test.
bool cancelRun(Context& cx, const Layout& l, bool removal, int cancelAt, RunTrace& t) {
    Session s(cx);
    if (!s.start()) return false;
    buildLayout(l);
    const score::Region sel = l.selection(), all = l.whole();
    hostsim::driver::Answers first = labelled("2", "64");
    if (removal) {
        const int16_t r = s.run(first, &sel, all);
        s.checkHost("the first run before the removal");
        if (!cx.expect(r == 1 || l.chords.empty(), "the first run before the removal answered 0"))
            return false;
    }
    hostsim::driver::Answers answers = first;
    answers.remove = removal;
    t.before = doc::snapshot();
    t.firstEdit = edits::all().size();
    t.firstProgress = ui::progress().size();
    const size_t firstCall = hostsim::calls().size();
    ui::scriptProgress({cancelAt});
    t.result = s.run(answers, &sel, all);
    t.after = doc::snapshot();
    t.calls.assign(hostsim::calls().begin() + static_cast<long>(firstCall), hostsim::calls().end());
    const std::string where = std::string(removal ? "removal" : "first run") +
                              (cancelAt ? " cancelled at step " + std::to_string(cancelAt) : "");
    judgeRun(cx, s, t, sel, where);
    return true;
}

void cancelEverywhere(Context& cx, const Layout& l, bool removal) {
    RunTrace full;
    if (!cancelRun(cx, l, removal, 0, full)) return;
    const int steps = l.staves * l.measures;
    const std::string mode = removal ? "removal" : "first run";
    cx.expect(full.result == 1, mode + " left to finish answered " + std::to_string(full.result));
    const int16_t firstMeasure = 2;
    for (int k = 1; k <= steps && cx.failures() == 0; ++k) {
        RunTrace t;
        if (!cancelRun(cx, l, removal, k, t)) return;
        cx.count("cancellations");
        const std::string where = mode + " cancelled at step " + std::to_string(k);
        // The display saw k calls, the last one answered 0, and was ended as cancelled.
        if (cx.expect(ui::progress().size() == t.firstProgress + 1,
                      where + ": not one progress display")) {
            const ui::Progress& p = ui::progress()[t.firstProgress];
            cx.expect(p.calls.size() == static_cast<size_t>(k),
                      where + ": " + std::to_string(p.calls.size()) + " progress calls");
            cx.expect(p.ended && p.cancelled == 1,
                      where + ": the display was not ended as cancelled");
        }
        // Steps go measure by measure, staff by staff within a measure; the
        // run answers whether a chord record of a step before k changed.
        bool expectChange = false, chordMet = false;
        for (int j = 1; j < k; ++j) {
            const auto staff = static_cast<int16_t>(1 + (j - 1) % l.staves);
            const auto measure = static_cast<int16_t>(firstMeasure + (j - 1) / l.staves);
            expectChange = expectChange || chordsDiffer(full.before, full.after, staff, measure);
            auto n = l.chords.find({staff, measure});
            chordMet = chordMet || (n != l.chords.end() && n->second > 0);
        }
        cx.expect(t.result == (expectChange ? 1 : 0),
                  where + ": answered " + std::to_string(t.result) + " though chord records " +
                      (expectChange ? "had" : "had not") + " changed before the cancel");
        if (t.result != 1) continue; // judgeRun found the document as it was
        for (int j = 1; j <= steps; ++j) {
            const auto staff = static_cast<int16_t>(1 + (j - 1) % l.staves);
            const auto measure = static_cast<int16_t>(firstMeasure + (j - 1) / l.staves);
            const std::string sm =
                where + ": staff " + std::to_string(staff) + ", measure " + std::to_string(measure);
            // A step before the cancel did what the finished run did there.
            const doc::Document& chordsFrom = j < k ? full.after : full.before;
            cx.expect(recordsAt(t.after, doc::kChord, staff, measure) ==
                          recordsAt(chordsFrom, doc::kChord, staff, measure),
                      sm + (j < k ? ": chords differ from the finished run's"
                                  : ": chords changed after the cancel"));
            // The label goes to every staff of the first measure at the first
            // chord met, wherever that chord is.
            const bool labelHere = !removal && chordMet && measure == firstMeasure;
            const doc::Document& textsFrom = j < k || labelHere ? full.after : full.before;
            cx.expect(recordsAt(t.after, doc::kMeasureText, staff, measure) ==
                          recordsAt(textsFrom, doc::kMeasureText, staff, measure),
                      sm + (j < k || labelHere ? ": measure texts differ from the finished run's"
                                               : ": measure texts changed after the cancel"));
        }
    }
}

} // namespace

void addFaultChecks(const Plan& plan, Checks& out) {
    const CallCounts counts = discover(plan);
    for (const Scenario& sc : scenarios()) {
        auto it = counts.find(sc.name);
        const std::map<Fx, size_t> calls = it == counts.end() ? std::map<Fx, size_t>{} : it->second;
        out.push_back({std::string("fault/") + sc.name + "/reference",
                       [sc, calls](Context& cx) { reference(cx, sc, calls); }});
        for (const auto& [fx, n] : calls)
            for (const auto& [point, k] : faultPoints(plan, n))
                out.push_back(
                    {std::string("fault/") + sc.name + "/" + hostsim::info(fx).name + "/" + point,
                     [sc, f = fx, at = k](Context& cx) { faultAt(cx, sc, f, at); }});
    }
}

void addCancelChecks(const Plan& plan, Checks& out) {
    for (bool removal : {false, true}) {
        const std::string mode = removal ? "removal" : "first-run";
        out.push_back({"cancel/" + mode + "/small", [removal](Context& cx) {
                           Layout l; // three staves, four measures, fixed chords
                           l.chords = {{{1, 2}, 2}, {{2, 2}, 0}, {{3, 2}, 1},
                                       {{2, 3}, 3}, {{1, 5}, 1}, {{3, 5}, 2},
                                       {{4, 3}, 1}, {{1, 1}, 1}, {{2, 6}, 2}};
                           cancelEverywhere(cx, l, removal);
                       }});
        const int staves = byLevel(plan, 2, 6), measures = byLevel(plan, 3, 14);
        out.push_back({"cancel/" + mode + "/random",
                       [removal, staves, measures](Context& cx) {
                           cancelEverywhere(cx, randomLayout(cx, staves, measures), removal);
                       },
                       120});
    }
}

} // namespace validate
