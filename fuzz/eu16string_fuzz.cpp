// The conversions and 1-based operations of eu16string on any input. Mac
// Roman maps every byte both ways, so 8-bit text must come back unchanged;
// UTF-8 that is accepted must encode back to the same bytes; the operations
// must stay within the string.
#include "eu16string.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void check(bool ok) {
    if (!ok) std::abort();
}

int intAt(const uint8_t* data, size_t size, size_t at) {
    uint32_t v = 0;
    for (size_t k = 0; k < 4; ++k) v = v << 8 | (at + k < size ? data[at + k] : 0);
    int r;
    std::memcpy(&r, &v, sizeof r);
    return r;
}

void eightBit(const std::string& bytes) {
    eu16string s(bytes.c_str());
    check(s.size() == std::strlen(bytes.c_str()));
    std::string back;
    s.GetStdString(back);
    check(back == bytes.c_str());
}

void utf8(const std::string& bytes) {
    eu16string s(reinterpret_cast<const unsigned char*>(bytes.c_str()));
    if (s.empty()) return;
    // Accepted: it must encode back to the bytes, a leading byte order mark aside.
    std::string text = bytes.c_str();
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
    CFStringRef cf = CFStringCreateWithCharacters(nullptr, s.data(), static_cast<CFIndex>(s.size()));
    std::vector<UInt8> out(s.size() * 3 + 1);
    CFIndex used = 0;
    CFIndex consumed = CFStringGetBytes(cf, CFRangeMake(0, static_cast<CFIndex>(s.size())),
                                        kCFStringEncodingUTF8, 0, false, out.data(),
                                        static_cast<CFIndex>(out.size()), &used);
    CFRelease(cf);
    check(consumed == static_cast<CFIndex>(s.size()));
    check(std::string(out.begin(), out.begin() + used) == text);
}

void units(const uint8_t* data, size_t size) {
    eu16string::base b;
    for (size_t i = 8; i + 1 < size; i += 2)
        b.push_back(static_cast<unsigned short>(data[i] | data[i + 1] << 8));
    eu16string s(b);
    const int p = intAt(data, size, 0), n = intAt(data, size, 4);

    std::string bytes;
    s.GetStdString(bytes);
    size_t text = s.find(static_cast<unsigned short>(0));
    if (text == eu16string::npos) text = s.size();
    check(bytes.size() == text);  // one byte per unit, mapped or not
    for (size_t i = 0; i < bytes.size(); ++i)
        check(s[i] >= 0x80 ? true : static_cast<unsigned char>(bytes[i]) == s[i]);

    eu16string sub = s.AnsiSubString(p, n);
    check(sub.size() <= s.size());
    if (!sub.empty()) check(s.AnsiPos(sub) >= 1);
    int at = s.AnsiPos(sub);
    check(at >= 0 && static_cast<size_t>(at) <= s.size());

    unsigned short unit = static_cast<const eu16string&>(s).AnsiCharAtIndex(p);
    if (p >= 1 && static_cast<size_t>(p) <= s.size()) check(unit == s[static_cast<size_t>(p) - 1]);
    else check(unit == 0x20);

    eu16string d(s);
    d.AnsiDelete(static_cast<unsigned int>(p), n);
    check(d.size() <= s.size());
    d.AnsiSetLength(static_cast<unsigned int>(n));
    check(d.data()[d.size()] == 0);

    (void)StrToIntDef(s, 7);
    eu16string cp(static_cast<unsigned int>(p));
    check(cp.size() <= 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    eightBit(bytes);
    utf8(bytes);
    units(data, size);
    return 0;
}
