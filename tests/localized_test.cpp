// Localized resources of the Core Foundation stand-in: which language a
// bundle speaks, where resources are found, localized strings, and 8-bit
// length-prefixed text.
#include "bundles.h"
#include "cfobject.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using namespace testing_support;

std::string pathOf(CFURLRef url) {
    char buf[4096];
    return url && CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8*>(buf), sizeof buf) ? buf : "";
}

// The answer of CopyLocalizedString as UTF-16; "<null>" for none.
std::u16string localized(CFBundleRef b, const char* key, const char* value, const char* table = nullptr) {
    CFStringRef k = key ? str(key) : nullptr;
    CFStringRef v = value ? str(value) : nullptr;
    CFStringRef t = table ? str(table) : nullptr;
    CFStringRef s = CFBundleCopyLocalizedString(b, k, v, t);
    std::u16string out = s ? testing_support::units(s) : u"<null>";
    for (CFStringRef r : {k, v, t, s})
        if (r) CFRelease(r);
    return out;
}

// A bundle with tables in several languages; each table names its language.
struct Speaking {
    const char* what;
    const char* lcAll;
    const char* lcMessages;
    const char* lang;
    const char* developmentRegion;
    std::u16string expected;
};

void PrintTo(const Speaking& c, std::ostream* os) { *os << c.what; }

class LanguageChoice : public ::testing::TestWithParam<Speaking> {};

TEST_P(LanguageChoice, PicksTheTable) {
    const Speaking& c = GetParam();
    TempDir d;
    writeFile(d.path() + "/Contents/Info.plist",
              infoPlist({{"CFBundleDevelopmentRegion", c.developmentRegion}}));
    for (const char* l : {"en", "de", "fr", "pt-BR", "Base"})
        writeFile(d.path() + "/Contents/Resources/" + l + ".lproj/Localizable.strings", entry("lang", l));
    writeFile(d.path() + "/Contents/Resources/Italian.lproj/Localizable.strings", entry("lang", "Italian"));
    Locale locale(c.lcAll, c.lcMessages, c.lang);
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(localized(b, "lang", nullptr), c.expected);
    CFRelease(b);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, LanguageChoice,
    ::testing::Values(Speaking{"LcAll", "de_DE.UTF-8", nullptr, nullptr, "en", u"de"},
                      Speaking{"LcAllWinsOverLang", "fr_FR", nullptr, "de_DE", "en", u"fr"},
                      Speaking{"LcMessagesWinsOverLang", nullptr, "fr", "de", "en", u"fr"},
                      Speaking{"LangAlone", nullptr, nullptr, "de_AT.ISO-8859-1@euro", "en", u"de"},
                      Speaking{"RegionalVariantFallsToLanguage", "en_GB.UTF-8", nullptr, nullptr, "de", u"en"},
                      Speaking{"RegionalFolder", "pt_BR", nullptr, nullptr, "en", u"pt-BR"},
                      Speaking{"OldStyleFolderName", "it_IT", nullptr, nullptr, "en", u"Italian"},
                      Speaking{"UnknownTakesDevelopmentRegion", "ja_JP", nullptr, nullptr, "de", u"de"},
                      Speaking{"PosixLocaleTakesDevelopmentRegion", "C", nullptr, nullptr, "fr", u"fr"},
                      Speaking{"NothingSetTakesDevelopmentRegion", nullptr, nullptr, nullptr, "de", u"de"},
                      Speaking{"UnknownRegionTakesEnglish", "ja", nullptr, nullptr, "sv", u"en"}),
    [](const auto& tp) { return std::string(tp.param.what); });

TEST(LanguageChoiceFallback, NothingFitsTakesTheFirstLanguageItHas) {
    TempDir d;
    writeFile(d.path() + "/Contents/Info.plist", infoPlist({{"CFBundleDevelopmentRegion", "sv"}}));
    for (const char* l : {"Base", "fr", "es"})
        writeFile(d.path() + "/Contents/Resources/" + l + ".lproj/Localizable.strings", entry("lang", l));
    Locale locale("ja_JP");
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(localized(b, "lang", nullptr), u"es");
    CFRelease(b);
}

