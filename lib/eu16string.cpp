// The UTF-16 string class: conversions through Core Foundation and the
// 1-based editing operations.
#include "eu16string.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstdio>

namespace {

// Appends the units of a zero-terminated 8-bit text; nothing when the text
// is invalid in the encoding. The units go straight into the string.
void appendConverted(eu16string& s, char const* text, CFStringEncoding encoding) {
    CFStringRef cf = CFStringCreateWithCString(kCFAllocatorDefault, text, encoding);
    if (!cf) return;
    CFIndex n = CFStringGetLength(cf);
    if (n > 0) {
        std::size_t at = s.size();
        s.resize(at + static_cast<std::size_t>(n));
        CFStringGetCharacters(cf, CFRangeMake(0, n), &s[at]);
        // A converter never yields a zero unit from a zero-terminated text,
        // but the string must end at the first one if it did.
        std::size_t zero = s.find(static_cast<unsigned short>(0), at);
        if (zero != eu16string::npos) s.resize(zero);
    }
    CFRelease(cf);
}

}  // namespace

eu16string::eu16string(char const* text) { appendConverted(*this, text, GetApplicationTextEncoding()); }

eu16string::eu16string(unsigned char const* text) {
    appendConverted(*this, reinterpret_cast<char const*>(text), kCFStringEncodingUTF8);
}

eu16string::eu16string(unsigned int codePoint) {
    unsigned short units[3] = {0, 0, 0};
    GetSurrogatePairForLongCharacter(codePoint, units);
    append(units);  // up to the first zero unit
}

eu16string::eu16string(char c) {
    char text[2] = {c, 0};
    *this = eu16string(static_cast<char const*>(text));
}

void eu16string::GetStdString(std::string& dest) const {
    dest.clear();
    CFStringRef cf = CFStringCreateWithCharacters(kCFAllocatorDefault, data(),
                                                  static_cast<CFIndex>(size()));
    if (!cf) return;
    CFStringEncoding encoding = GetApplicationTextEncoding();
    CFIndex length = CFStringGetLength(cf);
    CFIndex most = CFStringGetMaximumSizeForEncoding(length, encoding);
    if (most >= 0) {
        // The destination is the buffer: room for the most bytes plus one.
        CFIndex room = most + 1;
        dest.resize(static_cast<std::size_t>(room));
        CFIndex used = 0;
        CFStringGetBytes(cf, CFRangeMake(0, length), encoding, '?', false,
                         reinterpret_cast<UInt8*>(&dest[0]), room, &used);
        if (used < 0 || used >= room) used = room - 1;
        dest[static_cast<std::size_t>(used)] = 0;
        dest.resize(std::strlen(dest.c_str()));  // a zero unit ends the text
    }
    CFRelease(cf);
}

int eu16string::AnsiPos(eu16string const& sought) const {
    auto index = static_cast<std::uint32_t>(find(sought));
    return index < size() ? static_cast<int>(index + 1) : 0;
}

eu16string& eu16string::AnsiDelete(unsigned int position, int count) {
    if (position == 0 || count < 1 || position > size()) return *this;
    auto n = static_cast<std::size_t>(count);
    if (static_cast<std::uint32_t>(position + static_cast<unsigned int>(count) - 1) > size())
        n = size() - position + 1;
    erase(position - 1, n);
    return *this;
}

eu16string eu16string::AnsiSubString(int start, int count) const {
    if (empty() || count < 1) return eu16string();
    if (start < 1) start = 1;
    auto s = static_cast<std::size_t>(start);
    if (s > size()) return eu16string();
    auto n = static_cast<std::size_t>(count);
    if (s + n - 1 > size()) n = size() - s + 1;  // size_t: no overflow from two ints
    return eu16string(substr(s - 1, n));
}

eu16string& eu16string::AnsiSetLength(unsigned int length) {
    if (size() > length) erase(length);
    return *this;
}

unsigned short eu16string::AnsiCharAtIndex(int position) const {
    if (position < 1 || static_cast<std::size_t>(position) > size()) return 0x20;
    return (*this)[static_cast<std::size_t>(position) - 1];
}

unsigned short& eu16string::AnsiCharAtIndex(int position) {
    if (position < 1 || static_cast<std::size_t>(position) > size()) return (*this)[0];
    return (*this)[static_cast<std::size_t>(position) - 1];
}

int StrToIntDef(eu16string text, int def) {
    if (text.empty()) return def;
    CFStringRef cf = CFStringCreateWithCharacters(kCFAllocatorDefault, text.data(),
                                                  static_cast<CFIndex>(text.size()));
    if (!cf) return def;
    int value = CFStringGetIntValue(cf);
    CFRelease(cf);
    return value;
}

eu16string IntToEu16Str(long value) {
    char text[24];
    std::snprintf(text, sizeof text, "%ld", value);
    return eu16string(static_cast<char const*>(text));
}

bool GetSurrogatePairForLongCharacter(unsigned int codePoint, unsigned short* out) {
    if (codePoint > 0xFFFF && codePoint < 0x110000) {
        unsigned int v = codePoint - 0x10000;
        if (out) {
            out[0] = static_cast<unsigned short>(0xD800 + (v >> 10));
            out[1] = static_cast<unsigned short>(0xDC00 + (v & 0x3FF));
        }
        return true;
    }
    if (out) out[0] = static_cast<unsigned short>(codePoint & 0xFFFF);
    return false;
}
