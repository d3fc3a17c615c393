// Conversions of the Core Foundation stand-in: string objects to 8-bit text,
// their sizes, and Mac Roman both ways.
#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::literals;

CFStringRef make(std::u16string_view s) {
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(s.data()),
                                        static_cast<CFIndex>(s.size()));
}

struct Converted {
    CFIndex consumed;
    CFIndex used;
    std::string bytes;    // what the buffer holds up to `used`
    bool tailUntouched;   // nothing written past `used`
};

Converted convert(std::u16string_view s, CFStringEncoding encoding, UInt8 loss, CFIndex limit,
                  CFRange range = CFRangeMake(0, -1)) {
    CFStringRef cf = make(s);
    if (range.length < 0) range = CFRangeMake(0, CFStringGetLength(cf));
    std::vector<UInt8> buffer(static_cast<size_t>(limit) + 8, 0xA5);
    Converted c{};
    c.used = -7;
    c.consumed = CFStringGetBytes(cf, range, encoding, loss, false, buffer.data(), limit, &c.used);
    CFRelease(cf);
    if (c.used >= 0 && c.used <= limit) {
        c.bytes.assign(buffer.begin(), buffer.begin() + c.used);
        c.tailUntouched = true;
        for (size_t i = static_cast<size_t>(c.used); i < buffer.size(); ++i)
            c.tailUntouched = c.tailUntouched && buffer[i] == 0xA5;
    }
    return c;
}

TEST(CFConvert, GetBytesMacRoman) {
    struct Case {
        std::u16string_view s;
        UInt8 loss;
        CFIndex limit;
        CFIndex consumed;
        std::string_view bytes;
    } const cases[] = {
        {u"abc", '?', 16, 3, "abc"},
        {u"", '?', 16, 0, ""},
        {u"caf\u00E9\u20AC\uF8FF", '?', 16, 6, "caf\x8E\xDB\xF0"},
        {u"a\x4E2D" u"b", '?', 16, 3, "a?b"},
        {u"\xD83D\xDE00", '?', 16, 2, "??"},          // each unit of a pair
        {u"\xDC00\xD800", '?', 16, 2, "??"},          // lone surrogates
        {u"a\x4E2D" u"b", 0, 16, 1, "a"},             // no loss byte: stop
        {u"\x4E2D", 0, 16, 0, ""},
        {u"abcdef", '?', 3, 3, "abc"},                // the limit
        {u"a\0b"sv, '?', 16, 3, "a\0b"sv},            // zero units are text
    };
    for (const Case& c : cases) {
        Converted r = convert(c.s, kCFStringEncodingMacRoman, c.loss, c.limit);
        EXPECT_EQ(r.consumed, c.consumed) << c.s.size() << " units";
        EXPECT_EQ(r.used, static_cast<CFIndex>(c.bytes.size()));
        EXPECT_EQ(r.bytes, c.bytes);
        EXPECT_TRUE(r.tailUntouched);  // no terminator, nothing past the bytes
    }
}

TEST(CFConvert, GetBytesUtf8) {
    struct Case {
        std::u16string_view s;
        CFIndex limit;
        CFIndex consumed;
        std::string_view bytes;
    } const cases[] = {
        {u"a\u20AC", 16, 2, "a\xE2\x82\xAC"},
        {u"\xD83D\xDE00", 16, 2, "\xF0\x9F\x98\x80"},
        {u"a\xD800" u"b", 16, 1, "a"},        // unpaired high surrogate stops
        {u"a\xDC00", 16, 1, "a"},             // unpaired low surrogate stops
        {u"a\xD83D", 16, 1, "a"},             // a pair cut by the end
        {u"a\u20AC", 3, 1, "a"},              // does not fit whole: not written
        {u"a\u20AC", 4, 2, "a\xE2\x82\xAC"},  // exactly fits
        {u"\u00E9", 1, 0, ""},
    };
    for (const Case& c : cases) {
        Converted r = convert(c.s, kCFStringEncodingUTF8, '?', c.limit);
        EXPECT_EQ(r.consumed, c.consumed) << c.s.size() << " units";
        EXPECT_EQ(r.bytes, c.bytes);
        EXPECT_TRUE(r.tailUntouched);
    }
}

}  // namespace
