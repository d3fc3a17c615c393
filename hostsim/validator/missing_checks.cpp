// One check per host function: the host lacks it from the start, and the
// plug-in is started, runs its command confirmed with a label, removes what
// it wrote, is cancelled, is asked about the whole document, and ends. A
// missing function yields its fixed answer, so the plug-in must neither
// crash nor leave anything half done: edit depths back at 0, every edit it
// opened closed (unless the missing function is the only way to close it;
// the same for its progress display and its dialog),
// ordinary chords kept, nothing outside the region touched, and a cancelled
// edit leaving the document as it was.
#include "check.h"
#include "session.h"

#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <string>

namespace validate {
namespace {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;
using hostsim::Fx;

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// A host without one function: the score, the runs on it, and what such a
// host cannot do and so does not hold against the plug-in.
class WithoutFunction {
  public:
    WithoutFunction(Context& cx, Fx fx, Session& s) : cx_(cx), fx_(fx), name_(hostsim::info(fx).name), s_(s) {}

    // Staves 1 and 2, measures 1..n walked; measure n + 1 and its text block lie outside.
    void buildScore() {
        const int n = byLevel(cx_.plan(), 2, 24);
        score::Score sc(2, n + 1);
        for (int m = 1; m <= n + 1; ++m) {
            score::ChordRecord chord;
            chord.key3 = static_cast<int16_t>(cx_.between(0, 4) * 240);
            chord.key1 = static_cast<int16_t>(m);
            sc.chord(1, static_cast<int16_t>(m), chord);
            if (cx_.between(0, 1)) sc.chord(2, static_cast<int16_t>(m), chord);
        }
        sc.textBlock(1, static_cast<int16_t>(n + 1), 0, 0, u"outside the region");
        region_ = score::region(1, 1, 2, static_cast<int16_t>(n));
        whole_ = sc.whole();
    }

    bool excused(const std::string& e) const {
        // Only FX_EndZemloEdit commits an edit; without it the committed run's edit stays open.
        if (fx_ == Fx::FX_EndZemloEdit) return contains(e, "left open") && contains(e, "edit \"");
        // Without FX_CancelZemloEdit an edit the plug-in cancels stays open.
        if (fx_ == Fx::FX_CancelZemloEdit) return cancelTried_ && contains(e, "left open");
        // The host opened no edit, so the plug-in's commit or cancel finds none.
        if (fx_ == Fx::FX_StartZemloEdit_UTF16)
            return e == "FX_EndZemloEdit: no edit open" || e == "FX_CancelZemloEdit: no edit open";
        // The host handed out no progress display, and the plug-in passes on the null it got.
        if (fx_ == Fx::FX_StartMassEdit)
            return e == "FX_MassEditProgress: not a progress display of this host" ||
                   e == "FX_EndMassEdit: not a progress display of this host";
        // Only FX_EndMassEdit closes the progress display; the next run's display opens beside it.
        if (fx_ == Fx::FX_EndMassEdit)
            return (contains(e, "progress display of ") && contains(e, " left open")) ||
                   e == "FX_StartMassEdit: started while another display is open";
        // Only FX_EndDialog ends a dialog; the host closes it in the end.
        if (fx_ == Fx::FX_EndDialog) return contains(e, "the handler did not end it on Cancel");
        return false;
    }

    // One run; its result, with the properties that hold for every run checked.
    int16_t runOnce(const std::string& what, const hostsim::driver::Answers& o, bool withSelection) {
        const std::string where = "without " + name_ + ", " + what;
        const doc::Document before = doc::snapshot();
        const size_t editsBefore = edits::all().size(), dialogsBefore = ui::dialogs().size();
        const int16_t r = s_.run(o, withSelection ? &region_ : nullptr, whole_);
        const doc::Document after = doc::snapshot();
        cx_.expect(r == 0 || r == 1, where + ": the command answered " + std::to_string(r));
        cx_.expect(s_.editDepth() == 0, where + ": ZemloEditDepth is " + std::to_string(s_.editDepth()));
        cx_.expect(s_.massDepth() == 0, where + ": MassEditDepth is " + std::to_string(s_.massDepth()));
        expectOrdinaryKept(cx_, before, after, where);
        expectOutsideUnchanged(cx_, before, after, withSelection ? region_ : whole_, {1, 2}, where);
        expectEdits(where, r, editsBefore, after);
        expectUnconfirmedKeeps(where, r, o.cancel, ui::dialogs().size() > dialogsBefore, editsBefore, before, after);
        cx_.count("runs");
        return r;
    }

    // The edits still open are exactly those whose run needed the missing function to close them.
    void expectOpenEdits(int16_t added, int16_t removed) {
        cx_.expect(edits::openCount() == leftOpen_,
                   "without " + name_ + ", " + std::to_string(edits::openCount()) + " edits are open, " +
                       std::to_string(leftOpen_) + " of them because the host cannot close them");
        if (fx_ == Fx::FX_EndZemloEdit)
            cx_.expect(leftOpen_ == static_cast<size_t>(added + removed),
                       "without FX_EndZemloEdit, " + std::to_string(leftOpen_) + " edits stay open for " +
                           std::to_string(added + removed) + " runs that answered 1");
    }

