// The menu command from the host's call to the last record written.
#ifndef CAPOCHORDS_COMMAND_INVOKE_H
#define CAPOCHORDS_COMMAND_INVOKE_H

#include "records.h"

extern "C" {
// The host's show-transposed setting at the last confirmed run (0 or 1);
// defined with the other exported globals.
FX_EXPORT extern int16_t transposed;

// Runs the command on `selection`, or, when that is null and the user agrees,
// on `wholeDocument`. 1 when the document changed and the edit was committed,
// else 0. `parent` is the parent of every alert and of the dialog.
FX_EXPORT int16_t ZemloExtensionInvoke(void* parent, int16_t menuItem, EREGION* selection,
                                       EREGION* wholeDocument);
// The same for hosts that pass and expect full-width integers.
FX_EXPORT int32_t Ext_invoke(void* parent, int32_t menuItem, EREGION* selection,
                             EREGION* wholeDocument);
}

// True when the host shows the score transposed.
bool FX_GetShowTransposed();

#endif
