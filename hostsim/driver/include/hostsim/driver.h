// The host driving a plug-in: the bundle loaded into a fresh host, the
// start-up every host goes through (main, version, init, enumeration,
// status), and the user's answers to the settings dialog as a script of
// steps. zemlo-host and the validator drive the plug-in through this alone.
#ifndef CAPOCHORDS_HOSTSIM_DRIVER_H
#define CAPOCHORDS_HOSTSIM_DRIVER_H

#include "hostsim/boundary.h"
#include "hostsim/plugin.h"
#include "hostsim/ui.h"

#include <cstdint>
#include <string>
#include <vector>

namespace hostsim {
namespace driver {

using InvokeFn = int16_t (*)(void* parent, int16_t menuItem, void* selection, void* wholeDocument);

// The host's side of a loaded plug-in: its dialogs described in its bundle,
// their captions from its string table, and the host answering that it runs
// Mach-O images, as the real one does.
void attach(const Plugin& plugin);
// Captions given as string numbers read from the string table of the bundle
// at `bundlePath`, in the language the plug-in picks.
void useStringTable(const std::string& bundlePath);

// Memory the host hands the plug-in during start-up. Plain by default; the
// validator hands guarded memory and inspects it after each call.
class StartMemory {
  public:
    virtual ~StartMemory() = default;
    virtual int32_t* initValue();
    virtual void afterInit() {}
    // A fresh record for each item enumerated.
    virtual MenuItemRecord* menuRecord();
    virtual void afterEnumerate(int /*index*/) {}

  private:
    int32_t value_ = -1;
    MenuItemRecord record_{};
};

struct MenuItem {
    std::u16string text, second, undo;
    int16_t status = 0;
};

struct StartUp {
    std::vector<std::string> missing; // start-up entry points the bundle lacks
    int bound = 0;                    // main's answer
    uint32_t version = 0;
    int16_t initialised = 0;
    int32_t initValue = 0;
    std::vector<MenuItem> items;
};

// main, version, init, then items 0, 1, ... until the plug-in offers no more
// or `maxItems` are enumerated, each followed by its status. Nothing is
// called when an entry point is missing.
StartUp start(const Plugin& plugin, int maxItems, StartMemory& memory);
StartUp start(const Plugin& plugin, int maxItems);

// The user's answers to the settings dialog: texts typed into its fields as
// given (empty: left as shown), boxes set or cleared, OK or Cancel.
struct Answers {
    std::string unit; // the score's measurement unit by name; empty: none set (EVPU)
    std::string capo;
    std::string distance;
    std::string label;
    bool setLabel = false;
    bool noLabel = false;
    bool chordFlag = false;
    bool remove = false;
    bool cancel = false;        // Cancel instead of OK
    bool wholeDocument = false; // nothing selected; the question answered OK
};

// The dialog steps that give the answers; *shown and *confirmed receive the
// dialog as the user saw it when it opened and before the last click, and
// *fret (when given) the fret field's text then.
std::vector<ui::Step> dialogScript(const Answers& a, std::string* shown, std::string* confirmed,
                                   std::string* fret = nullptr);
// Everything the user will answer before choosing the command: the unit
// preference, OK to the question when nothing is selected, the dialog script.
void answerWith(const Answers& a, std::string* shown, std::string* confirmed,
                std::string* fret = nullptr);
// The measurement units by name: evpus, inches, centimeters, points, picas, spaces.
bool isUnit(const std::string& name);
// Sets the host's unit preference; an empty or unknown name sets none.
void setUnitByName(const std::string& unit);

} // namespace driver
} // namespace hostsim

#endif