  private:
    // A cancelled edit restores the document; an edit left open is one only the missing function could close.
    void expectEdits(const std::string& where, int16_t r, size_t editsBefore, const doc::Document& after) {
        const auto& all = edits::all();
        for (size_t i = editsBefore; i < all.size(); ++i) {
            const edits::Edit& e = all[i];
            if (e.state == edits::State::Cancelled) {
                cancelTried_ = true;
                cx_.expect(doc::difference(e.before, after).empty(),
                           where + ": the cancelled edit left the document changed: " +
                               doc::difference(e.before, after));
            } else if (e.state == edits::State::Open) {
                if (r == 0) cancelTried_ = true;
                const bool closerMissing =
                    (r == 1 && fx_ == Fx::FX_EndZemloEdit) || (r == 0 && fx_ == Fx::FX_CancelZemloEdit);
                if (closerMissing) ++leftOpen_;
                cx_.expect(closerMissing, where + ": the edit \"" + e.name + "\" was left open with result " +
                                              std::to_string(r));
            }
        }
    }

    // Only the dialog confirms a run, and 0 means the document is as it was.
    void expectUnconfirmedKeeps(const std::string& where, int16_t r, bool cancelled, bool shown, size_t editsBefore,
                                const doc::Document& before, const doc::Document& after) {
        const auto& all = edits::all();
        // Only the dialog confirms a run: a dialog the host cannot show changes nothing.
        if (fx_ == Fx::FX_Dialog || cancelled || !shown) {
            cx_.expect(r == 0,
                       where + ": the command answered " + std::to_string(r) + " without a confirmed dialog");
            cx_.expect(all.size() == editsBefore, where + ": an edit was opened without a confirmed dialog");
            cx_.expect(doc::difference(before, after).empty(),
                       where + ": the document changed without a confirmed dialog: " +
                           doc::difference(before, after));
        }
        if (fx_ == Fx::FX_Dialog) cx_.expect(!shown, where + ": a dialog was shown by a host without FX_Dialog");
        // Without the start of an edit, a run that answered 0 could still
        // have changed records the host cannot take back; with it, 0 means
        // the document is as it was.
        if (r == 0 && fx_ != Fx::FX_StartZemloEdit_UTF16)
            cx_.expect(doc::difference(before, after).empty(),
                       where + ": the command answered 0 and the document changed: " +
                           doc::difference(before, after));
        if (r == 1 && fx_ != Fx::FX_StartZemloEdit_UTF16)
            cx_.expect(all.size() == editsBefore + 1 && all.back().state != edits::State::Cancelled,
                       where + ": the command answered 1 without exactly one edit kept");
    }

    Context& cx_;
    const Fx fx_;
    const std::string name_;
    Session& s_;
    score::Region region_{}, whole_{};
    bool cancelTried_ = false;
    size_t leftOpen_ = 0;  // edits only the missing function could have closed
};

void missingOne(Context& cx, Fx fx) {
    const std::string name = hostsim::info(fx).name;
    Session s(cx);
    if (!s.loaded()) return;
    hostsim::setPresent(fx, false);  // before main binds anything
    if (!s.start()) return;
    cx.count("missing functions");
    WithoutFunction host(cx, fx, s);
    host.buildScore();

    hostsim::driver::Answers confirmed;
    confirmed.capo = "3";
    confirmed.setLabel = true;
    confirmed.label = "Capo 3";
    hostsim::driver::Answers removal;
    removal.capo = "3";
    removal.remove = true;
    hostsim::driver::Answers cancelled;
    cancelled.cancel = true;
    hostsim::driver::Answers wholeAsked = cancelled;
    wholeAsked.wholeDocument = true;

    const int16_t added = host.runOnce("the confirmed run", confirmed, true);
    const int16_t removed = host.runOnce("the removal run", removal, true);
    host.runOnce("the cancelled run", cancelled, true);
    // No selection: the plug-in asks first, then shows the dialog (cancelled here).
    const size_t dialogsBefore = ui::dialogs().size();
    host.runOnce("the run on the whole document", wholeAsked, false);
    if (fx == Fx::FX_AlertMessage_UTF16)
        cx.expect(ui::dialogs().size() == dialogsBefore,
                  "without FX_AlertMessage_UTF16 the question could not be asked, yet the dialog was shown");
    s.terminate();
    host.expectOpenEdits(added, removed);

    // A function the plug-in never looked up cannot have changed anything.
    if (hostsim::lookups(fx) == 0) {
        cx.expect(added == 1, "without " + name + " (never looked up) the confirmed run answered " +
                                  std::to_string(added));
        cx.expect(removed == 1,
                  "without " + name + " (never looked up) the removal answered " + std::to_string(removed));
    }
    s.checkHost("without " + name, [&host](const std::string& e) { return host.excused(e); });
}

}  // namespace

void addMissingChecks(const Plan&, Checks& out) {
    for (int i = 0; i < hostsim::kFxCount; ++i) {
        const Fx fx = static_cast<Fx>(i);
        out.push_back({std::string("missing/") + hostsim::info(fx).name,
                       [fx](Context& cx) { missingOne(cx, fx); }, 30});
    }
}

}  // namespace validate
