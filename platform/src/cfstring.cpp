// String objects: creation, constant strings, access and comparison.
#include "cfobject.h"

#include <cstring>
#include <mutex>
#include <unordered_map>

namespace cfimpl {

CFStringRef makeString(std::u16string u) { return new __CFString(std::move(u)); }

const std::u16string& units(CFStringRef s) { return s->units; }

std::string utf8(CFStringRef s) {
    std::string out;
    if (encodeUtf8(s->units, out)) return out;
    out.clear();
    for (char16_t c : s->units) out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    return out;
}

}  // namespace cfimpl

// CFSTR: one immortal string per literal text.
extern "C" CFStringRef __CFStringMakeConstantString(const char* cStr) {
    static std::mutex lock;
    static auto* table = new std::unordered_map<std::string, CFStringRef>();  // never freed
    std::lock_guard<std::mutex> hold(lock);
    auto it = table->find(cStr);
    if (it != table->end()) return it->second;
    std::u16string u;
    if (!cfimpl::decodeUtf8(cStr, std::strlen(cStr), u)) cfimpl::decodeMacRoman(cStr, std::strlen(cStr), u);
    auto* s = new __CFString(std::move(u));
    s->immortal = true;
    table->emplace(cStr, s);
    return s;
}

extern "C" CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* cStr,
                                                 CFStringEncoding encoding) {
    if (!cStr) return nullptr;
    std::u16string u;
    size_t n = std::strlen(cStr);
    bool ok;
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        ok = cfimpl::decodeMacRoman(cStr, n, u);
        break;
    case kCFStringEncodingUTF8:
        ok = cfimpl::decodeUtf8(cStr, n, u);
        break;
    case kCFStringEncodingASCII:
        ok = true;
        for (size_t i = 0; i < n && ok; ++i) {
            ok = static_cast<unsigned char>(cStr[i]) < 0x80;
            u.push_back(static_cast<char16_t>(cStr[i]));
        }
        break;
    default:
        ok = false;
    }
    return ok ? cfimpl::makeString(std::move(u)) : nullptr;
}

extern "C" CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars,
                                                    CFIndex numChars) {
    if (numChars < 0 || (!chars && numChars > 0)) return nullptr;
    std::u16string u(static_cast<size_t>(numChars), u'\0');
    if (numChars) std::memcpy(&u[0], chars, static_cast<size_t>(numChars) * sizeof(UniChar));
    return cfimpl::makeString(std::move(u));
}

extern "C" CFIndex CFStringGetLength(CFStringRef s) {
    return s ? static_cast<CFIndex>(s->units.size()) : 0;
}

extern "C" void CFStringGetCharacters(CFStringRef s, CFRange range, UniChar* buffer) {
    if (!s || !buffer || range.location < 0 || range.length <= 0) return;
    auto n = static_cast<CFIndex>(s->units.size());
    if (range.location > n || range.length > n - range.location) return;  // out of bounds
    std::memcpy(buffer, s->units.data() + range.location,
                static_cast<size_t>(range.length) * sizeof(UniChar));
}

extern "C" CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFOptionFlags) {
    const std::u16string& x = a->units;
    const std::u16string& y = b->units;
    size_t n = x.size() < y.size() ? x.size() : y.size();
    for (size_t i = 0; i < n; ++i)
        if (x[i] != y[i]) return x[i] < y[i] ? kCFCompareLessThan : kCFCompareGreaterThan;
    if (x.size() == y.size()) return kCFCompareEqualTo;
    return x.size() < y.size() ? kCFCompareLessThan : kCFCompareGreaterThan;
}

extern "C" Boolean CFStringGetCString(CFStringRef s, char* buffer, CFIndex bufferSize,
                                      CFStringEncoding encoding) {
    if (!s || !buffer || bufferSize <= 0) return false;
    std::string out;
    if (encoding == kCFStringEncodingUTF8) {
        if (!cfimpl::encodeUtf8(s->units, out)) return false;
    } else if (encoding == kCFStringEncodingMacRoman || encoding == kCFStringEncodingASCII) {
        for (char16_t c : s->units) {
            int b = encoding == kCFStringEncodingASCII ? (c < 0x80 ? c : -1)
                                                       : cfimpl::macRomanByteFor(c);
            if (b < 0) return false;
            out.push_back(static_cast<char>(b));
        }
    } else {
        return false;
    }
    if (static_cast<CFIndex>(out.size()) >= bufferSize) return false;
    std::memcpy(buffer, out.c_str(), out.size() + 1);
    return true;
}

// Strict: an unmappable character or too little room fails the whole text,
// leaving an empty length-prefixed text behind.
extern "C" Boolean CFStringGetPascalString(CFStringRef s, StringPtr buffer, CFIndex bufferSize,
                                           CFStringEncoding encoding) {
    if (!s || !buffer || bufferSize < 1 || s->units.size() > 255) return false;
    std::string out;
    bool ok = true;
    if (encoding == kCFStringEncodingUTF8) {
        ok = cfimpl::encodeUtf8(s->units, out);
    } else if (encoding == kCFStringEncodingMacRoman || encoding == kCFStringEncodingASCII) {
        for (size_t i = 0; ok && i < s->units.size(); ++i) {
            char16_t c = s->units[i];
            int b = encoding == kCFStringEncodingASCII ? (c < 0x80 ? c : -1) : cfimpl::macRomanByteFor(c);
            ok = b >= 0;
            out.push_back(static_cast<char>(b));
        }
    } else {
        ok = false;
    }
    if (!ok || out.size() > 255 || static_cast<CFIndex>(out.size()) > bufferSize - 1) {
        buffer[0] = 0;
        return false;
    }
    std::memcpy(buffer + 1, out.data(), out.size());
    buffer[0] = static_cast<unsigned char>(out.size());
    return true;
}
