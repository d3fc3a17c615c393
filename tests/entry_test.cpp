// The built plug-in bundle driven through its exported entry points, as the
// host drives it: main, enumeration and its texts, the host's language.
#include "bundles.h"
#include "fresh.h"
#include "hostsim/boundary.h"
#include "hostsim/host.h"
#include "hostsim/plugin.h"
#include "zemlopdk.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using hostsim::Fx;
using namespace testing_support;

namespace {

using MainFn = int (*)(int, char**);
using EnumerateFn = int16_t (*)(void*, int16_t, void*);

// The host's menu item record: longer than the bytes the plug-in fills.
constexpr size_t kRecord = sizeof(hostsim::MenuItemRecord);
constexpr size_t kLast = hostsim::kMenuTextRoom - 1;  // each text's last unit
constexpr uint8_t kFill = 0xAB;

struct Record {
    alignas(8) uint8_t bytes[kRecord];
    Record() { std::memset(bytes, kFill, sizeof bytes); }
    uint16_t unit(size_t field, size_t i) const {
        uint16_t u;
        std::memcpy(&u, bytes + field * hostsim::kMenuTextRoom * 2 + i * 2, 2);
        return u;
    }
    std::u16string text(size_t field) const {
        std::u16string s;
        for (size_t i = 0; i < hostsim::kMenuTextRoom && unit(field, i); ++i) s.push_back(unit(field, i));
        return s;
    }
    bool operator==(const Record& o) const { return std::memcmp(bytes, o.bytes, sizeof bytes) == 0; }
};

// A field holds its text, a zero unit, the host's units untouched up to the
// last of its room, and a zero there.
void expectField(const Record& r, size_t field, const std::u16string& text) {
    SCOPED_TRACE("text " + std::to_string(field));
    size_t n = std::min<size_t>(text.size(), kLast);
    EXPECT_EQ(r.text(field), text.substr(0, n));
    EXPECT_EQ(r.unit(field, n), 0);
    for (size_t i = n + 1; i < kLast; ++i) ASSERT_EQ(r.unit(field, i), 0xABAB) << "unit " << i;
    EXPECT_EQ(r.unit(field, kLast), 0);
}

void expectFilled(const Record& r, const std::u16string& item, const std::u16string& second,
                  const std::u16string& undo) {
    expectField(r, 0, item);
    expectField(r, 1, second);
    expectField(r, 2, undo);
    for (size_t i = 3 * hostsim::kMenuTextRoom * 2; i < kRecord; ++i) ASSERT_EQ(r.bytes[i], i < hostsim::kMenuItemFilled ? 0 : kFill) << i;
}

class Entry : public FreshHost {
  protected:
    // The built bundle, or a copy of it whose only table is `table`.
    void load(const std::string& table = "", bool withTable = true) {
        std::string bundle = CAPOCHORDS_BUNDLE;
        if (!table.empty() || !withTable) {
            bundle = copyBundleWithoutTables(CAPOCHORDS_BUNDLE, tmp_.path());
            if (withTable) putTable(bundle, "en", table);
        }
        plugin_ = std::make_unique<hostsim::Plugin>(bundle, /*freshCopy=*/true);
        ASSERT_TRUE(plugin_->loaded()) << plugin_->error();
    }
    template <class F> F fn(const char* name) {
        F f = plugin_->function<F>(name);
        EXPECT_NE(f, nullptr) << name << " is not exported";
        return f;
    }
    int bind() {
        char arg0[] = "Zemlo";
        char* argv[] = {arg0, nullptr};
        return fn<MainFn>("main")(1, argv);
    }

