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

TEST(Eu16String, FromApplicationEncodingText) {
    struct Case {
        const char* text;
        std::u16string_view units;
    } const cases[] = {
        {"abc", u"abc"},
        {"", u""},
        {"caf\x8E \xDB\xF0", u"caf\u00E9 \u20AC\uF8FF"},
        {"\x80\xFF", u"\u00C4\u02C7"},
    };
    for (const Case& c : cases) EXPECT_EQ(std16(eu16string(c.text)), c.units) << c.text;
}

TEST(Eu16String, FromUtf8IsStrict) {
    struct Case {
        const char* bytes;
        std::u16string_view units;  // empty: refused
    } const cases[] = {
        {"abc", u"abc"},
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
        {"\xEF\xBB\xBF" "A", u"A"},  // byte order mark dropped
        {"\xFF", u""},
        {"a\x80", u""},                // lone continuation byte
        {"\xC0\x80", u""},             // overlong
        {"\xC1\xBF", u""},
        {"\xE0\x80\xAF", u""},         // overlong
        {"\xED\xA0\x80", u""},         // encoded surrogate
        {"\xF4\x90\x80\x80", u""},     // above U+10FFFF
        {"\xF5\x80\x80\x80", u""},
        {"ab\xE2\x82", u""},           // cut off at the end
        {"\xE2" "a\xAC", u""},
    };
    for (const Case& c : cases) {
        auto* bytes = reinterpret_cast<const unsigned char*>(c.bytes);
        EXPECT_EQ(std16(eu16string(bytes)), c.units) << c.bytes;
    }
}

