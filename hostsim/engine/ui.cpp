// The simulated host's user interface as a whole: its state, its error list,
// its reset, and the texts it converts.
#include "uistate.h"

#include <CoreFoundation/CoreFoundation.h>

#include <climits>

namespace hostsim {

void addUiBuiltIns(BuiltIns& b) {
    ui::addDialogBuiltIns(b);
    ui::addAlertBuiltIns(b);
    ui::addProgressBuiltIns(b);
}

void resetUi() { ui::uiState() = ui::UiState(); }

namespace ui {

uint64_t serve(Call& c) {
    static const BuiltIns* own = [] {
        auto* b = new BuiltIns();
        addUiBuiltIns(*b);
        return b;
    }();
    const Handler& h = (*own)[static_cast<int>(c.fx)];
    return h ? h(c) : 0;
}

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

// The conversions of the application's text encodings are the platform's,
// as the real host's are.
namespace {

std::u16string unitsOf(CFStringRef text) {
    std::u16string u(static_cast<size_t>(CFStringGetLength(text)), u'\0');
    if (!u.empty())
        CFStringGetCharacters(text, CFRangeMake(0, CFStringGetLength(text)),
                              reinterpret_cast<UniChar*>(&u[0]));
    CFRelease(text);
    return u;
}

// The bytes of a text in an encoding, with `loss` for what it lacks.
std::string bytesOf(const std::u16string& units, CFStringEncoding encoding, UInt8 loss) {
    CFStringRef text = CFStringCreateWithCharacters(
        nullptr, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size()));
    if (!text) return std::string();
    CFIndex used = 0;
    const CFRange all = CFRangeMake(0, CFStringGetLength(text));
    CFStringGetBytes(text, all, encoding, loss, false, nullptr, 0, &used);
    std::string out(static_cast<size_t>(used), '\0');
    if (used)
        CFStringGetBytes(text, all, encoding, loss, false, reinterpret_cast<UInt8*>(&out[0]), used,
                         &used);
    CFRelease(text);
    out.resize(static_cast<size_t>(used));
    return out;
}

}  // namespace

std::u16string utf16(const std::string& s) {
    std::u16string out;
    for (size_t i = 0; i < s.size();) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        uint32_t cp = c;
        size_t n = 1;
        if (c >= 0xF0)
            cp = c & 0x07, n = 4;
        else if (c >= 0xE0)
            cp = c & 0x0F, n = 3;
        else if (c >= 0xC0)
            cp = c & 0x1F, n = 2;
        for (size_t k = 1; k < n && i + k < s.size(); ++k)
            cp = (cp << 6) | (s[i + k] & 0x3F);
        i += n;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
    }
    return out;
}

std::string utf8(const std::u16string& units) {
    // An unpaired surrogate reads as the replacement character.
    std::u16string clean = units;
    for (size_t i = 0; i < clean.size(); ++i) {
        const char16_t u = clean[i];
        if (u >= 0xD800 && u < 0xDC00 && i + 1 < clean.size() && clean[i + 1] >= 0xDC00 &&
            clean[i + 1] < 0xE000)
            ++i;
        else if (u >= 0xD800 && u < 0xE000)
            clean[i] = 0xFFFD;
    }
    return bytesOf(clean, kCFStringEncodingUTF8, 0);
}

bool fromUtf8(const std::string& bytes, std::u16string* out) {
    out->clear();
    if (bytes.find('\0') != std::string::npos) return false;
    CFStringRef text = CFStringCreateWithCString(nullptr, bytes.c_str(), kCFStringEncodingUTF8);
    if (!text) return false;
    *out = unitsOf(text);
    return true;
}

std::u16string fromMacRoman(const char* bytes) {
    CFStringRef text = CFStringCreateWithCString(nullptr, bytes, kCFStringEncodingMacRoman);
    return text ? unitsOf(text) : std::u16string();
}

std::string toMacRoman(const std::u16string& units) {
    return bytesOf(units, kCFStringEncodingMacRoman, '?');
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
