// Inside the simulated host engine.
#ifndef CAPOCHORDS_HOSTSIM_ENGINE_H
#define CAPOCHORDS_HOSTSIM_ENGINE_H

#include "hostsim/host.h"

#include <array>
#include <cstring>

namespace hostsim {

// Runs one call of a host function: counts it, logs it, applies a scheduled
// fault, else its behaviour, else its programmed result.
uint64_t dispatch(Fx fx, const uint64_t* args, size_t n);
// Called by the resolver at every lookup: counts it, answers presence.
bool resolve(Fx fx);
// The document store (docstore.cpp): which functions it serves as built-in
// behaviours, and its return to an empty document.
bool servedByDocument(Fx fx);
void resetDocument();

// The host's own behaviours: what a call does when the scenario has
// programmed neither a behaviour nor a result for it.
using BuiltIns = std::array<Handler, kFxCount>;
// The user interface (dialogs, alerts, progress display): ui.cpp.
void addUiBuiltIns(BuiltIns& b);
void resetUi();
// Scores: the slot-to-staff table and the fonts (score.cpp).
void addScoreBuiltIns(BuiltIns& b);
void resetScore();
// Undoable edits (edits.cpp).
void addEditBuiltIns(BuiltIns& b);
void resetEdits();

}  // namespace hostsim

#endif
