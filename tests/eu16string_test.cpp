// The UTF-16 string class: conversions, 1-based operations and their clamps.
#include "eu16string.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>
#include <type_traits>

// Newer libc++ has no std::char_traits<unsigned short>. Declared here and
// never defined, it turns any use of it by the string class, on whichever
// library builds this, into a compile error.
namespace std {
template <> struct char_traits<unsigned short>;
}

namespace {

using namespace std::literals;

static_assert(std::has_virtual_destructor<eu16string>::value, "deletable through its own type");

eu16string u(std::u16string_view s) { return eu16string(eu16string::base(s.begin(), s.end())); }

std::u16string std16(const eu16string& s) { return std::u16string(s.begin(), s.end()); }

// 8-bit text in the application's encoding (Mac Roman) and strict UTF-8; back
// to the application's encoding with '?' for what it lacks.
TEST(Eu16String, ConversionsBothWays) {
    EXPECT_EQ(std16(eu16string("caf\x8E \xDB\xF0")), u"caf\u00E9 \u20AC\uF8FF");
    EXPECT_EQ(std16(eu16string('\x8E')), u"\u00E9");
    EXPECT_TRUE(eu16string('\0').empty());
    struct Utf8 {
        const char* bytes;
        std::u16string_view units;  // empty: refused
    } const utf8[] = {
        {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"}, {"\xEF\xBB\xBF" "A", u"A"}, {"a\x80", u""},
        {"\xC0\x80", u""}, {"\xED\xA0\x80", u""}, {"\xF4\x90\x80\x80", u""}, {"ab\xE2\x82", u""},
    };
    for (const Utf8& c : utf8)
        EXPECT_EQ(std16(eu16string(reinterpret_cast<const unsigned char*>(c.bytes))), c.units) << c.bytes;
    struct Back {
        std::u16string_view units;
        std::string bytes;
    } const back[] = {
        {u"A\0B"sv, "A"}, {u"\xD83D\xDE00", "??"}, {u"\xDC00" u"x", "?x"},
        {u"caf\u00E9 \u20AC\uF8FF", "caf\x8E \xDB\xF0"},
    };
    for (const Back& c : back) {
        std::string out = "left over";
        u(c.units).GetStdString(out);
        EXPECT_EQ(out, c.bytes);
    }
}

TEST(Eu16String, FromCodePoint) {
    struct Case {
        unsigned int codePoint;
        std::u16string_view units;
        bool pair;
    } const cases[] = {
        {0x1F600, u"\xD83D\xDE00", true}, {0x10000, u"\xD800\xDC00", true},
        {0x10FFFF, u"\xDBFF\xDFFF", true}, {0xFFFF, u"\xFFFF", false},
        {0, u"", false},                   {0x110041, u"A", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(std16(eu16string(c.codePoint)), c.units) << std::hex << c.codePoint;
        unsigned short out[3] = {0xBEEF, 0xBEEF, 0xBEEF};
        EXPECT_EQ(GetSurrogatePairForLongCharacter(c.codePoint, out), c.pair);
        EXPECT_EQ(out[c.pair ? 2 : 1], 0xBEEF) << std::hex << c.codePoint;
    }
}

// 1-based positions; out of range clamps or does nothing, never reaches past.
TEST(Eu16String, OneBasedOperationsClamp) {
    EXPECT_EQ(u(u"abcabc").AnsiPos(u(u"cab")), 3);
    EXPECT_EQ(u(u"abc").AnsiPos(u(u"abcd")), 0);
    EXPECT_EQ(u(u"").AnsiPos(u(u"")), 0);
    const std::tuple<unsigned int, int, std::u16string_view> deletes[] = {
        {2, 2, u"adef"}, {5, 10, u"abcd"}, {6, INT_MAX, u"abcde"}, {7, 1, u"abcdef"},
        {0, 1, u"abcdef"}, {2, -1, u"abcdef"}, {UINT_MAX, 1, u"abcdef"},
    };
    for (auto [position, count, after] : deletes) {
        eu16string s("abcdef");
        EXPECT_EQ(std16(s.AnsiDelete(position, count)), after) << position << ", " << count;
    }
    const std::tuple<int, int, std::u16string_view> subs[] = {
        {2, 3, u"bcd"}, {INT_MIN, 2, u"ab"}, {5, 10, u"ef"}, {2, INT_MAX, u"bcdef"},
        {6, 1, u"f"},   {7, 1, u""},         {INT_MAX, INT_MAX, u""}, {1, 0, u""},
    };
    for (auto [start, count, result] : subs)
        EXPECT_EQ(std16(eu16string("abcdef").AnsiSubString(start, count)), result) << start << ", " << count;
    eu16string s("abc");
    EXPECT_EQ(std16(s.AnsiSetLength(10)), u"abc");
    EXPECT_EQ(std16(s.AnsiSetLength(2)), u"ab");
    EXPECT_EQ(s.data()[2], 0);
    const eu16string abc("abc");
    for (int position : {0, 4, INT_MIN}) EXPECT_EQ(abc.AnsiCharAtIndex(position), 0x20) << position;
    EXPECT_EQ(abc.AnsiCharAtIndex(3), 'c');
    s.AnsiCharAtIndex(2) = 'x';
    EXPECT_EQ(std16(s), u"ax");
    EXPECT_EQ(&s.AnsiCharAtIndex(3), &s[0]);  // out of range: the first unit
}

TEST(Eu16String, NumbersBothWays) {
    const std::tuple<std::u16string_view, int> cases[] = {
        {u"", 7},   {u"abc", 0},  {u"\t 42", 42}, {u"- 42", -42},  {u"--5", 0},   {u"42abc", 42},
        {u"\xFF15", 0}, {u"2147483648", INT_MAX}, {u"-2147483649", INT_MIN},
    };
    for (auto [text, value] : cases) EXPECT_EQ(StrToIntDef(u(text), 7), value) << text.size() << " units";
    EXPECT_EQ(std16(IntToEu16Str(LONG_MIN)), u"-9223372036854775808");
}

}  // namespace
