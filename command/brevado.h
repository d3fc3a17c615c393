// The capo chord application.
#ifndef CAPOCHORDS_COMMAND_BREVADO_H
#define CAPOCHORDS_COMMAND_BREVADO_H

#include "records.h"

// Walks the region's chord symbols and writes, updates or (in removal)
// deletes their capo chords, and the label blocks on every staff of the
// region's first measure. 1 when at least one chord record was saved or
// deleted, else 0; label blocks do not count. `changedCount` (may be null)
// grows by one per chord record saved or deleted. Runs behind the host's
// cancellable progress display.
short Brevado(EREGION* region, short capoFret, short vertOffset, short showLabel,
              unsigned short* label, short setChordFlag, short removeMode, short* changedCount);

// 1 when a record among the chord records `id` addresses (from its index on)
// is the sibling of `chord`: exactly one of the two is a capo chord and the
// three sibling keys agree. The last match is copied into `sibling` (may be
// null). On return the index of `id` is the number of records read.
short GetSiblingChord(EDataID* id, EDTChord2010 chord, EDTChord2010* sibling);

// The chord baseline, EVPU.
short GetChordBaselineInEVPUs();

#endif
