// Seeded sequences of dialog messages: initialisation again, commands for
// any control number, any message with any parameters, user steps, OK and
// Cancel twice over, messages after the end, and now and then a dialog run
// with no user data at all. Each answer must be the one the handler defines
// for that message, nothing may touch the dialog after its end, and the
// document must come out as the confirmed settings say, or unchanged.
#include "check.h"
#include "outcome.h"
#include "session.h"

#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <climits>
#include <map>

namespace validate {
namespace {

namespace edits = hostsim::edits;
namespace ui = hostsim::ui;

constexpr uint32_t kInit = 272, kCommand = 273;

// Distances typed in the score's unit: what OK makes of them, and how the
// next dialog shows that.
struct Distance {
    int16_t evpu;
    std::string shows;
};
std::map<std::string, Distance> distances(const UnitTexts& u) {
    std::map<std::string, Distance> out = {{u.shows64, {64, u.shows64}},
                                           {"0", {0, u.zero}},
                                           {u.max, {32767, u.max}},
                                           {u.above, {32767, u.max}},
                                           {"1.5", {u.oneAndHalf, u.shows15}},
                                           {"abc", {64, u.shows64}},
                                           {"-3", {64, u.shows64}},
                                           {"", {64, u.shows64}},
                                           {"2147483648", {64, u.shows64}},
                                           {"2147483647", {32767, u.max}}};
    if (std::string(u.name) == "evpus") {
        out.insert({"12.5", {13, "13"}});
        out.insert({"7.4999", {7, "7"}});
        out.insert({"1.2.3", {1, "1"}});
    }
    return out;
}
const char* const kFrets[] = {"1", "3", "12", "63", "64", "0", "-1", "abc", "65599", "32767"};

std::vector<std::string> labels() {
    return {"Capo 3",
            "",
            "^^",
            "Fret 12 and 7",
            "\xF0\x9D\x84\x9E\xF0\x9D\x84\x9E Capo 9",
            std::string(300, 'w') + "5",
            "9" + std::string(80, 'z')};
}

int64_t anyParameter(Context& cx) {
    switch (cx.between(0, 3)) {
    case 0:
        return cx.between(-3, 12);
    case 1:
        return static_cast<int64_t>(cx.random()());
    case 2:
        return (int64_t{1} << 32) + cx.between(0, 12); // a control number in the low bits only
    default:
        return cx.between(INT16_MIN, INT16_MAX);
    }
}

uint32_t anyMessage(Context& cx) {
    const uint32_t some[] = {
        0, 1, 2, 15, 16, 271, 274, 0x10000 + kCommand, 0x10000 + kInit, 0xFFFFFFFFu};
    return cx.between(0, 3) == 0 ? static_cast<uint32_t>(cx.random()()) : some[cx.between(0, 9)];
}

// A step in the middle of the dialog; OK and Cancel come rarely, so that
// most sequences run long.
ui::Step middleStep(Context& cx, const std::map<std::string, Distance>& typed, int* reinits) {
    switch (cx.between(0, 12)) {
    case 0:
        ++*reinits;
        return ui::message(kInit, anyParameter(cx), anyParameter(cx));
    case 1:
    case 2:
        return ui::press(static_cast<int16_t>(
            cx.between(0, 3) == 0 ? cx.between(INT16_MIN, INT16_MAX) : cx.between(-1, 12)));
    case 3:
        return ui::message(kCommand, anyParameter(cx), anyParameter(cx));
    case 4:
        return ui::message(anyMessage(cx), anyParameter(cx), anyParameter(cx));
    case 5:
        return ui::type(control::kFret, kFrets[cx.between(0, 9)]);
    case 6: {
        auto it = typed.begin();
        std::advance(it, cx.between(0, static_cast<int>(typed.size()) - 1));
        return ui::type(control::kDistance, it->first);
    }
    case 7: {
        const auto all = labels();
        return ui::type(control::kLabel,
                        all[static_cast<size_t>(cx.between(0, static_cast<int>(all.size()) - 1))]);
    }
    case 8:
        return ui::click(static_cast<int16_t>(8 + cx.between(0, 1)));
    case 9:
        return ui::click(control::kRemove);
    case 10:
        return ui::setValue(control::kFret, cx.between(-2, 70));
    case 11:
        return ui::press(static_cast<int16_t>(cx.between(1, 2)));
    default:
        return ui::peek([](const ui::DialogRun&) {});
    }
}

// A message after the end: a command or any message but initialisation,
// which asks the handler to fill the controls of a window that is gone.
ui::Step lateStep(Context& cx) {
    if (cx.between(0, 1)) return ui::late(ui::press(static_cast<int16_t>(cx.between(-1, 12))));
    uint32_t m = anyMessage(cx);
    if (m == kInit) m = kCommand;
    return ui::late(ui::message(m, anyParameter(cx), anyParameter(cx)));
}

// The label as the field hands it over: at most 255 units, a pair never cut.
std::u16string asRead(const std::u16string& text) {
    size_t n = std::min<size_t>(text.size(), 255);
    if (n < text.size() && n > 0 && text[n - 1] >= 0xD800 && text[n - 1] < 0xDC00) --n;
    return text.substr(0, n);
}

// The seeded script: steps in the middle, an ending, messages after the end.
std::vector<ui::Step> fuzzScript(Context& cx, const std::map<std::string, Distance>& typed, int* reinits) {
    std::vector<ui::Step> steps;
    const int length = cx.between(0, 40);
    for (int i = 0; i < length; ++i)
        steps.push_back(middleStep(cx, typed, reinits));
    switch (cx.between(0, 3)) {
    case 0:
        steps.push_back(ui::press(control::kOk));
        steps.push_back(ui::press(control::kOk));
        break; // OK twice
    case 1:
        steps.push_back(ui::press(control::kCancel));
        steps.push_back(ui::press(control::kOk));
        break; // Cancel, then OK
    case 2:
        steps.push_back(ui::click(control::kOk));
        break;
    default:
        break; // the close box
    }
    for (int i = cx.between(0, 4); i > 0; --i)
        steps.push_back(lateStep(cx));
    return steps;
}

// Every message answered as the handler defines; true when OK ended the dialog.
bool expectAnswers(Context& cx, const ui::DialogRun& r) {
    bool initialised = false, confirmed = false, ended = false;
    for (size_t i = 0; i < r.sent.size(); ++i) {
        const ui::Sent& m = r.sent[i];
        bool want = false;
        if (r.userData) {
            if (m.message == kInit) {
                want = initialised = true;
            } else if (m.message == kCommand) {
                if (!initialised) {
                    want = true;
                } else {
                    want = m.wParam == 1 || m.wParam == 2 || m.wParam == 4 || m.wParam == 9 ||
                           m.wParam == 11;
                    if (m.wParam == 1 || m.wParam == 2) {
                        initialised = false;
                        if (!ended) confirmed = m.wParam == 1;
                        ended = true;
                    }
                }
            }
        }
        cx.expect(m.answer == want,
                  "message " + std::to_string(i + 1) + " (" + std::to_string(m.message) + ", " +
                      std::to_string(m.wParam) + ") answered " + std::to_string(m.answer));
    }
    return confirmed;
}

// The settings as the controls held them at OK: the handler changes nothing after it.
Confirmed confirmedSettings(Context& cx, const ui::DialogRun& r, const std::map<std::string, Distance>& typed,
                            std::string* shownDistance) {
    Confirmed c;
    auto value = [&](int16_t n) { return r.control(n) ? r.control(n)->value : 0; };
    c.fret = static_cast<int16_t>(value(control::kFret));
    auto d = typed.find(r.text8(control::kDistance));
    if (cx.expect(d != typed.end(), "the distance field reads \"" + r.text8(control::kDistance) + "\", which was never typed")) {
        c.distance = d->second.evpu;
        *shownDistance = d->second.shows;
    }
    c.showLabel = value(control::kShowLabel) != 0;
    c.label = r.control(control::kLabel) ? asRead(r.control(control::kLabel)->text) : u"";
    c.chordFlag = value(control::kChordFlag) != 0;
    c.remove = value(control::kRemove) != 0;
    return c;
}

// The next dialog, with the host's own user data again, opens with the
// settings remembered, the removal box off.
void expectNextDialog(Context& cx, Session& s, const score::Region& region, const Confirmed& remembered,
                      const std::string& shownDistance) {
    hostsim::setHandler(hostsim::Fx::FX_Dialog, nullptr);
    ui::DialogRun next;
    ui::scriptDialog({ui::peek([&next](const ui::DialogRun& d) { next = d; }), ui::click(control::kCancel)});
    cx.expect(s.invoke(&region, region) == 0, "the cancelled next dialog ran the command");
    auto shows = [&](int16_t n) { return next.control(n) ? next.control(n)->value : -1; };
    cx.expect(shows(control::kFret) == remembered.fret && next.text8(control::kDistance) == shownDistance &&
                  shows(control::kShowLabel) == (remembered.showLabel ? 1 : 0) &&
                  shows(control::kChordFlag) == (remembered.chordFlag ? 1 : 0) && shows(control::kRemove) == 0 &&
                  next.control(control::kLabel) && next.control(control::kLabel)->text == remembered.label,
              "the next dialog shows fret " + std::to_string(shows(control::kFret)) + ", distance \"" +
                  next.text8(control::kDistance) + "\", label box " + std::to_string(shows(control::kShowLabel)) + " \"" +
                  next.text8(control::kLabel) + "\", chord flag " + std::to_string(shows(control::kChordFlag)) + ", removal " +
                  std::to_string(shows(control::kRemove)) + ", not fret " + std::to_string(remembered.fret) +
                  ", distance \"" + shownDistance + "\", label \"" + shown(remembered.label) +
                  "\"");
}

void fuzzRun(Context& cx) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(2, 3);
    score::ChordRecord a, b;
    a.key3 = 0;
    a.vertical = 10;
    b.key3 = 480;
    b.vertical = -7;
    b.flags = 0x8000;
    sc.chord(1, 1, a).chord(1, 1, b).chord(2, 2, a).chord(1, 3, b);
    const score::Region region = sc.whole();

