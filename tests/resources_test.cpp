// The plug-in's localized string table, read from inside a loaded copy of
// the plug-in: rooms, key texts of missing numbers, the missing-table alert,
// 8-bit delivery, and finding the plug-in's own bundle.
#include "bundles.h"
#include "fresh.h"
#include "hostsim/host.h"
#include "zemlopdk.h"

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using hostsim::Fx;
using namespace testing_support;

namespace {

using GetUtf16Fn = unsigned short* (*)(int, unsigned short*, short);
using Get8BitFn = char* (*)(int, char*, short);
using LoadIndFn = short (*)(short, short, char*, short);
using BundleFn = CFBundleRef (*)();
using DlbundleFn = CFBundleRef (*)(CFStringRef);

constexpr unsigned short kFill16 = 0xCDCD;
constexpr char kFill8 = static_cast<char>(0xCD);

std::u16string letters(size_t n) {
    std::u16string s;
    for (size_t i = 0; i < n; ++i) s.push_back(static_cast<char16_t>('a' + i % 26));
    return s;
}

std::string utf8(const std::u16string& s) {
    CFStringRef c = CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(s.data()),
                                                 static_cast<CFIndex>(s.size()));
    std::vector<char> buf(s.size() * 4 + 1);
    CFStringGetCString(c, buf.data(), static_cast<CFIndex>(buf.size()), kCFStringEncodingUTF8);
    CFRelease(c);
    return buf.data();
}

std::u16string u16(const unsigned short* u) { return reinterpret_cast<const char16_t*>(u); }

std::string pathOf(CFBundleRef b) {
    CFURLRef url = CFBundleCopyBundleURL(b);
    char buf[4096] = {0};
    CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8*>(buf), sizeof buf);
    CFRelease(url);
    return buf;
}

// The test table of the made-up bundles.
const std::u16string kLong300 = letters(300);
const std::u16string kLong255 = letters(255);
std::string testTable() {
    return entry("20000", utf8(kLong300)) + entry("20001", "Capo 1") + entry("20002", utf8(kLong255)) +
           entry("20003", "Caf\xC3\xA9") + entry("20005", "G\xE2\x99\xAF") + entry("20006", "20006") +
           entry("128,3", "Drop D") + entry("128,-1", "last of list 128");
}

class Resources : public FreshHost {
  protected:
    // A copy of the test image whose only table is `table` (none when empty),
    // in a folder under `parent` (a new temporary folder when empty).
    std::string madeUpBundle(const std::string& table, std::string parent = "") {
        if (parent.empty()) parent = tmp_.path();
        std::string b = copyBundleWithoutTables(CAPOCHORDS_PROBE_BUNDLE, parent);
        if (!table.empty()) putTable(b, "en", table);
        return b;
    }

    Locale english_{"en_US.UTF-8"};
    TempDir tmp_;
};

// UTF-16 delivery: cut to room - 1, terminated, the last unit of the room
// zeroed, the units between left alone, nothing written past the room.
// 8-bit delivery: the application's encoding (Mac Roman), all or nothing,
// the rest of the room filled with zero bytes.
TEST_F(Resources, RoomsCutTerminateAndBound) {
    Probe p(madeUpBundle(testTable()));
    ASSERT_TRUE(p.ready());
    const struct {
        int number;
        short capacity;
        std::u16string text;  // what the table holds for the number
    } rooms16[] = {{20000, 0, kLong300},   {20000, 1, kLong300},  {20000, 301, kLong300},
                   {20001, 7, u"Capo 1"},  {20001, 6, u"Capo 1"}, {20099, 64, u"20099"}};
    for (const auto& c : rooms16) {
        SCOPED_TRACE(testing::Message() << c.number << " in " << c.capacity);
        std::vector<unsigned short> buf(512, kFill16);
        unsigned short* r =
            p.fn<GetUtf16Fn>("PlugIn_GetStringResource_UTF16")(c.number, buf.data(), c.capacity);
        if (c.capacity <= 0) {
            EXPECT_EQ(r, nullptr);
            EXPECT_EQ(buf, std::vector<unsigned short>(512, kFill16));
            continue;
        }
        ASSERT_EQ(r, buf.data());
        size_t cap = static_cast<size_t>(c.capacity);
        size_t n = std::min(c.text.size(), cap - 1);
        EXPECT_EQ(std::u16string(buf.begin(), buf.begin() + long(n)), c.text.substr(0, n));
        EXPECT_EQ(buf[n], 0);
        for (size_t i = n + 1; i + 1 < cap; ++i) ASSERT_EQ(buf[i], kFill16) << "unit " << i;
        EXPECT_EQ(buf[cap - 1], 0);
        for (size_t i = cap; i < buf.size(); ++i) ASSERT_EQ(buf[i], kFill16) << "past " << i;
    }
    const struct {
        int number;
        short capacity;
        std::string expected;
    } rooms8[] = {{20001, 0, ""},          {20001, 4, "Cap"},
                  {20003, 64, "Caf\x8E"}, {20005, 64, ""},  // unmappable
                  {20000, 256, ""},  // longer than 255
                  {20002, 256, std::string(kLong255.begin(), kLong255.end())}};
    for (const auto& c : rooms8) {
        SCOPED_TRACE(testing::Message() << c.number << " in " << c.capacity << " bytes");
        std::vector<char> buf(400, kFill8);
        char* r = p.fn<Get8BitFn>("PlugIn_GetStringResource_8bit")(c.number, buf.data(), c.capacity);
        if (c.capacity == 0) {
            EXPECT_EQ(r, nullptr);
            EXPECT_EQ(buf, std::vector<char>(400, kFill8));
            continue;
        }
        ASSERT_EQ(r, buf.data());
        EXPECT_EQ(std::string(buf.data()), c.expected);
        for (size_t i = c.expected.size(); i < size_t(c.capacity); ++i) ASSERT_EQ(buf[i], 0) << i;
        for (size_t i = size_t(c.capacity); i < buf.size(); ++i) ASSERT_EQ(buf[i], kFill8) << i;
    }
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 0u);
}

