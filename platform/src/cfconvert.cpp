// Conversions of string objects to 8-bit text and to integers, with the
// outcomes of Apple's converters: a loss byte per unit that has no byte, a
// stop at the first such unit without one, and a scan that answers 0 for
// text that is not a number.
#include "cfobject.h"

#include <climits>
#include <cstring>

namespace {

// The byte of one UTF-16 unit in an 8-bit encoding; -1 for none.
int byteFor(char16_t u, CFStringEncoding encoding) {
    if (encoding == kCFStringEncodingASCII) return u < 0x80 ? u : -1;
    if (u >= 0xD800 && u <= 0xDFFF) return -1;  // Mac Roman has no supplementary characters
    return cfimpl::macRomanByteFor(u);
}

bool isSpace(char16_t u) {
    return u < 0x21 || (u >= 0x7F && u <= 0xA0) || (u >= 0x2000 && u <= 0x200B) || u == 0x3000;
}

}  // namespace

extern "C" CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    if (length < 0) return kCFNotFound;
    switch (encoding) {
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingASCII:
        return length;
    case kCFStringEncodingUTF8:
        return length > LONG_MAX / 3 ? kCFNotFound : length * 3;
    case kCFStringEncodingUTF16:
        return length > LONG_MAX / 2 ? kCFNotFound : length * 2;
    default:
        return kCFNotFound;
    }
}

// A null buffer, or a limit of 0, only measures: usedBufLen then gets the
// bytes the range needs.
extern "C" CFIndex CFStringGetBytes(CFStringRef s, CFRange range, CFStringEncoding encoding,
                                    UInt8 lossByte, Boolean, UInt8* buffer, CFIndex maxBufLen,
                                    CFIndex* usedBufLen) {
    if (usedBufLen) *usedBufLen = 0;
    if (!s) return 0;
    const std::u16string& u = cfimpl::units(s);
    auto n = static_cast<CFIndex>(u.size());
    if (range.location < 0 || range.length < 0 || range.location > n ||
        range.length > n - range.location)
        return 0;
    bool eightBit = encoding == kCFStringEncodingMacRoman || encoding == kCFStringEncodingASCII;
    if (!eightBit && encoding != kCFStringEncodingUTF8) return 0;
    bool limited = buffer && maxBufLen > 0;
    CFIndex used = 0, i = range.location;
    const CFIndex end = range.location + range.length;
    while (i < end) {
        char16_t c = u[static_cast<size_t>(i)];
        UInt8 bytes[4];
        CFIndex count = 0, consumed = 1;
        if (eightBit) {
            int b = byteFor(c, encoding);
            if (b < 0) {
                if (!lossByte) break;
                b = lossByte;
            }
            bytes[count++] = static_cast<UInt8>(b);
        } else {
            char32_t cp = c;
            if (c >= 0xD800 && c <= 0xDBFF) {
                // The pair must lie whole inside the range.
                if (i + 1 >= end) break;
                char16_t d = u[static_cast<size_t>(i + 1)];
                if (d < 0xDC00 || d > 0xDFFF) break;
                cp = 0x10000 + ((char32_t(c) - 0xD800) << 10) + (d - 0xDC00);
                consumed = 2;
            } else if (c >= 0xDC00 && c <= 0xDFFF) {
                break;
            }
            if (cp < 0x80) {
                bytes[count++] = static_cast<UInt8>(cp);
            } else if (cp < 0x800) {
                bytes[count++] = static_cast<UInt8>(0xC0 | (cp >> 6));
                bytes[count++] = static_cast<UInt8>(0x80 | (cp & 0x3F));
            } else if (cp < 0x10000) {
                bytes[count++] = static_cast<UInt8>(0xE0 | (cp >> 12));
                bytes[count++] = static_cast<UInt8>(0x80 | ((cp >> 6) & 0x3F));
                bytes[count++] = static_cast<UInt8>(0x80 | (cp & 0x3F));
            } else {
                bytes[count++] = static_cast<UInt8>(0xF0 | (cp >> 18));
                bytes[count++] = static_cast<UInt8>(0x80 | ((cp >> 12) & 0x3F));
                bytes[count++] = static_cast<UInt8>(0x80 | ((cp >> 6) & 0x3F));
                bytes[count++] = static_cast<UInt8>(0x80 | (cp & 0x3F));
            }
        }
        if (limited) {
            if (count > maxBufLen - used) break;  // a character that does not fit whole
            std::memcpy(buffer + used, bytes, static_cast<size_t>(count));
        }
        used += count;
        i += consumed;
    }
    if (usedBufLen) *usedBufLen = used;
    return i - range.location;
}

extern "C" SInt32 CFStringGetIntValue(CFStringRef s) {
    if (!s) return 0;
    const std::u16string& u = cfimpl::units(s);
    size_t i = 0, n = u.size();
    while (i < n && isSpace(u[i])) ++i;
    bool negative = false;
    if (i < n && (u[i] == u'+' || u[i] == u'-')) {
        negative = u[i++] == u'-';
        while (i < n && isSpace(u[i])) ++i;
    }
    long long value = 0;  // saturates just past the int range
    for (; i < n && u[i] >= u'0' && u[i] <= u'9'; ++i) {
        value = value * 10 + (u[i] - u'0');
        if (value > static_cast<long long>(INT_MAX) + 1) value = static_cast<long long>(INT_MAX) + 1;
    }
    if (negative) return static_cast<SInt32>(-value);
    return value > INT_MAX ? INT_MAX : static_cast<SInt32>(value);
}