TEST(Eu16String, FromCodePoint) {
    struct Case {
        unsigned int codePoint;
        std::u16string_view units;
        bool pair;
    } const cases[] = {
        {0x1F600, u"\xD83D\xDE00", true}, {0x10000, u"\xD800\xDC00", true},
        {0x10FFFF, u"\xDBFF\xDFFF", true}, {0x41, u"A", false},
        {0xFFFF, u"\xFFFF", false},        {0xD800, u"\xD800", false},  // a lone surrogate value
        {0, u"", false},                   {0x110041, u"A", false},
        {0x120000, u"", false},            {UINT_MAX, u"\xFFFF", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(std16(eu16string(c.codePoint)), c.units) << std::hex << c.codePoint;
        EXPECT_EQ(GetSurrogatePairForLongCharacter(c.codePoint, nullptr), c.pair);
        unsigned short out[3] = {0xBEEF, 0xBEEF, 0xBEEF};
        EXPECT_EQ(GetSurrogatePairForLongCharacter(c.codePoint, out), c.pair);
        EXPECT_EQ(out[c.pair ? 2 : 1], 0xBEEF) << std::hex << c.codePoint;
    }
}

TEST(Eu16String, FromOneCharacter) {
    EXPECT_EQ(std16(eu16string('a')), u"a");
    EXPECT_EQ(std16(eu16string('\x8E')), u"\u00E9");
    EXPECT_TRUE(eu16string('\0').empty());
}

TEST(Eu16String, GetStdStringUsesTheApplicationEncoding) {
    struct Case {
        std::u16string_view units;
        std::string bytes;
    } const cases[] = {
        {u"abc", "abc"},
        {u"", ""},
        {u"A\0B"sv, "A"},  // a zero unit ends the text
        {u"\x4E2D", "?"},
        {u"a\x4E2D" u"b", "a?b"},
        {u"\xD83D\xDE00", "??"},  // a pair is two units the encoding lacks
        {u"\xDC00" u"x", "?x"},   // a lone surrogate
        {u"caf\u00E9 \u20AC\uF8FF", "caf\x8E \xDB\xF0"},
    };
    for (const Case& c : cases) {
        std::string out = "left over";
        u(c.units).GetStdString(out);
        EXPECT_EQ(out, c.bytes);
    }
}

TEST(Eu16String, AnsiPos) {
    struct Case {
        std::u16string_view s, sought;
        int position;
    } const cases[] = {
        {u"abcabc", u"c", 3}, {u"abcabc", u"bc", 2}, {u"abcabc", u"cab", 3},
        {u"abc", u"x", 0},    {u"abc", u"", 1},      {u"", u"", 0},
        {u"abc", u"abcd", 0}, {u"abc", u"abc", 1},   {u"\xD83D\xDE00" u"x", u"x", 3},
    };
    for (const Case& c : cases) EXPECT_EQ(u(c.s).AnsiPos(u(c.sought)), c.position);
}

TEST(Eu16String, AnsiDeleteClampsAndIgnores) {
    struct Case {
        unsigned int position;
        int count;
        std::u16string_view after;
    } const cases[] = {
        {2, 2, u"adef"},   {5, 10, u"abcd"},   {6, 1, u"abcde"},  {1, 6, u""},
        {1, INT_MAX, u""}, {6, INT_MAX, u"abcde"},
        {7, 1, u"abcdef"}, {0, 1, u"abcdef"},  {2, 0, u"abcdef"}, {2, -1, u"abcdef"},
        {UINT_MAX, 1, u"abcdef"}, {2, INT_MIN, u"abcdef"},
    };
    for (const Case& c : cases) {
        eu16string s("abcdef");
        EXPECT_EQ(&s.AnsiDelete(c.position, c.count), &s);
        EXPECT_EQ(std16(s), c.after) << c.position << ", " << c.count;
    }
}

TEST(Eu16String, AnsiSubStringClampsAtBothEnds) {
    struct Case {
        int start, count;
        std::u16string_view result;
    } const cases[] = {
        {2, 3, u"bcd"},   {0, 2, u"ab"},         {-5, 2, u"ab"},   {INT_MIN, 2, u"ab"},
        {5, 10, u"ef"},   {2, INT_MAX, u"bcdef"}, {6, 1, u"f"},    {1, 6, u"abcdef"},
        {7, 1, u""},      {INT_MAX, INT_MAX, u""}, {1, 0, u""},    {1, -1, u""},
        {0, 0, u""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(std16(eu16string("abcdef").AnsiSubString(c.start, c.count)), c.result)
            << c.start << ", " << c.count;
    EXPECT_TRUE(eu16string().AnsiSubString(1, 1).empty());
}

TEST(Eu16String, AnsiSetLengthNeverLengthens) {
    struct Case {
        std::u16string_view before;
        unsigned int length;
        std::u16string_view after;
    } const cases[] = {
        {u"abcdef", 3, u"abc"}, {u"abc", 10, u"abc"}, {u"abc", 3, u"abc"},
        {u"abc", 0, u""},       {u"", 0, u""},        {u"abc", UINT_MAX, u"abc"},
    };
    for (const Case& c : cases) {
        eu16string s = u(c.before);
        EXPECT_EQ(&s.AnsiSetLength(c.length), &s);
        EXPECT_EQ(std16(s), c.after);
        EXPECT_EQ(s.data()[s.size()], 0);
    }
}

TEST(Eu16String, AnsiCharAtIndex) {
    const eu16string abc("abc");
    struct Case {
        int position;
        unsigned short unit;
    } const cases[] = {
        {1, 'a'}, {3, 'c'}, {0, 0x20}, {4, 0x20}, {-1, 0x20}, {INT_MIN, 0x20}, {INT_MAX, 0x20},
    };
    for (const Case& c : cases) EXPECT_EQ(abc.AnsiCharAtIndex(c.position), c.unit) << c.position;

    eu16string s("abc");
    s.AnsiCharAtIndex(2) = 'x';
    EXPECT_EQ(std16(s), u"axc");
    EXPECT_EQ(&s.AnsiCharAtIndex(4), &s[0]);  // out of range: the first unit
    EXPECT_EQ(&s.AnsiCharAtIndex(0), &s[0]);
    EXPECT_EQ(eu16string().AnsiCharAtIndex(1), 0);  // the terminator of an empty string
}

TEST(Eu16String, StrToIntDef) {
    struct Case {
        std::u16string_view text;
        int def;
        int value;
    } const cases[] = {
        {u"", 7, 7},
        {u"   ", 7, 0},
        {u"42", 7, 42},
        {u"abc", 7, 0},  // not a number is 0, not the default
        {u"-12", 7, -12},
        {u"+12", 7, 12},
        {u"  42", 7, 42},
        {u"42  ", 7, 42},
        {u"\t\n\r 42", 7, 42},
        {u"\0 5"sv, 7, 5},  // a zero unit is white space to the scan
        {u"\x00A0\x2000\x200B\x3000\x007F" u"8", 7, 8},
        {u"\x200C" u"8", 7, 0},
        {u"- 42", 7, -42},
        {u"--5", 7, 0},
        {u"+-5", 7, 0},
        {u"-", 7, 0},
        {u"42abc", 7, 42},
        {u"3.9", 7, 3},
        {u"0x1A", 7, 0},
        {u"1,000", 7, 1},
        {u"\xFF15", 7, 0},  // full-width digits are not digits
        {u"007", 7, 7},
        {u"2147483647", 7, INT_MAX},
        {u"2147483648", 7, INT_MAX},
        {u"99999999999999999999999", 7, INT_MAX},
        {u"-2147483648", 7, INT_MIN},
        {u"-2147483649", 7, INT_MIN},
        {u"-99999999999999999999999", 7, INT_MIN},
    };
    for (const Case& c : cases)
        EXPECT_EQ(StrToIntDef(u(c.text), c.def), c.value) << c.text.size() << " units";
}

TEST(Eu16String, IntToEu16Str) {
    struct Case {
        long value;
        const char* text;
    } const cases[] = {
        {-12, "-12"},
        {0, "0"},
        {LONG_MAX, "9223372036854775807"},
        {LONG_MIN, "-9223372036854775808"},
    };
    for (const Case& c : cases) {
        std::string back;
        IntToEu16Str(c.value).GetStdString(back);
        EXPECT_EQ(back, c.text);
    }
}

}  // namespace