// Numbers the table lacks come back as their key text, with no alert.
TEST_F(Resources, MissingNumbersAnswerTheirKeyTextWithoutAlert) {
    Probe p;
    ASSERT_TRUE(p.ready());
    struct {
        int number;
        const char* key;
    } cases[] = {{40000, "-25536"}, {0, "0"}, {-1, "-1,-1"}, {0x7FFF8000, "32767,-32768"}};
    auto get16 = p.fn<GetUtf16Fn>("PlugIn_GetStringResource_UTF16");
    auto get8 = p.fn<Get8BitFn>("PlugIn_GetStringResource_8bit");
    for (const auto& c : cases) {
        unsigned short u[64];
        get16(c.number, u, 64);
        EXPECT_EQ(u16(u), std::u16string(c.key, c.key + std::strlen(c.key))) << c.number;
        char b[64];
        get8(c.number, b, 64);
        EXPECT_STREQ(b, c.key) << c.number;
    }
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 0u);
}

TEST_F(Resources, IndexedListsMapOntoTheTable) {
    Probe p(madeUpBundle(testTable()));
    ASSERT_TRUE(p.ready());
    auto load = p.fn<LoadIndFn>("LoadIndString");
    char buf[64];
    EXPECT_EQ(load(128, 3, buf, 64), 6);
    EXPECT_STREQ(buf, "Drop D");
    EXPECT_EQ(load(128, -1, buf, 64), 16);  // the index is taken without its sign
    EXPECT_STREQ(buf, "last of list 128");
    EXPECT_EQ(load(128, 3, buf, 4), 3);
    EXPECT_STREQ(buf, "Dro");
    std::memset(buf, kFill8, sizeof buf);
    EXPECT_EQ(load(128, 3, buf, 0), 0);
    EXPECT_EQ(buf[0], kFill8);
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 0u);
}

// Without any table every request answers its key text and alerts once.
TEST_F(Resources, BundleWithoutTableAlertsOncePerRequest) {
    Probe p(madeUpBundle(""));
    ASSERT_TRUE(p.ready());
    unsigned short u[64];
    p.fn<GetUtf16Fn>("PlugIn_GetStringResource_UTF16")(20000, u, 64);
    EXPECT_EQ(u16(u), u"20000");
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 1u);
    p.fn<GetUtf16Fn>("PlugIn_GetStringResource_UTF16")(40000, u, 64);
    EXPECT_EQ(u16(u), u"-25536");
    char b[64];
    p.fn<Get8BitFn>("PlugIn_GetStringResource_8bit")(20001, b, 64);
    EXPECT_STREQ(b, "20001");
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 3u);
    for (const hostsim::Call& call : hostsim::calls()) {
        ASSERT_EQ(call.fx, Fx::FX_AlertMessage);
        EXPECT_EQ(call.args, (std::vector<uint64_t>{0, 0, 0, call.args[3], FXT_VERSION}));
        EXPECT_STREQ(call.ptr<const char>(3), "Missing Localizable.strings");
    }
}

// A failed discovery is not kept: the next request walks again.
TEST_F(Resources, FailedDiscoveryIsTriedAgain) {
    Probe p(madeUpBundle(testTable()));
    ASSERT_TRUE(p.ready(false));
    std::string info = p.plugin().bundlePath() + "/Contents/Info.plist";
    std::string saved = info + ".away";
    ASSERT_EQ(std::rename(info.c_str(), saved.c_str()), 0);
    auto getBundle = p.fn<BundleFn>("GetPluginBundle");
    EXPECT_EQ(getBundle(), nullptr);
    EXPECT_EQ(p.fn<DlbundleFn>("dlbundle")(nullptr), nullptr);
    ASSERT_EQ(std::rename(saved.c_str(), info.c_str()), 0);
    CFBundleRef b = getBundle();
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(pathOf(b), p.plugin().bundlePath());
}

// No bundle to be found (its Info.plist or the whole folder gone): a
// programming fault where assertions hold, an empty text without alert
// where they do not.
TEST_F(Resources, LostBundleStopsTheLookupOnTheAssertion) {
    {
        TempDir parent;
        Probe p(madeUpBundle(testTable(), parent.path()));
        ASSERT_TRUE(p.ready());
        std::error_code ec;
        fs::remove_all(p.plugin().bundlePath(), ec);
        ASSERT_FALSE(ec);
        auto get16 = p.fn<GetUtf16Fn>("PlugIn_GetStringResource_UTF16");
        unsigned short u[8] = {'x', 'x', 0};
#ifdef NDEBUG
        EXPECT_EQ(get16(20001, u, 8), u);
        EXPECT_EQ(u[0], 0);
        EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 0u);
#else
        EXPECT_DEATH(get16(20001, u, 8), "Assertion failed: bundleRef != NULL, function "
                                         "CopyPlugInStringResource, file portable");
#endif
    }
}

}  // namespace