TEST(Localized, MissingKeysValuesAndTableNames) {
    TempDir d;
    writeFile(d.path() + "/Contents/Info.plist", infoPlist({{"CFBundleDevelopmentRegion", "en"}}));
    writeFile(d.path() + "/Contents/Resources/en.lproj/Localizable.strings", entry("20000", "Capo Chords"));
    writeFile(d.path() + "/Contents/Resources/en.lproj/Other.strings", entry("20000", "Other"));
    writeFile(d.path() + "/Contents/Resources/de.lproj/Localizable.strings", entry("20001", "nur deutsch"));
    Locale locale("en_US");
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(localized(b, "20000", "20000"), u"Capo Chords");
    EXPECT_EQ(localized(b, "20000", nullptr, ""), u"Capo Chords");  // the empty name is Localizable
    EXPECT_EQ(localized(b, "20000", nullptr, "Other"), u"Other");
    EXPECT_EQ(localized(b, "20099", "fallback"), u"fallback");
    EXPECT_EQ(localized(b, "20099", ""), u"20099");
    EXPECT_EQ(localized(b, "20099", nullptr), u"20099");
    EXPECT_EQ(localized(b, "20001", nullptr), u"20001");  // no other language's table is read
    EXPECT_EQ(localized(b, "20000", nullptr, "Absent"), u"20000");
    EXPECT_EQ(localized(b, nullptr, "v"), u"v");
    EXPECT_EQ(localized(b, nullptr, nullptr), u"");
    CFRelease(b);
}

TEST(Localized, TableIsReadOncePerBundle) {
    TempDir d;
    std::string table = d.path() + "/Contents/Resources/en.lproj/Localizable.strings";
    writeFile(d.path() + "/Contents/Info.plist", infoPlist({}));
    writeFile(table, entry("20000", "first"));
    Locale locale("en");
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(localized(b, "20000", nullptr), u"first");
    writeFile(table, entry("20000", "second"));
    EXPECT_EQ(localized(b, "20000", nullptr), u"first");
    CFRelease(b);
}

TEST(ResourceUrl, SearchOrder) {
    TempDir d;
    std::string res = d.path() + "/Contents/Resources";
    writeFile(d.path() + "/Contents/Info.plist", infoPlist({{"CFBundleDevelopmentRegion", "fr"}}));
    writeFile(res + "/top.txt", "");
    writeFile(res + "/de.lproj/top.txt", "");
    writeFile(res + "/de.lproj/chosen.txt", "");
    writeFile(res + "/Base.lproj/chosen.txt", "");
    writeFile(res + "/Base.lproj/base.txt", "");
    writeFile(res + "/es.lproj/base.txt", "");
    writeFile(res + "/fr.lproj/other.txt", "");
    writeFile(res + "/es.lproj/other.txt", "");
    writeFile(res + "/fr.lproj/development.txt", "");
    writeFile(res + "/sub/in.txt", "");
    writeFile(res + "/de.lproj/sub/local.txt", "");
    writeFile(res + "/de.lproj/typeless", "");
    Locale locale("de_CH");
    CFBundleRef b = bundleAt(d.path());
    ASSERT_NE(b, nullptr);
    struct Case {
        const char* name;
        const char* type;
        const char* sub;
        std::string expected;
    } cases[] = {
        {"top", "txt", nullptr, res + "/top.txt"},
        {"chosen", "txt", nullptr, res + "/de.lproj/chosen.txt"},
        {"base", "txt", nullptr, res + "/Base.lproj/base.txt"},
        {"other", "txt", nullptr, res + "/es.lproj/other.txt"},
        {"development", "txt", nullptr, res + "/fr.lproj/development.txt"},
        {"in", "txt", "sub", res + "/sub/in.txt"},
        {"local", "txt", "sub", res + "/de.lproj/sub/local.txt"},
        {"typeless", nullptr, nullptr, res + "/de.lproj/typeless"},
        {"typeless", "", nullptr, res + "/de.lproj/typeless"},
        {"absent", "txt", nullptr, ""},
        {"in", "txt", nullptr, ""},
    };
    for (const Case& c : cases) {
        CFStringRef name = str(c.name);
        CFStringRef type = c.type ? str(c.type) : nullptr;
        CFStringRef sub = c.sub ? str(c.sub) : nullptr;
        CFURLRef url = CFBundleCopyResourceURL(b, name, type, sub);
        EXPECT_EQ(pathOf(url), c.expected) << c.name;
        for (CFTypeRef r : {static_cast<CFTypeRef>(name), static_cast<CFTypeRef>(type),
                            static_cast<CFTypeRef>(sub), static_cast<CFTypeRef>(url)})
            if (r) CFRelease(r);
    }
    CFRelease(b);
}

