// Support of the host user interface suites: the forwarders bound once to the
// simulated engine, and a settings dialog handler that behaves like the
// plug-in's own.
#ifndef CAPOCHORDS_TESTS_HOSTUI_SUPPORT_H
#define CAPOCHORDS_TESTS_HOSTUI_SUPPORT_H

#include "hostsim/ui.h"
#include "zemlopdk.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace hostui {

// What the dialog edits, as the command keeps it.
struct Settings {
    int16_t fret = 1;
    char distance[256] = "64";
    int16_t showLabel = 1;
    char16_t label[256] = u"Capo 1";
    int16_t chordFlag = 0;
    int16_t remove = 0;
    int16_t confirmed = 0;
};

// Fills the controls at 272, follows the fret, label and removal boxes at
// 273, reads everything back and ends on 1, ends on 2.
bool settingsHandler(OpaqueCocoaWindow* d, uint32_t msg, int64_t w, int64_t l, void* user);

// Runs dialog 20009 with a handler that, at 272, hands the open dialog to fn
// and then ends it.
void withOpenDialog(const std::function<void(OpaqueCocoaWindow*)>& fn);

inline void* parentTag() { return reinterpret_cast<void*>(uintptr_t{0x5EED}); }
inline void* showSettings(Settings* s) {
    return FX_Dialog(20009, reinterpret_cast<void*>(&settingsHandler), parentTag(), 0x3001, s,
                     FXT_VERSION);
}

// A fresh host that reads dialog descriptions from the built bundle.
class HostUi : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override { hostsim::reset(); }
    static std::vector<hostsim::ui::ErrorKind> errorKinds();
};

}  // namespace hostui

#endif
