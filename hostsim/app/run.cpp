// One run of the plug-in's command in zemlo-host, printed.
#include "run.h"

#include "hostsim/document.h"
#include "hostsim/edits.h"
#include "hostsim/host.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"
#include "scores.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace zemlo {
namespace {

namespace doc = hostsim::doc;
namespace edits = hostsim::edits;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

struct UnitName {
    const char* name;
    int16_t code;
};
const UnitName kUnits[] = {{"evpus", 1},  {"inches", 2}, {"centimeters", 3},
                           {"points", 4}, {"picas", 5},  {"spaces", 6}};

bool unitCode(const std::string& name, int16_t* code) {
    for (const UnitName& u : kUnits)
        if (name == u.name) {
            *code = u.code;
            return true;
        }
    return false;
}

// The host's unit preference (pfgp number 0): 66 bytes, the unit at byte 30.
void setUnit(int16_t code) {
    std::vector<uint8_t> record(66, 0);
    std::memcpy(record.data() + 30, &code, sizeof code);
    doc::put(0x70666770, {0, 0, 0}, record);
}

const char* onOff(int32_t v) { return v ? "on" : "off"; }

// The dialog's controls as the user sees them.
std::string describe(const ui::DialogRun& r) {
    auto value = [&](int16_t n) { return r.control(n) ? r.control(n)->value : 0; };
    return "fret " + r.text8(4) + "; " + r.text8(7) + " " + r.text8(6) + "; label " +
           onOff(value(9)) + " \"" + r.text8(10) + "\"; chord flag " + onOff(value(8)) +
           "; removal " + onOff(value(11));
}

std::string chordText(const score::ChordRecord& c) {
    std::string name = chordName(c);
    std::string text = c.isCapo() ? "capo " + std::to_string(c.fret()) + " " + capoName(name, c.fret())
                                  : name;
    text += " (x " + std::to_string(c.key3) + ", y " + std::to_string(c.vertical);
    if (c.flags & 0x8000) text += ", flagged";
    return text + ")";
}

void printChords(const OpenedScore& s) {
    for (int16_t staff = 1; staff <= s.staves; ++staff) {
        for (int16_t m = 1; m <= s.measures; ++m) {
            const std::vector<score::ChordRecord> chords = score::chords(staff, m);
            if (chords.empty()) continue;
            std::string line;
            for (const score::ChordRecord& c : chords) line += (line.empty() ? "" : ", ") + chordText(c);
            std::printf("  staff %d, measure %d: %s\n", staff, m, line.c_str());
        }
    }
}

void printLabels(const OpenedScore& s) {
    bool any = false;
    for (int16_t staff = 1; staff <= s.staves; ++staff) {
        for (int16_t m = 1; m <= s.measures; ++m) {
            const auto places = score::measureTexts(staff, m);
            const auto texts = score::texts(staff, m);
            for (size_t i = 0; i < places.size() && i < texts.size(); ++i) {
                std::printf("  staff %d, measure %d: \"%s\" at x %d, y %d\n", staff, m,
                            ui::utf8(texts[i]).c_str(), places[i].horizontal, places[i].vertical);
                any = true;
            }
        }
    }
    if (!any) std::printf("  none\n");
}

const char* stateName(edits::State s) {
    switch (s) {
    case edits::State::Open: return "left open";
    case edits::State::Committed: return "committed";
    case edits::State::Cancelled: return "cancelled";
    case edits::State::Undone: return "undone";
    }
    return "?";
}

const char* alertName(uint16_t kind) {
    switch (kind) {
    case 0x21: return "question";
    case 0x30: return "warning";
    case 0x40: return "notice";
    default: return "alert";
    }
}

bool measureRange(const char* text, int16_t* first, int16_t* last) {
    char* end = nullptr;
    long a = std::strtol(text, &end, 10);
    if (end == text || *end != '-') return false;
    const char* second = end + 1;
    long b = std::strtol(second, &end, 10);
    if (end == second || *end || a < 1 || b < a || b > 32767) return false;
    *first = static_cast<int16_t>(a);
    *last = static_cast<int16_t>(b);
    return true;
}

}  // namespace

// What the user does in the dialog, from the options.
std::vector<ui::Step> dialogScript(const RunOptions& o, std::string* shown, std::string* confirmed) {
    std::vector<ui::Step> steps;
    steps.push_back(ui::peek([shown](const ui::DialogRun& r) { *shown = describe(r); }));
    if (!o.capo.empty()) steps.push_back(ui::type(4, o.capo));
    if (!o.distance.empty()) steps.push_back(ui::type(6, o.distance));
    if (o.setLabel) steps.push_back(ui::type(10, o.label));
    if (o.noLabel) steps.push_back(ui::setValue(9, 0));
    if (o.chordFlag) steps.push_back(ui::setValue(8, 1));
    if (o.remove) steps.push_back(ui::setValue(11, 1));
    steps.push_back(ui::peek([confirmed](const ui::DialogRun& r) { *confirmed = describe(r); }));
    steps.push_back(ui::click(o.cancel ? 2 : 1));
    return steps;
}