std::u16string longText(size_t n) {
    std::u16string s;
    for (size_t i = 0; i < n; ++i) s.push_back(static_cast<char16_t>('a' + i % 26));
    return s;
}

std::string longBytes(size_t n) {
    std::u16string u = longText(n);
    return std::string(u.begin(), u.end());
}

struct Pascal {
    const char* what;
    std::u16string text;
    CFStringEncoding encoding;
    CFIndex size;
    bool ok;
    std::string bytes;  // the length byte and the text, when ok
};

void PrintTo(const Pascal& c, std::ostream* os) { *os << c.what; }

class PascalString : public ::testing::TestWithParam<Pascal> {};

TEST_P(PascalString, ConvertsWholeOrNothing) {
    const Pascal& c = GetParam();
    CFStringRef s = CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(c.text.data()),
                                                 static_cast<CFIndex>(c.text.size()));
    unsigned char buf[300];
    std::memset(buf, 0xEE, sizeof buf);
    EXPECT_EQ(CFStringGetPascalString(s, buf, c.size, c.encoding) != 0, c.ok);
    if (c.ok) {
        EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), c.bytes.size()), c.bytes);
        EXPECT_EQ(buf[c.bytes.size()], 0xEE);  // no terminator
    } else {
        EXPECT_EQ(buf[0], c.size < 1 || c.text.size() > 255 ? 0xEE : 0);  // untouched or emptied
    }
    CFRelease(s);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PascalString,
    ::testing::Values(Pascal{"MacRoman", u"Caf\u00E9 \u2026", kCFStringEncodingMacRoman, 256, true, "\x06" "Caf\x8E \xC9"},
                      Pascal{"Empty", u"", kCFStringEncodingMacRoman, 256, true, std::string(1, '\0')},
                      Pascal{"Utf8", u"\u266F", kCFStringEncodingUTF8, 256, true, "\x03\xE2\x99\xAF"},
                      Pascal{"Unmappable", u"G\u266F", kCFStringEncodingMacRoman, 256, false, ""},
                      Pascal{"AsciiRefusesLatin", u"\u00E9", kCFStringEncodingASCII, 256, false, ""},
                      Pascal{"Longest", longText(255), kCFStringEncodingMacRoman, 256, true,
                             "\xFF" + longBytes(255)},
                      Pascal{"TooLong", longText(256), kCFStringEncodingMacRoman, 300, false, ""},
                      Pascal{"Utf8BytesPastTheLimit", std::u16string(100, u'\u266F'), kCFStringEncodingUTF8, 300, false, ""},
                      Pascal{"TooLittleRoom", u"Capo", kCFStringEncodingMacRoman, 4, false, ""},
                      Pascal{"JustEnoughRoom", u"Capo", kCFStringEncodingMacRoman, 5, true, "\x04" "Capo"},
                      Pascal{"NoRoom", u"Capo", kCFStringEncodingMacRoman, 0, false, ""}),
    [](const auto& tp) { return std::string(tp.param.what); });

}  // namespace
