// What a user can type into the settings dialog, in every measurement unit:
// distances from 0 to far beyond 32,767 EVPU, numbers longer than 32 bits,
// labels at and past the field's 255 units with surrogate pairs, "^" in a
// label, and frets outside 1 to 63. Each run is checked for the capo chords
// and label the settings call for, and the next dialog for what it shows.
#include "check.h"
#include "outcome.h"
#include "session.h"

#include "hostsim/ui.h"

#include <functional>

namespace validate {
namespace {

namespace ui = hostsim::ui;

using Unit = UnitTexts;

// What one case types and what the run must do with it.
struct Input {
    std::string name;
    std::vector<ui::Step> steps; // before OK
    Confirmed confirmed;         // the settings the run goes on with
    std::string shownDistance;   // what the next dialog's distance field shows; empty: not checked
    std::string shownFret;       // what the next dialog's fret field shows
};

std::u16string pairs(size_t n) {
    std::u16string out;
    for (size_t i = 0; i < n; ++i)
        out += u"\U0001D11E";
    return out;
}

std::vector<Input> inputs(const Unit& u) {
    std::vector<Input> out;
    auto distance = [&](const std::string& name, const std::string& text, int16_t evpu,
                        const std::string& shows) {
        Input in;
        in.name = name;
        in.steps = {ui::type(control::kDistance, text)};
        in.confirmed.distance = evpu;
        in.shownDistance = shows;
        in.shownFret = "1";
        out.push_back(in);
    };
    distance("distance-0", "0", 0, u.zero);
    distance("distance-32767", u.max, 32767, u.max);
    // Beyond the 16-bit distance the entry is limited to it.
    distance("distance-32768", u.above, 32767, u.max);
    distance("distance-seven-digits", "2147483", 32767, u.max);
    distance("distance-largest-32-bit", "2147483647", 32767, u.max);
    // An integer part beyond 32 bits cannot be read: the default 64 stands.
    distance("distance-beyond-32-bits", "2147483648", 64, u.shows64);
    distance("distance-eleven-digits", "12345678901", 64, u.shows64);
    distance("distance-negative", "-1", 64, u.shows64);
    // The field hands over 254 characters: what follows them is never read.
    distance("distance-300-characters", std::string(296, '0') + "1.5", 0, u.zero);
    distance("distance-300-characters-beyond-32-bits", "1" + std::string(299, '0'), 64, u.shows64);
    // Digits of other scripts are no digits.
    distance("distance-other-digits", "\xD9\xA3", 64, u.shows64);

    auto label = [&](const std::string& name, const std::u16string& typed,
                     const std::u16string& kept) {
        Input in;
        in.name = name;
        in.steps = {ui::type(control::kDistance, "1.5"), ui::type(control::kLabel, ui::utf8(typed))};
        in.confirmed.distance = u.oneAndHalf;
        in.confirmed.label = kept;
        out.push_back(in);
    };
    const std::u16string head = u"Capo 3 "; // 7 units
    label("label-255", head + pairs(124), head + pairs(124));
    label("label-256", head + pairs(124) + u"x", head + pairs(124));
    // The last pair straddles the limit and is dropped whole.
    label("label-pair-across-limit", head + u"y" + pairs(124), head + u"y" + pairs(123));
    label("label-carets", u"^font(X,1)^size(99) Capo ^^3^", u"^font(X,1)^size(99) Capo ^^3^");
    // A new fret rebuilds the label from 63 units before its number and 63 after it.
    {
        Input in;
        in.name = "label-rewritten-long";
        in.steps = {ui::type(control::kDistance, "1.5"),
                    ui::type(control::kLabel, std::string(70, 'p') + "3" + std::string(70, 'q')),
                    ui::type(control::kFret, "12")};
        in.confirmed.distance = u.oneAndHalf;
        in.confirmed.fret = 12;
        in.confirmed.label = std::u16string(63, u'p') + u"12" + std::u16string(63, u'q');
        out.push_back(in);
    }

    auto fret = [&](const std::string& name, const std::string& typed, int16_t confirmed,
                    const std::u16string& lbl, const std::string& shows) {
        Input in;
        in.name = name;
        in.steps = {ui::type(control::kDistance, "1.5"), ui::type(control::kFret, typed)};
        in.confirmed.distance = u.oneAndHalf;
        in.confirmed.fret = confirmed;
        in.confirmed.label = lbl;
        in.shownFret = shows;
        out.push_back(in);
    };
    fret("fret--1", "-1", -1, u"Capo -1", "-1");
    fret("fret-0", "0", 1, u"Capo 1", "1"); // refused: the previous fret comes back
    fret("fret-63", "63", 63, u"Capo 63", "63");
    fret("fret-64", "64", 64, u"Capo 64", "64");
    fret("fret-32767", "32767", 32767, u"Capo 32767", "32767");
    // The low 16 bits of the field's number: 65,599 is fret 63.
    fret("fret-65599", "65599", 63, u"Capo 63", "63");
    // The field's number stops at 2,147,483,647, whose low 16 bits are -1.
    fret("fret-eleven-digits", "12345678901", -1, u"Capo -1", "-1");
    return out;
}

void runInput(Context& cx, const Unit& u, const Input& in) {
    Session s(cx);
    if (!s.start()) return;
    addLabelFont();
    score::Score sc(2, 2);
    score::ChordRecord a, b, c;
    a.key3 = 0;
    a.vertical = 10;
    b.key3 = 480;
    b.vertical = -20;
    b.flags = 0x8001;
    c.key3 = 240;
    c.vertical = 32000; // a large distance wraps its capo chord
    sc.chord(1, 1, a).chord(1, 1, b).chord(2, 2, c);
    const score::Region region = sc.whole();

    hostsim::driver::setUnitByName(u.name);
    std::vector<ui::Step> steps = in.steps;
    steps.push_back(ui::click(control::kOk));
    ui::scriptDialog(steps);
    const doc::Document before = doc::snapshot();
    const int16_t result = s.invoke(&region, region);
    expectFreshRun(cx, before, doc::snapshot(), in.confirmed, region, result, in.name);

    // The next dialog shows what was confirmed, in the unit.
    std::string fretShown, distanceShown;
    std::u16string labelShown;
    ui::scriptDialog({ui::peek([&](const ui::DialogRun& r) {
                          fretShown = r.text8(control::kFret);
                          distanceShown = r.text8(control::kDistance);
                          if (const ui::Control* ctl = r.control(control::kLabel)) labelShown = ctl->text;
                      }),
                      ui::click(control::kCancel)});
    s.invoke(&region, region);
    if (!in.shownDistance.empty())
        cx.expect(distanceShown == in.shownDistance, "the next dialog shows the distance \"" +
                                                         distanceShown + "\", not \"" +
                                                         in.shownDistance + "\"");
    if (!in.shownFret.empty())
        cx.expect(fretShown == in.shownFret, "the next dialog shows the fret \"" + fretShown +
                                                 "\", not \"" + in.shownFret + "\"");
    // The label as kept: cut by the field, never inside a surrogate pair.
    cx.expect(labelShown == in.confirmed.label, "the next dialog shows the label \"" +
                                                    shown(labelShown) + "\", not \"" +
                                                    shown(in.confirmed.label) + "\"");
    cx.expect(pairsWhole(labelShown), "the label kept splits a surrogate pair");
    s.checkHost("");
    cx.count("inputs");
}

} // namespace

void addInputChecks(const Plan&, Checks& out) {
    for (const Unit& u : kUnitTexts)
        for (const Input& in : inputs(u))
            out.push_back({std::string("input/") + u.name + "/" + in.name,
                           [u, in](Context& cx) { runInput(cx, u, in); }});
}

} // namespace validate
