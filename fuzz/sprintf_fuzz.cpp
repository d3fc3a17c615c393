// fx_sprintf on any format and capacity. Every conversion finds an argument
// it can read (a text that is both a UTF-16 and an 8-bit C string); the
// result must fit the capacity, be terminated, and leave the room after the
// capacity alone.
#include "strings16.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

const unsigned short kText[] = {'a', 'b', 0};  // as bytes: 'a', 0

#define ARGS4 kText, kText, kText, kText
#define ARGS16 ARGS4, ARGS4, ARGS4, ARGS4
#define ARGS64 ARGS16, ARGS16, ARGS16, ARGS16
// Room for 64 positions of two slots each (a long double), and some.
#define ARGS136 ARGS64, ARGS64, ARGS4, ARGS4

constexpr unsigned long kGuard = 8;
constexpr unsigned short kGuardUnit = 0xBEEF;

// %@ wants an object, which no plain argument is; and more conversions than
// the arguments passed would read past them. Skipping over everything that
// may stand between the '%' and its conversion finds every conversion.
bool usable(const std::vector<unsigned short>& format) {
    int conversions = 0;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') continue;
        if (++conversions > 16) return false;
        size_t k = i + 1;
        while (k < format.size() && format[k] < 0x80 &&
               std::strchr("0123456789$-+ #'*.hlqjztL", static_cast<char>(format[k])) &&
               format[k] != 0)
            ++k;
        if (k < format.size() && format[k] == '@') return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const unsigned long capacity = data[0] | (data[1] & 0x03) << 8;  // 0 to 1023
    std::vector<unsigned short> format;
    for (size_t i = 2; i + 1 < size; i += 2) {
        unsigned short u = static_cast<unsigned short>(data[i] | data[i + 1] << 8);
        if (!u) break;
        format.push_back(u);
    }
    if (!usable(format)) return 0;
    format.push_back(0);

    std::vector<unsigned short> dest(capacity + kGuard, kGuardUnit);
    int n = fx_sprintf(dest.data(), capacity, format.data(), ARGS136);
    for (size_t i = capacity; i < dest.size(); ++i)
        if (dest[i] != kGuardUnit) std::abort();  // written past the capacity
    if (capacity == 0) {
        if (n != 0) std::abort();
        return 0;
    }
    if (n < 0 || static_cast<unsigned long>(n) > capacity - 1 || dest[static_cast<size_t>(n)] != 0)
        std::abort();
    return 0;
}
