// Mac Roman and UTF-8 conversions with the outcomes of Apple's converters:
// Mac Roman maps every byte; UTF-8 is strict and fails on any invalid form.
#include "cfobject.h"

namespace cfimpl {
namespace {

// Upper half of Mac Roman (0x80 to 0xFF), as Unicode's ROMAN.TXT maps it.
const char16_t kMacRomanHigh[128] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

void appendCodePoint(std::u16string& out, char32_t cp) {
    if (cp < 0x10000) {
        out.push_back(static_cast<char16_t>(cp));
    } else {
        cp -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    }
}

}  // namespace

bool decodeMacRoman(const char* bytes, size_t n, std::u16string& out) {
    out.clear();
    out.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        auto b = static_cast<unsigned char>(bytes[i]);
        out.push_back(b < 0x80 ? char16_t(b) : kMacRomanHigh[b - 0x80]);
    }
    return true;
}

int macRomanByteFor(char32_t cp) {
    if (cp < 0x80) return static_cast<int>(cp);
    for (int i = 0; i < 128; ++i)
        if (kMacRomanHigh[i] == cp) return 0x80 + i;
    return -1;
}

bool decodeUtf8(const char* bytes, size_t n, std::u16string& out) {
    out.clear();
    const auto* s = reinterpret_cast<const unsigned char*>(bytes);
    size_t i = 0;
    if (n >= 3 && s[0] == 0xEF && s[1] == 0xBB && s[2] == 0xBF) i = 3;  // byte order mark
    while (i < n) {
        unsigned char b = s[i];
        if (b < 0x80) {
            out.push_back(b);
            ++i;
            continue;
        }
        size_t extra;
        char32_t cp, min;
        if (b >= 0xC2 && b <= 0xDF) {
            extra = 1, cp = b & 0x1F, min = 0x80;
        } else if (b >= 0xE0 && b <= 0xEF) {
            extra = 2, cp = b & 0x0F, min = 0x800;
        } else if (b >= 0xF0 && b <= 0xF4) {
            extra = 3, cp = b & 0x07, min = 0x10000;
        } else {
            return false;  // continuation byte, C0, C1 or F5 to FF
        }
        if (n - i <= extra) return false;  // cut off at the end
        for (size_t k = 1; k <= extra; ++k) {
            unsigned char c = s[i + k];
            if ((c & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (c & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        appendCodePoint(out, cp);
        i += extra + 1;
    }
    return true;
}

bool encodeUtf8(const std::u16string& units, std::string& out) {
    out.clear();
    for (size_t i = 0; i < units.size(); ++i) {
        char32_t cp = units[i];
        if (cp >= 0xD800 && cp <= 0xDBFF) {
            if (i + 1 >= units.size() || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF)
                return false;
            cp = 0x10000 + ((cp - 0xD800) << 10) + (units[++i] - 0xDC00);
        } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
            return false;
        }
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    }
    return true;
}

}  // namespace cfimpl