    const bool noUserData = cx.between(0, 7) == 0;
    if (noUserData)
        hostsim::setHandler(hostsim::Fx::FX_Dialog, [](hostsim::Call& c) {
            c.args[4] = 0;
            return ui::serve(c);
        });
    const UnitTexts& unit = kUnitTexts[cx.between(0, 5)];
    hostsim::driver::setUnitByName(unit.name);
    const std::map<std::string, Distance> typed = distances(unit);
    std::string shownDistance = unit.shows64; // what the next dialog shows
    int reinits = 0;
    ui::scriptDialog(fuzzScript(cx, typed, &reinits));

    const doc::Document before = doc::snapshot();
    const int16_t result = s.invoke(&region, region);
    const doc::Document after = doc::snapshot();

    if (!cx.expect(ui::dialogs().size() == 1,
                   std::to_string(ui::dialogs().size()) + " dialogs shown"))
        return;
    const ui::DialogRun& r = ui::dialogs()[0];
    cx.count("dialog messages", static_cast<long>(r.sent.size()));
    if (noUserData) {
        cx.expect(r.userData == nullptr, "the dialog ran with user data");
        cx.count("dialogs without user data");
    }
    const bool confirmed = expectAnswers(cx, r);
    cx.expect(noUserData || r.ending == ui::Ending::Handler, "the handler did not end the dialog");

