// The settings dialog: fret, distance in the user's unit, label, chord flag,
// removal.
#include "dialog.h"

#include "eu16string.h"
#include "resources.h"
#include "settings.h"
#include "strings16.h"
#include "units.h"

namespace {

// Commands are taken only between initialisation and the end of the dialog.
uint16_t initialized = 0;

// Value kinds of the host's item calls.
constexpr int16_t kCheckBox = 1;
constexpr int16_t kNumberField = 3;
constexpr short kDistanceUnreadable = 64;
constexpr int32_t kDistanceLimit = 32767;  // the largest 16-bit distance

int16_t getValue(OpaqueCocoaWindow* d, int16_t control, int16_t kind) {
    return static_cast<int16_t>(FX_GetDlgItemVal(d, control, kind, FXT_VERSION));
}

void setValue(OpaqueCocoaWindow* d, int16_t control, int16_t kind, int32_t value) {
    FX_SetDlgItemVal(d, control, kind, value, FXT_VERSION);
}

void enable(OpaqueCocoaWindow* d, int16_t control, bool on) {
    FX_EnableDlgItem(d, control, on ? 1 : 0, FXT_VERSION);
}

void readLabel(OpaqueCocoaWindow* d, CapoSettings& s) {
    FX_GetDlgString_UTF16(d, kCtlLabel, s.label, 256, FXT_VERSION);
    s.label[255] = 0;
}

void initialise(OpaqueCocoaWindow* d, CapoSettings& s) {
    s.confirmed = 0;
    setValue(d, kCtlCapoFret, kNumberField, s.capoFret);
    const EUNIT unit = GetZemloCurrentUnit();
    evpuToStrInCurrUnits(s.vertOffsetText, s.vertOffset);
    FX_SetDlgString(d, kCtlDistance, s.vertOffsetText, FXT_VERSION);
    unsigned short format[64];
    unsigned short caption[64];
    PlugIn_GetStringResource(20012, format, 64);
    fx_sprintf(caption, 64, format, UnitString(unit));
    FX_SetDlgString_UTF16(d, kCtlUnitCaption, caption, FXT_VERSION);
    setValue(d, kCtlShowLabel, kCheckBox, s.showLabel);
    enable(d, kCtlLabel, s.showLabel != 0);
    FX_SetDlgString_UTF16(d, kCtlLabel, s.label, FXT_VERSION);
    setValue(d, kCtlChordFlag, kCheckBox, s.setChordFlag);
    setValue(d, kCtlRemove, kCheckBox, s.removeMode);
    FX_SetDlgFocus(d, kCtlCapoFret, FXT_VERSION);
    initialized = 1;
}

void end(OpaqueCocoaWindow* d) {
    FX_EndDialog(d, FXT_VERSION);
    initialized = 0;
}

// The distance typed, in EVPU rounded half up: 64 when it cannot be read.
// A distance above 32,767 EVPU is limited to 32,767; a negative one cannot be typed.
short readDistance(OpaqueCocoaWindow* d, CapoSettings& s) {
    ACC_decimal value = {0, 0, 1000};
    const EUNIT unit = GetZemloCurrentUnit();
    FX_GetDlgString(d, kCtlDistance, s.vertOffsetText, 255, FXT_VERSION);
    s.vertOffsetText[255] = 0;
    if (!StrToDecimal(s.vertOffsetText, &value)) return kDistanceUnreadable;
    // Refused only when its products leave 32 bits: far beyond 32,767 EVPU.
    if (!UnitConverterFits(&value, unit, EUNIT_EVPUS)) return kDistanceLimit;
    int64_t evpu = value.whole;
    if (2 * static_cast<int64_t>(value.fraction) >= value.precision) ++evpu;
    return static_cast<short>(evpu > kDistanceLimit ? kDistanceLimit : evpu);
}

void confirm(OpaqueCocoaWindow* d, CapoSettings& s) {
    s.confirmed = 1;
    s.capoFret = getValue(d, kCtlCapoFret, kNumberField);
    s.vertOffset = readDistance(d, s);
    s.showLabel = getValue(d, kCtlShowLabel, kCheckBox);
    readLabel(d, s);
    s.setChordFlag = getValue(d, kCtlChordFlag, kCheckBox);
    s.removeMode = static_cast<uint16_t>(getValue(d, kCtlRemove, kCheckBox));
    end(d);
}

// Keeps the number in the label in step with the fret: the first run of
// digits is replaced, the text around it kept ("Capo 3" becomes "Capo 5").
void fretChanged(OpaqueCocoaWindow* d, CapoSettings& s) {
    const int16_t previous = s.capoFret;
    s.capoFret = getValue(d, kCtlCapoFret, kNumberField);
    if (s.capoFret == 0) {
        s.capoFret = previous;
        setValue(d, kCtlCapoFret, kNumberField, previous);
        FX_SetDlgFocus(d, kCtlCapoFret, FXT_VERSION);
        return;
    }
    readLabel(d, s);
    unsigned short prefix[64];
    unsigned short suffix[64];
    int p = 0;
    for (; s.label[p] && !capochords::iswdigit(s.label[p]); ++p)
        if (p < 63) prefix[p] = s.label[p];  // a longer prefix is cut like the suffix
    prefix[p < 63 ? p : 63] = 0;
    const int digits = p;
    while (s.label[p] && capochords::iswdigit(s.label[p])) ++p;
    fx_strcpy(suffix, 64, s.label + p);
    if (p > digits) {
        const eu16string format("%S%d%S");
        fx_sprintf(s.label, 256, format.data(), prefix, static_cast<int>(s.capoFret), suffix);
    }
    FX_SetDlgString_UTF16(d, kCtlLabel, s.label, FXT_VERSION);
}

void removeChanged(OpaqueCocoaWindow* d, CapoSettings& s) {
    s.removeMode = static_cast<uint16_t>(getValue(d, kCtlRemove, kCheckBox));
    const bool writing = s.removeMode == 0;
    enable(d, kCtlCapoFret, writing);
    enable(d, kCtlDistance, writing);
    enable(d, kCtlShowLabel, writing);
    enable(d, kCtlLabel, writing && s.showLabel != 0);
    enable(d, kCtlChordFlag, writing);
}

}  // namespace

bool BrevadoDialogHandler(OpaqueCocoaWindow* dialog, uint32_t message, int64_t wParam,
                          int64_t lParam, void* userData) {
    if (!userData) return false;
    CapoSettings& s = *static_cast<CapoSettings*>(userData);
    if (message == kMsgInitDialog) {
        initialise(dialog, s);
        return true;
    }
    if (message != kMsgCommand) return false;
    if (!initialized) return true;
    switch (GET_WM_COMMAND_ID(wParam, lParam)) {
    case kCtlOK:
        confirm(dialog, s);
        return true;
    case kCtlCancel:
        end(dialog);
        return true;
    case kCtlCapoFret:
        fretChanged(dialog, s);
        return true;
    case kCtlShowLabel:
        s.showLabel = getValue(dialog, kCtlShowLabel, kCheckBox);
        enable(dialog, kCtlLabel, s.showLabel != 0);
        return true;
    case kCtlRemove:
        removeChanged(dialog, s);
        return true;
    default:
        return false;
    }
}
