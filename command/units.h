// Measurement units: the user's unit, unit names, lengths shown and read in
// it, all in exact integer arithmetic on a fixed-point decimal.
#ifndef CAPOCHORDS_COMMAND_UNITS_H
#define CAPOCHORDS_COMMAND_UNITS_H

#include <cstdint>

// The host's measurement-unit code.
enum EUNIT : int32_t {
    EUNIT_EVPUS = 1,   // 288 to the inch
    EUNIT_INCHES = 2,
    EUNIT_CENTS = 3,
    EUNIT_POINTS = 4,
    EUNIT_PICAS = 5,
    EUNIT_SPACES = 6,
};

// A non-negative decimal in fixed point: whole + fraction / precision, the
// precision a power of ten from 10 to 1,000,000.
struct ACC_decimal {
    int32_t whole;
    int32_t fraction;
    int32_t precision;
};

// The unit the user chose in the host's preferences; EVPU when the host
// cannot tell.
EUNIT GetZemloCurrentUnit();

// Writes an EVPU value in the current unit ("0.222" for 64 EVPU in inches)
// into buffer, which holds at least 24 bytes. Null for a null buffer.
char* evpuToStrInCurrUnits(char* buffer, short evpu);

// The unit's name, fetched anew into a buffer of its own that stays valid
// until the next call for the same unit.
unsigned short* UnitString(EUNIT unit);

// Reads decimal text ("2", "2.5", ".25") at the record's precision. 1 when
// read; 0, record untouched, for anything else: a sign, a space, a comma, a
// letter, or an integer part beyond 32 bits.
short StrToDecimal(char* text, ACC_decimal* value);

// Converts the record between units, rounding the fraction half up, stores
// the result into it and returns a copy. A value whose intermediate products
// leave 32 bits is not converted: the record stays as it was.
ACC_decimal UnitConverter(ACC_decimal* value, EUNIT from, EUNIT to);
// The same, answering false (record untouched) when the value is too large.
bool UnitConverterFits(ACC_decimal* value, EUNIT from, EUNIT to);

short PrecisionToDigitCnt(int32_t precision);
int32_t DigitCntToPrecision(short digits);

namespace capochords {
// Digits are the ten ASCII digits only, whatever the locale.
int isdigit(int c);
int iswdigit(int c);
}  // namespace capochords

#endif
