// Core Foundation formatting as the stand-in provides it.
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <memory>
#include <string>

namespace {

std::u16string text(CFStringRef s) {
    std::u16string u(static_cast<size_t>(CFStringGetLength(s)), u'\0');
    if (!u.empty()) CFStringGetCharacters(s, CFRangeMake(0, CFStringGetLength(s)), reinterpret_cast<UniChar*>(&u[0]));
    return u;
}

// Formats and answers the text, or "<null>" when no string was made.
template <class... A> std::u16string fmt(const char* format, A... args) {
    CFStringRef f = CFStringCreateWithCString(nullptr, format, kCFStringEncodingUTF8);
    CFStringRef s = CFStringCreateWithFormat(nullptr, nullptr, f, args...);
    CFRelease(f);
    if (!s) return u"<null>";
    std::u16string u = text(s);
    CFRelease(s);
    return u;
}

const UniChar kCapo[] = {'C', 'a', 'p', 'o', ' ', 0};
const UniChar kSharp[] = {0x266F, 0xD834, 0xDD1E, 0};  // sharp sign, G clef (a pair)

TEST(CFFormat, IntegersFollowPrintf) {
    EXPECT_EQ(fmt("%d", 42), u"42");
    EXPECT_EQ(fmt("%d", INT_MIN), u"-2147483648");
    EXPECT_EQ(fmt("%5d|%-5d|%05d", 7, 7, 7), u"    7|7    |00007");
    EXPECT_EQ(fmt("%03.3d", 5), u"005");
    EXPECT_EQ(fmt("%d.%03.3d", 0, 222), u"0.222");
    EXPECT_EQ(fmt("%d.%02.2d", 16, 0), u"16.00");
    EXPECT_EQ(fmt("%+d % d", 3, 3), u"+3  3");
    EXPECT_EQ(fmt("%ld", 1234567890123L), u"1234567890123");
    EXPECT_EQ(fmt("%lld %qd", -5LL, 6LL), u"-5 6");
    EXPECT_EQ(fmt("%hd", 70000), u"4464");
    EXPECT_EQ(fmt("%hhd", 300), u"44");
    EXPECT_EQ(fmt("%x %X %o %u", 255, 255, 8, 3000000000u), u"ff FF 10 3000000000");
    EXPECT_EQ(fmt("%*d|%-*d", 4, 1, 3, 2), u"   1|2  ");
    EXPECT_EQ(fmt("%.*d", 3, 7), u"007");
}

TEST(CFFormat, Utf16AndEightBitTexts) {
    EXPECT_EQ(fmt("%S%d%S", kCapo, 3, kSharp), u"Capo 3\u266F\U0001D11E");
    EXPECT_EQ(fmt("[%.3S]", kCapo), u"[Cap]");
    EXPECT_EQ(fmt("[%7S]", kCapo), u"[  Capo ]");
    EXPECT_EQ(fmt("[%-7S]", kCapo), u"[Capo   ]");
    EXPECT_EQ(fmt("[%07S]", kCapo), u"[  Capo ]") << "only the '-' flag counts";
    EXPECT_EQ(fmt("%S", static_cast<const UniChar*>(nullptr)), u"(null)");
    EXPECT_EQ(fmt("%s", "caf\x8E"), u"caf\u00E9") << "8-bit text is Mac Roman";
    EXPECT_EQ(fmt("[%.2s|%4s]", "abc", "ab"), u"[ab|  ab]");
    EXPECT_EQ(fmt("%s", static_cast<const char*>(nullptr)), u"(null)");
    EXPECT_EQ(fmt("%C", 0x266F), u"\u266F");
    CFStringRef inner = CFSTR("inner");
    EXPECT_EQ(fmt("<%@>", inner), u"<inner>");
}

TEST(CFFormat, PositionalArguments) {
    EXPECT_EQ(fmt("%2$d-%1$d", 1, 2), u"2-1");
    EXPECT_EQ(fmt("%1$S%1$S", kCapo), u"Capo Capo ");
    EXPECT_EQ(fmt("%1$d %d", 1, 2), u"<null>") << "mixed positions";
    EXPECT_EQ(fmt("%3$d", 1, 2, 3), u"<null>") << "a position whose type is unknown";
}

TEST(CFFormat, PrecisionBoundsTheRead) {
    // Texts that end at the precision, without a terminator: nothing past
    // them may be read (the sanitizer build sees the heap block's end).
    std::unique_ptr<UniChar[]> units(new UniChar[3]{'a', 'b', 'c'});
    std::unique_ptr<char[]> bytes(new char[2]{'x', 'y'});
    EXPECT_EQ(fmt("[%.3S|%.2s]", units.get(), bytes.get()), u"[abc|xy]");
    EXPECT_EQ(fmt("[%.0S%.0s]", units.get(), bytes.get()), u"[]");
}

}  // namespace
