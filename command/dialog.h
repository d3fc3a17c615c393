// The settings dialog's handler.
#ifndef CAPOCHORDS_COMMAND_DIALOG_H
#define CAPOCHORDS_COMMAND_DIALOG_H

#include "zemlopdk.h"

// Win32 dialog messages the handler takes care of.
constexpr uint32_t kMsgInitDialog = 272;
constexpr uint32_t kMsgCommand = 273;

// The dialog number the host shows; a numbering of its own, apart from the
// string numbers.
constexpr int16_t kSettingsDialog = 20009;

// Control numbers of the settings dialog.
enum : int16_t {
    kCtlOK = 1,
    kCtlCancel = 2,
    kCtlCapoFret = 4,
    kCtlDistance = 6,
    kCtlUnitCaption = 7,
    kCtlChordFlag = 8,
    kCtlShowLabel = 9,
    kCtlLabel = 10,
    kCtlRemove = 11,
};

// The control a command message names: the whole of wParam.
inline int64_t GET_WM_COMMAND_ID(int64_t wParam, int64_t /*lParam*/) { return wParam; }

// Moves values between the dialog's controls and the CapoSettings record
// that arrives as user data; ends the dialog on OK and Cancel. True when it
// took care of the message.
bool BrevadoDialogHandler(OpaqueCocoaWindow* dialog, uint32_t message, int64_t wParam,
                          int64_t lParam, void* userData);

#endif
