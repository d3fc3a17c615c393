// The simulated host's user interface as a whole: its state, its error list,
// its reset, and the texts it converts.
#include "uistate.h"

#include <climits>

namespace hostsim {

void addUiBuiltIns(BuiltIns& b) {
    ui::addDialogBuiltIns(b);
    ui::addAlertBuiltIns(b);
    ui::addProgressBuiltIns(b);
}

void resetUi() { ui::uiState() = ui::UiState(); }

namespace ui {

UiState& uiState() {
    static UiState* s = new UiState();  // outlives static destructors that may still call in
    return *s;
}

void addError(ErrorKind kind, std::string text) {
    uiState().errors.push_back({kind, std::move(text)});
}

std::vector<Error> errors() {
    std::vector<Error> out = uiState().errors;
    for (const Progress& p : uiState().progress)
        if (!p.ended)
            out.push_back({ErrorKind::ProgressLeftOpen,
                           "progress display of " + std::to_string(p.steps) + " steps left open"});
    return out;
}

std::string errorText() {
    std::string s;
    for (const Error& e : errors()) s += e.text + "\n";
    return s;
}

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

void putUtf8(std::string& out, char32_t cp) {
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

}  // namespace

std::string utf8(const std::u16string& units) {
    std::string out;
    for (size_t i = 0; i < units.size(); ++i) {
        char32_t u = units[i];
        if (u >= 0xD800 && u < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
            units[i + 1] < 0xE000) {
            putUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (units[i + 1] - 0xDC00));
            ++i;
        } else if (u >= 0xD800 && u < 0xE000) {
            putUtf8(out, 0xFFFD);
        } else {
            putUtf8(out, u);
        }
    }
    return out;
}

bool fromUtf8(const std::string& bytes, std::u16string* out) {
    out->clear();
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    size_t n = bytes.size();
    for (size_t i = 0; i < n;) {
        unsigned char b = s[i];
        int more = b < 0x80 ? 0 : (b >> 5) == 6 ? 1 : (b >> 4) == 14 ? 2 : (b >> 3) == 30 ? 3 : -1;
        if (more < 0 || i + static_cast<size_t>(more) >= n) return false;
        char32_t cp = more == 0 ? b : b & (0x3F >> more);
        for (int k = 1; k <= more; ++k) {
            unsigned char c = s[i + static_cast<size_t>(k)];
            if ((c & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (c & 0x3F);
        }
        static const char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
        if (cp < kLeast[more] || cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) return false;
        if (cp < 0x10000) {
            out->push_back(static_cast<char16_t>(cp));
        } else {
            out->push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            out->push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        }
        i += static_cast<size_t>(more) + 1;
    }
    return true;
}

std::u16string fromMacRoman(const char* bytes) {
    std::u16string out;
    for (const char* p = bytes; *p; ++p) {
        auto b = static_cast<unsigned char>(*p);
        out.push_back(b < 0x80 ? char16_t(b) : kMacRomanHigh[b - 0x80]);
    }
    return out;
}

std::string toMacRoman(const std::u16string& units) {
    std::string out;
    for (char16_t u : units) {
        int byte = -1;
        if (u < 0x80) {
            byte = u;
        } else {
            for (int i = 0; i < 128; ++i)
                if (kMacRomanHigh[i] == u) byte = 0x80 + i;
        }
        out.push_back(byte < 0 ? '?' : static_cast<char>(byte));
    }
    return out;
}

int32_t numberOf(const std::u16string& text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
    int64_t v = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        v = v * 10 + (text[i] - u'0');
        if (v > static_cast<int64_t>(INT32_MAX) + 1) v = static_cast<int64_t>(INT32_MAX) + 1;
    }
    if (negative) v = -v;
    if (v > INT32_MAX) v = INT32_MAX;
    return static_cast<int32_t>(v);
}

}  // namespace ui
}  // namespace hostsim
