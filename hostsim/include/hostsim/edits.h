// The simulated host's undoable edits, for tests and zemlo-host.
//
// FX_StartZemloEdit and FX_StartZemloEdit_UTF16 open an edit under a name and
// take a snapshot of the whole document (document.h); FX_EndZemloEdit commits
// the innermost open edit, FX_CancelZemloEdit restores its snapshot exactly.
// Edits nest as the host nests them: an edit opened inside another takes a
// snapshot of its own; committing it folds its changes into the edit around
// it (they are undone with it), cancelling it restores only its own snapshot.
// Only an outermost edit reaches the undo history. hostsim::reset() clears
// everything below; a result or behaviour programmed with host.h replaces
// these built-ins.
#ifndef CAPOCHORDS_HOSTSIM_EDITS_H
#define CAPOCHORDS_HOSTSIM_EDITS_H

#include "hostsim/document.h"
#include "hostsim/host.h"

#include <string>
#include <vector>

namespace hostsim {
namespace edits {

enum class State : uint8_t { Open, Committed, Cancelled, Undone };

struct Edit {
    std::string name;       // UTF-8 (the 8-bit call's Mac Roman converted)
    bool utf16 = false;     // opened with FX_StartZemloEdit_UTF16
    int depth = 0;          // 0 for an outermost edit
    State state = State::Open;
    doc::Document before;   // the document when the edit opened
    doc::Document after;    // the document when it was committed
};

// Every edit since the last reset, in the order opened.
HOSTSIM_API const std::vector<Edit>& all();
// Edits open now.
HOSTSIM_API size_t openCount();
// The host's Undo command: takes back what the last committed outermost edit
// changed (records and frames it added, changed or removed return to what
// they were before it; anything else stays) and marks it Undone. False when
// there is nothing to undo or an edit is open.
HOSTSIM_API bool undo();
// What the plug-in did wrong with edits: an end or cancel with none open, a
// start without a name, and one line per edit still open. Tests expect it empty.
HOSTSIM_API std::vector<std::string> errors();

}  // namespace edits
}  // namespace hostsim

#endif