    Locale english_{"en_US.UTF-8"};
    TempDir tmp_;
    std::unique_ptr<hostsim::Plugin> plugin_;
};

const std::string kMenuTable = entry("20000", "Capo Chords") + entry("20001", "Second") + entry("20002", "Undo Capo");

// Index 0 and every index below it describe the one item; above it there is
// nothing and the record stays as the host gave it.
TEST_F(Entry, EnumerationAtZeroAndBelowFillsAboveAnswersNothing) {
    load(kMenuTable);
    ASSERT_EQ(bind(), 1);
    auto enumerate = fn<EnumerateFn>("ZemloExtensionEnumerate_UTF16");
    for (int16_t index : {0, -1, -32768}) {
        SCOPED_TRACE(index);
        Record r;
        EXPECT_EQ(enumerate(nullptr, index, r.bytes), 1);
        expectFilled(r, u"Capo Chords", u"Second", u"Undo Capo");
    }
    for (int16_t index : {1, 2, 32767}) {
        SCOPED_TRACE(index);
        Record r;
        EXPECT_EQ(enumerate(nullptr, index, r.bytes), 0);
        EXPECT_TRUE(r == Record());
    }
    EXPECT_EQ(enumerate(nullptr, 0, nullptr), 0);  // no record to fill
    EXPECT_EQ(hostsim::count(Fx::FX_AlertMessage), 0u);
}

TEST_F(Entry, LongMenuTextIsCutAndTheNextFieldStaysIntact) {
    std::string longText(200, 'C');
    load(entry("20000", longText) + entry("20001", "Second") + entry("20002", "Undo Capo"));
    Record r;
    EXPECT_EQ(fn<EnumerateFn>("ZemloExtensionEnumerate_UTF16")(nullptr, 0, r.bytes), 1);
    EXPECT_EQ(r.text(0), std::u16string(kLast, u'C'));
    EXPECT_EQ(r.unit(0, kLast), 0);
    expectField(r, 1, u"Second");
}

// A host that passes no arguments gets 0 from main and no binding; the
// plug-in still answers everything else, and a later proper main binds it.
TEST_F(Entry, MainWithoutArgumentsBindsNothingAndTheRestStillAnswers) {
    load(kMenuTable);
    auto m = fn<MainFn>("main");
    char arg0[] = "Zemlo";
    char* argv[] = {arg0, nullptr};
    EXPECT_EQ(m(0, argv), 0);
    EXPECT_EQ(m(1, nullptr), 0);
    EXPECT_EQ(m(0, nullptr), 0);
    EXPECT_EQ(*plugin_->variable<void*>("gZemloBundle"), nullptr);
    Record r;
    EXPECT_EQ(fn<EnumerateFn>("ZemloExtensionEnumerate_UTF16")(nullptr, 0, r.bytes), 1);
    expectFilled(r, u"Capo Chords", u"Second", u"Undo Capo");
    EXPECT_EQ(m(1, argv), 1);
    EXPECT_NE(*plugin_->variable<void*>("gZemloBundle"), nullptr);
}

// zemlo-host copied into an application layout whose Resources hold the
// given language folders, run with the user's language set to `user`.
struct HostLanguage {
    const char* what;
    std::vector<std::string> hostFolders;
    const char* user;
    const char* expected;
};

void PrintTo(const HostLanguage& c, std::ostream* os) { *os << c.what; }

class PlugInLanguage : public ::testing::TestWithParam<HostLanguage> {};

TEST_P(PlugInLanguage, FollowsTheHostApplicationWhereItHasOne) {
    const HostLanguage& c = GetParam();
    TempDir tmp;
    std::string app = tmp.path() + "/Zemlo.app/Contents";
    fs::create_directories(app + "/MacOS");
    fs::copy_file(ZEMLO_HOST, app + "/MacOS/zemlo-host");
    for (const std::string& l : c.hostFolders) fs::create_directories(app + "/Resources/" + l + ".lproj");
    // Copied away from its bundles, the program is told where the plug-in is.
    std::string command = "'" + app + "/MacOS/zemlo-host' --bundle '" CAPOCHORDS_BUNDLE "' --lang " +
                          c.user + " 2>&1";
    FILE* out = popen(command.c_str(), "r");
    ASSERT_NE(out, nullptr);
    std::string printed;
    char buf[512];
    while (size_t n = std::fread(buf, 1, sizeof buf, out)) printed.append(buf, n);
    EXPECT_EQ(pclose(out), 0) << printed;
    EXPECT_NE(printed.find(std::string("Menu item 0: ") + c.expected + "\n"), std::string::npos) << printed;
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, PlugInLanguage,
    ::testing::Values(HostLanguage{"HostInFrench", {"fr"}, "de_DE.UTF-8", "Accords avec capodastre\u2026"},
                      HostLanguage{"HostLanguageThePlugInLacks", {"ja"}, "de_DE.UTF-8",
                                   "Kapodaster-Akkorde\u2026"},
                      HostLanguage{"UserLanguageTheHostLacks", {"fr", "en"}, "nl_NL", "Capo Chords\u2026"}),
    [](const auto& tp) { return std::string(tp.param.what); });

}  // namespace
