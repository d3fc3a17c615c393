// Reading localized string tables: the old-style form with its comments,
// quoting and escapes, the encodings, and tables that must fail whole.
#include "cfobject.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using cfimpl::StringsTable;

struct Readable {
    const char* what;
    std::string bytes;
    StringsTable expected;
};

std::string utf16le(const std::u16string& s, bool bom = true) {
    std::string b = bom ? "\xFF\xFE" : "";
    for (char16_t c : s) {
        b.push_back(static_cast<char>(c & 0xFF));
        b.push_back(static_cast<char>(c >> 8));
    }
    return b;
}

std::string utf16be(const std::u16string& s) {
    std::string b = "\xFE\xFF";
    for (char16_t c : s) {
        b.push_back(static_cast<char>(c >> 8));
        b.push_back(static_cast<char>(c & 0xFF));
    }
    return b;
}

std::string utf32le(const std::u32string& s) {
    std::string b("\xFF\xFE\x00\x00", 4);
    for (char32_t c : s)
        for (int k = 0; k < 4; ++k) b.push_back(static_cast<char>((c >> (8 * k)) & 0xFF));
    return b;
}

void PrintTo(const Readable& c, std::ostream* os) { *os << c.what; }

class ReadsTable : public ::testing::TestWithParam<Readable> {};

TEST_P(ReadsTable, Entries) {
    StringsTable t;
    EXPECT_TRUE(cfimpl::parseStringsTable(GetParam().bytes, t));
    EXPECT_EQ(t, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ReadsTable,
    ::testing::Values(
        Readable{"Plain", "\"20000\" = \"Capo Chords\";", {{u"20000", u"Capo Chords"}}},
        Readable{"Comments", "/* head */\n\"a\" /* in */ = // line\n \"b\"; // tail", {{u"a", u"b"}}},
        Readable{"Unquoted", "20004 = Capo_1.$/:-x;", {{u"20004", u"Capo_1.$/:-x"}}},
        Readable{"KeyAlone", "\"Capo\";", {{u"Capo", u"Capo"}}},
        Readable{"SingleQuotes", "'k' = 'say \"Capo\"'; \"m\" = \"it's\";",
                 {{u"k", u"say \"Capo\""}, {u"m", u"it's"}}},
        Readable{"LastWins", "\"k\" = \"1\"; \"k\" = \"2\";", {{u"k", u"2"}}},
        Readable{"Escapes", "\"k\" = \"\\a\\b\\f\\n\\r\\t\\v\\\"\\\\\\'\\q\";",
                 {{u"k", u"\a\b\f\n\r\t\v\"\\'q"}}},
        Readable{"UnicodeEscapes", "\"k\" = \"\\U266F \\U00e9x \\U41 \\Ux\";",
                 {{u"k", std::u16string(u"\u266F \u00E9x A \u0000x", 9)}}},
        Readable{"OctalEscapes", "\"k\" = \"\\101\\0619\\7\";", {{u"k", u"A19\a"}}},
        Readable{"Utf16LittleEndian", utf16le(u"\"20000\" = \"Kapodaster-Akkorde\u2026\";"),
                 {{u"20000", u"Kapodaster-Akkorde\u2026"}}},
        Readable{"Utf16BigEndian", utf16be(u"\"k\" = \"\u266F\";"), {{u"k", u"\u266F"}}},
        Readable{"Utf32", utf32le(U"\"k\" = \"\U0001D11E\";"), {{u"k", u"\U0001D11E"}}},
        Readable{"NestedValuesHoldNoText",
                 "\"a\" = (\"x\", (y), {z = w;},); \"b\" = { c = d; }; \"d\" = <0aFF 12>; \"e\" = \"t\";",
                 {{u"e", u"t"}}},
        Readable{"XmlForm",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                 "<key>20000</key><string>Capo &amp; more</string></dict></plist>",
                 {{u"20000", u"Capo & more"}}}),
    [](const auto& tp) { return std::string(tp.param.what); });

struct Broken {
    const char* what;
    std::string bytes;
};

void PrintTo(const Broken& c, std::ostream* os) { *os << c.what; }

class RefusesTable : public ::testing::TestWithParam<Broken> {};

// A table that fails is empty whatever it held before the error.
TEST_P(RefusesTable, Whole) {
    StringsTable t{{u"left", u"over"}};
    EXPECT_FALSE(cfimpl::parseStringsTable(GetParam().bytes, t));
    EXPECT_TRUE(t.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Errors, RefusesTable,
    ::testing::Values(
        Broken{"MissingLastSemicolon", "\"a\" = \"1\"; \"b\" = \"2\""},
        Broken{"OpenQuote", "\"a\" = \"1;"},
        Broken{"OpenComment", "\"a\" = \"1\"; /* never closed"},
        Broken{"InvalidUtf8", "\"a\" = \"caf\xE9\";"},
        Broken{"OddUtf16", std::string("\xFF\xFE\x22\x00\x61", 5)},
        Broken{"StrayCharacter", "\"a\" = \"1\"; #"},
        Broken{"Binary", std::string("bplist00\xD1\x01\x02", 11)},
        Broken{"XmlMalformed", "<?xml version=\"1.0\"?><plist><dict><key>a</key></dict></plist>"}),
    [](const auto& tp) { return std::string(tp.param.what); });

TEST(RefusesTableDepth, DeepNestingFailsInsteadOfOverflowing) {
    std::string deep = "\"a\" = " + std::string(100000, '(') + std::string(100000, ')') + ";";
    StringsTable t;
    EXPECT_FALSE(cfimpl::parseStringsTable(deep, t));
}

}  // namespace
