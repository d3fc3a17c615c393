// zemlo-host's run mode: one run of the plug-in's command on a score, the
// dialog answered from the command line, the score printed before and after.
#ifndef CAPOCHORDS_HOSTSIM_APP_RUN_H
#define CAPOCHORDS_HOSTSIM_APP_RUN_H

#include <cstdint>
#include <string>
#include <vector>

#include "hostsim/ui.h"

namespace zemlo {

// The host's menu item record. The plug-in fills the first 772 bytes; the
// host's record is longer, and the rest must come back as it went in.
struct MenuItemRecord {
    uint16_t itemText[128];
    uint16_t secondText[128];
    uint16_t undoText[128];
    uint16_t word1;
    uint16_t word2;
    uint8_t hostOnly[252];
};
static_assert(sizeof(MenuItemRecord) == 1024, "the host's record");


struct RunOptions {
    std::string score = "sample";
    std::string unit;       // the score's measurement unit by name; empty: none set (EVPU)
    std::string capo;       // typed into the fields as given; empty: left as shown
    std::string distance;
    std::string label;
    bool setLabel = false;
    bool noLabel = false;
    bool chordFlag = false;
    bool remove = false;
    bool cancel = false;    // Cancel instead of OK
    bool wholeDocument = false;  // nothing selected; the question answered OK
    int16_t firstMeasure = 0;    // the selected measures; 0: the whole score
    int16_t lastMeasure = 0;
};

// Reads one run option at argv[*i] (moving *i past its value). False when it
// is none or lacks its value; *error then says why when it was one.
bool parseRunOption(int argc, char** argv, int* i, RunOptions* o, std::string* error);

using InvokeFn = int16_t (*)(void* parent, int16_t menuItem, void* selection, void* wholeDocument);

// A MusicXML lead sheet for `apply`: the run's answers, the selection and
// where the result goes.
struct ApplyOptions {
    RunOptions run;
    std::string score;   // empty: the bundled sample lead sheet
    std::string output;  // empty: <score's name>.capo.musicxml here
    int firstMeasure = 0, lastMeasure = 0;  // 0: all
    int firstStaff = 0, lastStaff = 0;
};

bool parseApplyOption(int argc, char** argv, int* i, ApplyOptions* a, std::string* error);
// Reads the lead sheet, runs the command once on it and writes the result;
// nothing is written unless the run went through. 0 on success.
int applyCommand(InvokeFn invoke, const ApplyOptions& a);

// The dialog steps that give the options' answers, and the unit preference.
std::vector<hostsim::ui::Step> dialogScript(const RunOptions& o, std::string* shown, std::string* confirmed);
void setUnitByName(const std::string& unit);

// Opens the score, runs the command once through `invoke` and prints what
// happened. 0 when the run went through without a fault of the plug-in.
int runCommand(InvokeFn invoke, const RunOptions& o);

}  // namespace zemlo

#endif
