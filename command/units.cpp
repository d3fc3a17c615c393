// Measurement units and decimal entry.
#include "units.h"

#include "records.h"
#include "resources.h"
#include "zemlopdk.h"

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

// One name buffer per unit, the EVPU one also for codes outside 1 to 6.
unsigned short UnitStrEvpus[256];
unsigned short UnitStrSpaces[256];
unsigned short UnitStrCents[256];
unsigned short UnitStrInches[256];
unsigned short UnitStrPicas[256];
unsigned short UnitStrPoints[256];

// Everything the command knows of a unit, in one row.
struct UnitRow {
    EUNIT unit;
    int32_t factor;       // tenths of an EVPU per unit
    int nameString;       // string number of the unit's name
    unsigned short* name; // where UnitString fetches the name to
    int digits;           // decimals shown: thousandths, at least this many digits
};

constexpr UnitRow kUnits[] = {
    {EUNIT_EVPUS, 10, 20006, UnitStrEvpus, 0},    {EUNIT_INCHES, 2880, 20009, UnitStrInches, 3},
    {EUNIT_CENTS, 1130, 20008, UnitStrCents, 3},  {EUNIT_POINTS, 40, 20011, UnitStrPoints, 2},
    {EUNIT_PICAS, 480, 20010, UnitStrPicas, 3},   {EUNIT_SPACES, 240, 20007, UnitStrSpaces, 3},
};
// Any other code: factor 1, the EVPU name, three decimals (none for code 0).
constexpr UnitRow kOtherUnit = {EUNIT(0), 1, 20006, UnitStrEvpus, 3};

const UnitRow& rowOf(EUNIT unit) {
    for (const UnitRow& r : kUnits)
        if (r.unit == unit) return r;
    return kOtherUnit;
}

constexpr int32_t kPrecisions[] = {10, 100, 1000, 10000, 100000, 1000000};

bool fits32(int64_t v) { return v >= INT32_MIN && v <= INT32_MAX; }

}  // namespace

namespace capochords {
int isdigit(int c) { return c >= 0 && c <= 255 && c >= '0' && c <= '9'; }
int iswdigit(int c) { return c >= 0 && c <= 255 && c >= '0' && c <= '9'; }
}  // namespace capochords

short PrecisionToDigitCnt(int32_t precision) {
    for (short i = 0; i < 6; ++i)
        if (kPrecisions[i] == precision) return static_cast<short>(i + 1);
    return 0;
}

int32_t DigitCntToPrecision(short digits) {
    return digits >= 1 && digits <= 6 ? kPrecisions[digits - 1] : 0;
}

EUNIT GetZemloCurrentUnit() {
    uint8_t prefs[66] = {};
    EDataID id = {0, 0, 0};
    int32_t size = sizeof prefs;
    if (!FX_LoadEData(kTagUnitPrefs, &id, prefs, &size, FXT_VERSION)) return EUNIT_EVPUS;
    int16_t unit;
    std::memcpy(&unit, prefs + 30, sizeof unit);
    return static_cast<EUNIT>(unit);
}

bool UnitConverterFits(ACC_decimal* value, EUNIT from, EUNIT to) {
    const int64_t P = value->precision;
    const int64_t Ff = rowOf(from).factor, Ft = rowOf(to).factor;
    if (P <= 0) return false;  // no division by a precision that is not one
    // The steps of 32-bit arithmetic, each checked before the next so that
    // nothing wraps: a value that does not fit is refused, not converted.
    const int64_t N = static_cast<int64_t>(value->whole) * P + value->fraction;
    if (!fits32(N)) return false;
    const int64_t A = N * Ff, B = P * Ft;
    if (!fits32(A) || !fits32(B)) return false;
    const int64_t whole = A / B;
    const int64_t R = A - whole * B;
    const int64_t T = B / P;
    int64_t fraction = R / T;
    if (2 * (R - fraction * T) >= T) ++fraction;
    value->whole = static_cast<int32_t>(whole);
    value->fraction = static_cast<int32_t>(fraction);
    return true;
}

ACC_decimal UnitConverter(ACC_decimal* value, EUNIT from, EUNIT to) {
    UnitConverterFits(value, from, to);
    return *value;
}

char* evpuToStrInCurrUnits(char* buffer, short evpu) {
    if (!buffer) return nullptr;
    const EUNIT unit = GetZemloCurrentUnit();
    // Converted as a magnitude, so that a negative distance reads "-0.222".
    ACC_decimal d = {evpu < 0 ? -evpu : evpu, 0, 1000};
    UnitConverter(&d, EUNIT_EVPUS, unit);
    const char* sign = evpu < 0 ? "-" : "";
    // The fraction in thousandths with at least the unit's digits (a
    // precision pads with zeros; a '0' flag would add nothing).
    const int digits = unit == 0 ? 0 : rowOf(unit).digits;
    if (digits == 0)
        std::snprintf(buffer, 24, "%s%d", sign, d.whole);
    else
        std::snprintf(buffer, 24, "%s%d.%.*d", sign, d.whole, digits, d.fraction);
    return buffer;
}

unsigned short* UnitString(EUNIT unit) {
    const UnitRow& row = rowOf(unit);
    PlugIn_GetStringResource(row.nameString, row.name, 256);
    return row.name;
}

short StrToDecimal(char* text, ACC_decimal* value) {
    if (!text || !*text || !value) return 0;
    const short D = PrecisionToDigitCnt(value->precision);
    int64_t whole = 0, fraction = 0;
    short count = 0;
    bool inFraction = false;
    for (const char* p = text; *p; ++p) {
        const int c = static_cast<signed char>(*p);
        if (capochords::isdigit(c)) {
            if (!inFraction) {
                whole = whole * 10 + (c - '0');
                if (whole > INT32_MAX) return 0;  // refused rather than wrapped
            } else if (count < D) {
                fraction = fraction * 10 + (c - '0');
                ++count;
            }
        } else if (c == '.') {
            inFraction = true;
        } else {
            return 0;
        }
    }
    if (count < D) fraction *= DigitCntToPrecision(static_cast<short>(D - count));
    value->whole = static_cast<int32_t>(whole);
    value->fraction = static_cast<int32_t>(fraction);
    return 1;
}
