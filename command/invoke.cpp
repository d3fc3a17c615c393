// One run of the command: region, settings dialog, one undoable edit, the
// application, a notice when nothing changed, commit or cancel.
#include "invoke.h"

#include "brevado.h"
#include "dialog.h"
#include "resources.h"
#include "settings.h"
#include "strings16.h"

#include <cstring>

namespace {

constexpr uint16_t kAlertQuestion = 33;  // OK and Cancel, question icon
constexpr uint16_t kAlertNotice = 64;    // OK, information icon
constexpr int16_t kDialogFlags = 0x3001;

}  // namespace

bool FX_GetShowTransposed() {
    uint8_t record[12] = {};
    EDataID id = {-2, 0, 0};
    int32_t size = sizeof record;
    if (!FX_LoadEData(kTagShowTransposed, &id, record, &size, FXT_VERSION)) return false;
    int16_t shown;
    std::memcpy(&shown, record, sizeof shown);
    return shown != 0;
}

extern "C" FX_EXPORT int16_t ZemloExtensionInvoke(void* parent, int16_t menuItem,
                                                  EREGION* selection, EREGION* wholeDocument) {
    if (menuItem > 0) return 0;
    unsigned short text[256];

    EREGION* region = selection;
    if (!region) {
        PlugIn_GetStringResource(20003, text, 256);
        if (FX_AlertMessage_UTF16(parent, kAlertQuestion, 0, text, FXT_VERSION) != 1) return 0;
        region = wholeDocument;
    }

    if (stickySettings.label[0] == 0) {
        PlugIn_GetStringResource(20004, text, 256);
        fx_strcpy(stickySettings.label, 256, text);
    }
    stickySettings.removeMode = 0;
    CapoSettings work = stickySettings;
    // Only this dialog confirms this run: a host that returns without running
    // it must not go ahead on the last run's confirmation.
    work.confirmed = 0;

    FF_DialogHandlerProcPtr handler = NewFF_DialogHandlerProc(&BrevadoDialogHandler);
    FX_Dialog(kSettingsDialog, reinterpret_cast<void*>(handler), parent, kDialogFlags, &work,
              FXT_VERSION);
    DisposeFF_DialogHandlerProc(handler);
    if (!work.confirmed) return 0;

    transposed = FX_GetShowTransposed() ? 1 : 0;
    PlugIn_GetStringResource(20002, text, 256);
    FX_StartZemloEdit_UTF16(text, FXT_VERSION);

    short changed = 0;
    const short result = Brevado(region, work.capoFret, work.vertOffset, work.showLabel,
                                 work.label, work.setChordFlag,
                                 static_cast<short>(work.removeMode), &changed);
    stickySettings = work;

    if (changed == 0) {
        PlugIn_GetStringResource(20005, text, 256);
        FX_AlertMessage_UTF16(parent, kAlertNotice, 0, text, FXT_VERSION);
    }
    if (result) FX_EndZemloEdit(FXT_VERSION);
    else FX_CancelZemloEdit(FXT_VERSION);
    return result;
}

extern "C" FX_EXPORT int32_t Ext_invoke(void* parent, int32_t menuItem, EREGION* selection,
                                        EREGION* wholeDocument) {
    return ZemloExtensionInvoke(parent, static_cast<int16_t>(menuItem), selection, wholeDocument);
}
