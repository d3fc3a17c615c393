// The capo chord application: one walk over the region, measure by measure
// and, within a measure, staff by staff.
#include "brevado.h"

#include "eu16string.h"
#include "resources.h"
#include "strings16.h"
#include "textblocks.h"

#include <climits>
#include <cstring>

namespace {

constexpr short kLabelHorizontal = -200;
constexpr int kMaxNewCapoChords = 16;  // per staff-measure

bool isCapoChord(const EDTChord2010& c) { return (c.capoBits & kCapoChordBit) != 0; }

void writeCapoFret(EDTChord2010& c, short capoFret) {
    c.capoBits = static_cast<uint16_t>((c.capoBits & ~kCapoFretMask) | kCapoChordBit |
                                       static_cast<uint16_t>(capoFret));
}

void writeChordFlag(EDTChord2010& c, short setChordFlag) {
    if (setChordFlag) c.flags = static_cast<uint16_t>(c.flags | kChordFlagBit);
    else c.flags = static_cast<uint16_t>(c.flags & ~kChordFlagBit);
}

int16_t loadChord(short staff, short measure, int16_t index, EDTChord2010& chord) {
    EDataID id = {staff, measure, index};
    int32_t size = sizeof chord;
    return FX_LoadEData(kTagChord, &id, &chord, &size, FXT_VERSION);
}

int16_t saveChord(short staff, short measure, int16_t index, EDTChord2010& chord) {
    EDataID id = {staff, measure, index};
    return FX_SaveEData(kTagChord, &id, &chord, sizeof chord, FXT_VERSION);
}

// One run's state; nothing survives the call.
struct Run {
    const EREGION& region;
    short capoFret, vertOffset, showLabel;
    unsigned short* label;
    short setChordFlag, removeMode;
    short* changedCount;

    bool metCapoChord = false;
    bool labelWritten = false;
    bool anyChange = false;
    short baseline = 0;
    unsigned short labelSearchText[256] = {};

    void changed() {
        if (changedCount) ++*changedCount;
        anyChange = true;
    }

    // The label on every staff of the region's first measure, found again
    // (by position or by its text) and rewritten on a later run.
    void writeLabelBlocks() {
        EOrvexFont font;
        font.effects = 0x0002;
        eu16string timesNewRoman("Times New Roman");
        font.fontNumber = static_cast<uint16_t>(FX_FontNameToNum_UTF16(
            const_cast<unsigned short*>(timesNewRoman.data()), FXT_VERSION));
        font.size = 12;
        // The document's definition 14 replaces as much of the default as
        // it holds; the host leaves the rest alone.
        EDataID fontId = {14, 0, 0};
        int32_t size = sizeof font;
        if (FX_LoadEData(kTagFontDef, &fontId, &font, &size, FXT_VERSION)) font.effects |= 0x0002;
        for (int s = region.firstSlot; s <= region.lastSlot; ++s) {
            const short staff = FX_SlotToInst(static_cast<int16_t>(s), region.slotField, FXT_VERSION);
            const short found = FindMeasTextBlock(labelSearchText, staff, region.firstMeasure,
                                                  kLabelHorizontal, baseline);
            if (found == -1) CreateMeasTextBlock(label, staff, region.firstMeasure, baseline, &font);
            else UpdateMeasTextBlock(label, staff, region.firstMeasure, found, baseline, &font);
        }
    }

    void removeLabelBlock(const unsigned short* text, short staff, short measure) {
        const short found = FindMeasTextBlock(text, staff, measure, kLabelHorizontal, baseline);
        if (found != -1) RemoveMeasTextBlock(staff, measure, found);
    }

