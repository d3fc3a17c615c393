#include "hostui_support.h"

#include "hostsim/driver.h"

#include "binding.h"

namespace hostui {
namespace {

// Binds the forwarders of this process to the simulated engine, once.
class BoundToEngine : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(InitializeGlobals(), 0); }
};
const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new BoundToEngine);

bool gInitialized = false;

void enable(OpaqueCocoaWindow* d, int16_t item, bool on) {
    FX_EnableDlgItem(d, item, on ? 1 : 0, FXT_VERSION);
}
int32_t value(OpaqueCocoaWindow* d, int16_t item, int16_t kind) {
    return FX_GetDlgItemVal(d, item, kind, FXT_VERSION);
}

std::function<void(OpaqueCocoaWindow*)> gAtInit;

bool probeHandler(OpaqueCocoaWindow* d, uint32_t msg, int64_t, int64_t, void*) {
    if (msg != 272) return false;
    gAtInit(d);
    FX_EndDialog(d, FXT_VERSION);
    return true;
}

}  // namespace

bool settingsHandler(OpaqueCocoaWindow* d, uint32_t msg, int64_t w, int64_t, void* user) {
    auto* s = static_cast<Settings*>(user);
    if (!s) return false;
    if (msg == 272) {
        s->confirmed = 0;
        FX_SetDlgItemVal(d, 4, 3, s->fret, FXT_VERSION);
        FX_SetDlgString(d, 6, s->distance, FXT_VERSION);
        FX_SetDlgString_UTF16(d, 7, const_cast<char16_t*>(u"EVPUs"), FXT_VERSION);
        FX_SetDlgItemVal(d, 9, 1, s->showLabel, FXT_VERSION);
        enable(d, 10, s->showLabel != 0);
        FX_SetDlgString_UTF16(d, 10, s->label, FXT_VERSION);
        FX_SetDlgItemVal(d, 8, 1, s->chordFlag, FXT_VERSION);
        FX_SetDlgItemVal(d, 11, 1, s->remove, FXT_VERSION);
        FX_SetDlgFocus(d, 4, FXT_VERSION);
        gInitialized = true;
        return true;
    }
    if (msg != 273) return false;
    if (!gInitialized) return true;
    switch (w) {
    case 1:
        s->confirmed = 1;
        s->fret = static_cast<int16_t>(value(d, 4, 3));
        FX_GetDlgString(d, 6, s->distance, 255, FXT_VERSION);
        s->showLabel = static_cast<int16_t>(value(d, 9, 1));
        FX_GetDlgString_UTF16(d, 10, s->label, 256, FXT_VERSION);
        s->chordFlag = static_cast<int16_t>(value(d, 8, 1));
        s->remove = static_cast<int16_t>(value(d, 11, 1));
        FX_EndDialog(d, FXT_VERSION);
        gInitialized = false;
        return true;
    case 2:
        FX_EndDialog(d, FXT_VERSION);
        gInitialized = false;
        return true;
    case 4: {
        int16_t before = s->fret;
        s->fret = static_cast<int16_t>(value(d, 4, 3));
        if (s->fret == 0) {
            s->fret = before;
            FX_SetDlgItemVal(d, 4, 3, before, FXT_VERSION);
            FX_SetDlgFocus(d, 4, FXT_VERSION);
        }
        return true;
    }
    case 9:
        s->showLabel = static_cast<int16_t>(value(d, 9, 1));
        enable(d, 10, s->showLabel != 0);
        return true;
    case 11:
        s->remove = static_cast<int16_t>(value(d, 11, 1));
        enable(d, 4, !s->remove);
        enable(d, 6, !s->remove);
        enable(d, 9, !s->remove);
        enable(d, 10, !s->remove && s->showLabel);
        enable(d, 8, !s->remove);
        return true;
    default:
        return false;
    }
}

void withOpenDialog(const std::function<void(OpaqueCocoaWindow*)>& fn) {
    gAtInit = fn;
    ASSERT_NE(FX_Dialog(20009, reinterpret_cast<void*>(&probeHandler), nullptr, 0, nullptr,
                        FXT_VERSION),
              nullptr);
    gAtInit = nullptr;
}

void HostUi::SetUp() {
    hostsim::reset();
    gInitialized = false;
    hostsim::ui::setDialogFolder(std::string(CAPOCHORDS_BUNDLE) + "/Contents/Resources");
    hostsim::driver::useStringTable(CAPOCHORDS_BUNDLE);
}

std::vector<hostsim::ui::ErrorKind> HostUi::errorKinds() {
    std::vector<hostsim::ui::ErrorKind> k;
    for (const auto& e : hostsim::ui::errors()) k.push_back(e.kind);
    return k;
}

}  // namespace hostui
