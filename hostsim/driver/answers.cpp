// The user's answers to the settings dialog, as the host's dialog script.
#include "hostsim/driver.h"

#include "hostsim/document.h"

#include <cstring>

namespace hostsim {
namespace driver {
namespace {

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

const char* onOff(int32_t v) {
    return v ? "on" : "off";
}

// The dialog's controls as the user sees them.
std::string describe(const ui::DialogRun& r) {
    using namespace control;
    auto value = [&](int16_t n) { return r.control(n) ? r.control(n)->value : 0; };
    return "fret " + r.text8(kFret) + "; " + r.text8(kUnitCaption) + " " + r.text8(kDistance) +
           "; label " + onOff(value(kShowLabel)) + " \"" + r.text8(kLabel) + "\"; chord flag " +
           onOff(value(kChordFlag)) + "; removal " + onOff(value(kRemove));
}

} // namespace

std::vector<ui::Step> dialogScript(const Answers& a, std::string* shown, std::string* confirmed,
                                   std::string* fret) {
    using namespace control;
    std::vector<ui::Step> steps;
    steps.push_back(ui::peek([shown](const ui::DialogRun& r) { *shown = describe(r); }));
    if (!a.capo.empty()) steps.push_back(ui::type(kFret, a.capo));
    if (!a.distance.empty()) steps.push_back(ui::type(kDistance, a.distance));
    if (a.setLabel) steps.push_back(ui::type(kLabel, a.label));
    if (a.noLabel) steps.push_back(ui::setValue(kShowLabel, 0));
    if (a.chordFlag) steps.push_back(ui::setValue(kChordFlag, 1));
    if (a.remove) steps.push_back(ui::setValue(kRemove, 1));
    steps.push_back(ui::peek([confirmed, fret](const ui::DialogRun& r) {
        *confirmed = describe(r);
        if (fret) *fret = r.text8(control::kFret);
    }));
    steps.push_back(ui::click(a.cancel ? kCancel : kOk));
    return steps;
}

void answerWith(const Answers& a, std::string* shown, std::string* confirmed, std::string* fret) {
    setUnitByName(a.unit);
    if (a.wholeDocument) ui::scriptAlerts({1});
    ui::scriptDialog(dialogScript(a, shown, confirmed, fret));
}

bool isUnit(const std::string& name) {
    int16_t code = 0;
    return unitCode(name, &code);
}

void setUnitByName(const std::string& unit) {
    int16_t code = 0;
    if (!unit.empty() && unitCode(unit, &code)) setUnit(code);
}

} // namespace driver
} // namespace hostsim