    void walkChords(short staff, short measure) {
        EDTChord2010 newCapoChords[kMaxNewCapoChords];
        int newCount = 0;
        int16_t appendIndex = 0;
        // Index stays below the 16-bit limit even for a host that answers
        // every load.
        for (int index = 0; index < SHRT_MAX; ++index) {
            // Cleared each time: a record the host answers short reads as its
            // own bytes and zeros, not as the record read before it.
            EDTChord2010 chord = {};
            if (!loadChord(staff, measure, static_cast<int16_t>(index), chord)) break;
            if (newCount == kMaxNewCapoChords) break;  // this record and the rest stay as they are

            if (!removeMode && showLabel && label && label[0] && !labelWritten) {
                writeLabelBlocks();
                labelWritten = true;
            }

            if (isCapoChord(chord)) {
                metCapoChord = true;
                if (removeMode) {
                    EDataID id = {staff, measure, static_cast<int16_t>(index)};
                    if (FX_DeleteEData(kTagChord, &id, FXT_VERSION)) {
                        changed();
                        --index;  // the next record moved into this index
                    }
                    static const unsigned short kNoText[1] = {0};
                    removeLabelBlock(label ? label : kNoText, staff, measure);
                } else {
                    writeCapoFret(chord, capoFret);
                    EDTChord2010 sibling = {};
                    EDataID from = {staff, measure, 0};
                    chord.vertical = GetSiblingChord(&from, chord, &sibling)
                                         ? static_cast<int16_t>(sibling.vertical + vertOffset)
                                         : vertOffset;
                    writeChordFlag(chord, setChordFlag);
                    if (saveChord(staff, measure, static_cast<int16_t>(index), chord)) changed();
                }
            } else if (!removeMode) {
                EDataID from = {staff, measure, 0};
                const short hasSibling = GetSiblingChord(&from, chord, nullptr);
                // Every search ends at the record count, unless a failed load
                // cut it short; the largest end seen, and never less than the
                // records walked, keeps the appends off existing records.
                if (from.third > appendIndex) appendIndex = from.third;
                if (index + 1 > appendIndex) appendIndex = static_cast<int16_t>(index + 1);
                if (!hasSibling) {
                    EDTChord2010& copy = newCapoChords[newCount++];
                    copy = chord;
                    copy.vertical = static_cast<int16_t>(copy.vertical + vertOffset);
                }
            }
        }
        // Once a capo chord has been met anywhere in the run, no new ones are
        // added: the score already has its capo chords, and they were updated.
        if (metCapoChord) return;
        for (int i = 0; i < newCount; ++i) {
            EDTChord2010& c = newCapoChords[i];
            writeCapoFret(c, capoFret);
            writeChordFlag(c, setChordFlag);
            if (saveChord(staff, measure, appendIndex, c)) changed();
            appendIndex = static_cast<int16_t>(appendIndex + 1);
        }
    }
};

}  // namespace

short GetChordBaselineInEVPUs() { return 130; }

short GetSiblingChord(EDataID* id, EDTChord2010 chord, EDTChord2010* sibling) {
    if (!id) return 0;
    short found = 0;
    for (;;) {
        EDTChord2010 candidate = {};
        int32_t size = sizeof candidate;
        if (!FX_LoadEData(kTagChord, id, &candidate, &size, FXT_VERSION)) break;
        if (isCapoChord(candidate) != isCapoChord(chord) &&
            candidate.siblingKey3 == chord.siblingKey3 &&
            candidate.siblingKey1 == chord.siblingKey1 &&
            candidate.siblingKey2 == chord.siblingKey2) {
            if (sibling) *sibling = candidate;
            found = 1;
        }
        if (id->third == SHRT_MAX) break;  // no index beyond: a host answering every load ends here
        ++id->third;
    }
    return found;
}

short Brevado(EREGION* region, short capoFret, short vertOffset, short showLabel,
              unsigned short* label, short setChordFlag, short removeMode, short* changedCount) {
    if (!region) return 0;
    if (capoFret < 1 || capoFret > 63) return 0;

    Run run{*region, capoFret, vertOffset, showLabel, label, setChordFlag, removeMode, changedCount};
    const int64_t steps = (static_cast<int64_t>(region->lastSlot) - region->firstSlot + 1) *
                          (static_cast<int64_t>(region->lastMeasure) - region->firstMeasure + 1);
    void* progress = FX_StartMassEdit(nullptr, static_cast<int32_t>(steps), FXT_VERSION);

    PlugIn_GetStringResource(20013, run.labelSearchText, 256);
    run.baseline = static_cast<short>(vertOffset + GetChordBaselineInEVPUs());

    bool cancelled = false;
    for (int m = region->firstMeasure; m <= region->lastMeasure && !cancelled; ++m) {
        const auto measure = static_cast<short>(m);
        for (int s = region->firstSlot; s <= region->lastSlot; ++s) {
            const short staff = FX_SlotToInst(static_cast<int16_t>(s), region->slotField, FXT_VERSION);
            if (!FX_MassEditProgress(progress, 1, staff, measure, -1, FXT_VERSION)) {
                cancelled = true;
                break;
            }
            // A measure record that cannot be read holds no chords we know of.
            EDTMeasureSpec measureRecord = {};
            EDataID measureId = {measure, 0, 0};
            int32_t size = sizeof measureRecord;
            if (FX_LoadEData(kTagMeasureSpec, &measureId, &measureRecord, &size, FXT_VERSION) &&
                (measureRecord.chordFlags & kMeasureChordFlag))
                run.walkChords(staff, measure);
            if (removeMode) run.removeLabelBlock(run.labelSearchText, staff, measure);
        }
    }
    FX_EndMassEdit(progress, cancelled ? 1 : 0, FXT_VERSION);
    return run.anyChange ? 1 : 0;
}
