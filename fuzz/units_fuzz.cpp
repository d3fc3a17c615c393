// Decimal entry on any text, then conversion between every pair of units:
// reading never overflows, a refusal leaves the record alone, a read fraction
// stays below the precision, and a conversion either fits or leaves the
// record as it was. The first byte picks the record's precision.
#include "units.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    static const int32_t kPrecisions[] = {1000, 10, 1000000, 7, 0, -1000, 100, INT32_MAX};
    const int32_t precision = kPrecisions[data[0] % 8];
    std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    ACC_decimal d = {-1, -2, precision};
    if (!StrToDecimal(&text[0], &d)) {
        if (d.whole != -1 || d.fraction != -2 || d.precision != precision) std::abort();
        return 0;
    }
    if (d.whole < 0 || d.fraction < 0) std::abort();
    if (precision > 0 && PrecisionToDigitCnt(precision) > 0 && d.fraction >= precision) std::abort();
    for (int from = 0; from <= 7; ++from) {
        for (int to = 0; to <= 7; ++to) {
            ACC_decimal c = d;
            const ACC_decimal before = c;
            if (!UnitConverterFits(&c, static_cast<EUNIT>(from), static_cast<EUNIT>(to)) &&
                std::memcmp(&c, &before, sizeof c) != 0)
                std::abort();
        }
    }
    return 0;
}