    Confirmed remembered; // what the next dialog opens with: the defaults until a run is confirmed
    if (!confirmed) {
        cx.expect(result == 0, "a dialog not confirmed ran the command: " + std::to_string(result));
        cx.expect(before == after,
                  "a dialog not confirmed changed " + doc::difference(before, after));
        cx.expect(edits::all().empty(), "a dialog not confirmed opened an edit");
    } else {
        const Confirmed c = confirmedSettings(cx, r, typed, &shownDistance);
        expectFreshRun(cx, before, after, c, region, result, "after OK");
        cx.count("confirmed dialogs");
        remembered = c;
        if (remembered.label.empty())
            remembered.label = u"Capo 1"; // a cleared label comes back as the default
    }
    expectNextDialog(cx, s, region, remembered, shownDistance);
    // A second initialisation with the removal box checked finds the fret
    // field disabled when it sets the focus there: the initialisation is that
    // of a dialog just opened, with the box off.
    s.checkHost("", [&](const ui::Error& e) {
        if (e.kind == ui::ErrorKind::RefusedStep) return true;
        if (noUserData && e.kind == ui::ErrorKind::NeverEnded) return true;
        if (reinits > 0 && e.kind == ui::ErrorKind::BadArgument &&
            e.text.rfind("FX_SetDlgFocus", 0) == 0) {
            cx.count("focus on a disabled fret field after a second initialisation");
            return true;
        }
        return false;
    });
}

} // namespace

void addDialogFuzzChecks(const Plan& plan, Checks& out) {
    const int n = byLevel(plan, 10, 1500);
    for (int i = 1; i <= n; ++i)
        out.push_back({"dialog-fuzz/" + std::to_string(i), fuzzRun});
}

} // namespace validate