void setUnitByName(const std::string& unit) {
    int16_t code = 0;
    if (!unit.empty() && unitCode(unit, &code)) setUnit(code);
}

bool parseRunOption(int argc, char** argv, int* i, RunOptions* o, std::string* error) {
    const std::string arg = argv[*i];
    const bool takesValue = arg == "--score" || arg == "--unit" || arg == "--capo" ||
                            arg == "--distance" || arg == "--label" || arg == "--selection";
    if (takesValue && *i + 1 >= argc) {
        *error = arg + " needs a value";
        return false;
    }
    const char* value = takesValue ? argv[*i + 1] : nullptr;
    if (arg == "--score") o->score = value;
    else if (arg == "--unit") {
        int16_t code = 0;
        if (!unitCode(value, &code)) {
            *error = std::string("unknown unit ") + value +
                     " (evpus, inches, centimeters, points, picas, spaces)";
            return false;
        }
        o->unit = value;
    } else if (arg == "--capo") o->capo = value;
    else if (arg == "--distance") o->distance = value;
    else if (arg == "--label") {
        o->label = value;
        o->setLabel = true;
    } else if (arg == "--selection") {
        if (!measureRange(value, &o->firstMeasure, &o->lastMeasure)) {
            *error = std::string("--selection wants FIRST-LAST measures, not ") + value;
            return false;
        }
    } else if (arg == "--no-label") o->noLabel = true;
    else if (arg == "--chord-flag") o->chordFlag = true;
    else if (arg == "--remove") o->remove = true;
    else if (arg == "--cancel") o->cancel = true;
    else if (arg == "--whole-document") o->wholeDocument = true;
    else return false;
    if (takesValue) ++*i;
    return true;
}

int runCommand(InvokeFn invoke, const RunOptions& o) {
    OpenedScore s;
    std::string error;
    if (!openScore(o.score, &s, &error)) {
        std::fprintf(stderr, "zemlo-host: %s\n", error.c_str());
        return 1;
    }
    int16_t unit = 0;
    if (!o.unit.empty() && unitCode(o.unit, &unit)) setUnit(unit);
    std::printf("\nScore \"%s\": %d staves, %d measures, unit %s\n", s.title.c_str(), s.staves,
                s.measures, o.unit.empty() ? "evpus (none set)" : o.unit.c_str());
    std::printf("Chords before:\n");
    printChords(s);

    score::Region whole = score::region(1, 1, static_cast<int16_t>(s.staves), static_cast<int16_t>(s.measures));
    score::Region selection = whole;
    if (o.firstMeasure > 0) {
        selection.firstMeasure = o.firstMeasure;
        selection.lastMeasure = o.lastMeasure;
    }
    if (o.wholeDocument) {
        ui::scriptAlerts({1});
        std::printf("Selection: none (the whole document, when asked)\n");
    } else {
        std::printf("Selection: staves 1-%d, measures %d-%d\n", s.staves, selection.firstMeasure,
                    selection.lastMeasure);
    }
    std::string shown, confirmed;
    ui::scriptDialog(dialogScript(o, &shown, &confirmed));
    const int16_t result = invoke(nullptr, 0, o.wholeDocument ? nullptr : &selection, &whole);

    if (!shown.empty()) std::printf("Dialog shown: %s\n", shown.c_str());
    if (!confirmed.empty())
        std::printf("Dialog %s: %s\n", o.cancel ? "cancelled" : "confirmed", confirmed.c_str());
    for (const ui::Alert& a : ui::alerts())
        std::printf("Alert (%s): %s\n", alertName(a.kind), a.text.c_str());
    std::printf("Result: %d\n", result);
    if (edits::all().empty()) std::printf("Edit: none\n");
    for (const edits::Edit& e : edits::all())
        std::printf("Edit \"%s\": %s\n", e.name.c_str(), stateName(e.state));
    std::printf("Chords after:\n");
    printChords(s);
    std::printf("Labels:\n");
    printLabels(s);

    int faults = 0;
    for (const ui::Error& e : ui::errors()) {
        std::fprintf(stderr, "zemlo-host: %s\n", e.text.c_str());
        ++faults;
    }
    for (const std::string& e : edits::errors()) {
        std::fprintf(stderr, "zemlo-host: %s\n", e.c_str());
        ++faults;
    }
    return faults ? 1 : 0;
}

}  // namespace zemlo
