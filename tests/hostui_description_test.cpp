// Dialog descriptions: the format the host reads, and the description of the
// settings dialog that the plug-in's bundle carries.
#include "hostui_support.h"

#include "cfobject.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace ui = hostsim::ui;
using hostui::HostUi;
using ui::ControlKind;

namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(DialogDescription, SettingsDialogHasTheHandlersControls) {
    ui::DialogLayout layout;
    std::string why;
    ASSERT_TRUE(ui::parseDialog(readFile(CAPOCHORDS_SOURCE_DIR "/resources/dialog20009.dlg"),
                                &layout, &why))
        << why;
    EXPECT_EQ(layout.number, 20009);
    const std::pair<int16_t, ControlKind> handled[] = {
        {1, ControlKind::Button},    {2, ControlKind::Button},   {4, ControlKind::Number},
        {6, ControlKind::Text},      {7, ControlKind::Static},   {8, ControlKind::CheckBox},
        {9, ControlKind::CheckBox},  {10, ControlKind::Text},    {11, ControlKind::CheckBox}};
    std::set<int16_t> numbers;
    for (auto [n, kind] : handled) {
        const ui::ControlLayout* c = layout.control(n);
        ASSERT_NE(c, nullptr) << "control " << n;
        EXPECT_EQ(c->kind, kind) << "control " << n;
        numbers.insert(n);
    }
    for (const ui::ControlLayout& c : layout.controls) {
        if (!numbers.count(c.number)) {
            EXPECT_EQ(c.kind, ControlKind::Static) << "control " << c.number;
        }
        // Words come from the string table, which every language has.
        if (c.caption.stringNumber == 0) {
            EXPECT_TRUE(c.caption.text.empty() && c.caption.byLanguage.empty()) << "control " << c.number;
        }
    }
    EXPECT_EQ(layout.title.stringNumber, 20000);  // the menu item's text
}

TEST(DialogDescription, BundleCarriesTheSourceFile) {
    EXPECT_EQ(readFile(CAPOCHORDS_BUNDLE "/Contents/Resources/dialog20009.dlg"),
              readFile(CAPOCHORDS_SOURCE_DIR "/resources/dialog20009.dlg"));
}

TEST(DialogDescription, ReadsEveryFormOfCaption) {
    const char* text =
        "# a comment\r\n"
        "\n"
        "dialog 300 \"T\" de \"Titel\"   # trailing comment\r\n"
        "1 button string 20000\n"
        "2 checkbox \"say \\\"hi\\\" \\\\ # not a comment\\n\" fr-CA \"allô\"\n"
        "  32767\tstatic \"\"\n";
    ui::DialogLayout layout;
    std::string why;
    ASSERT_TRUE(ui::parseDialog(text, &layout, &why)) << why;
    EXPECT_EQ(layout.number, 300);
    EXPECT_EQ(layout.title.text, "T");
    EXPECT_EQ(layout.title.byLanguage.at("de"), "Titel");
    ASSERT_EQ(layout.controls.size(), 3u);
    EXPECT_EQ(layout.controls[0].caption.stringNumber, 20000);
    EXPECT_EQ(layout.controls[1].kind, ControlKind::CheckBox);
    EXPECT_EQ(layout.controls[1].caption.text, "say \"hi\" \\ # not a comment\n");
    EXPECT_EQ(layout.controls[1].caption.byLanguage.at("fr-CA"), "all\xC3\xB4");
    EXPECT_EQ(layout.controls[2].number, 32767);
}

TEST(DialogDescription, RefusesMalformedTextNamingTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "line 1: no dialog line"},
        {"# only a comment\n", "line 2: no dialog line"},
        {"1 button \"OK\"", "line 1: the first line must be"},
        {"dialog 0", "line 1: dialog needs a number"},
        {"dialog 40000", "line 1: dialog needs a number"},
        {"dialog 9 OK", "line 1: caption must be"},
        {"dialog 9\n1 knob \"x\"", "line 2: kind must be"},
        {"dialog 9\n1 button", "line 2: caption missing"},
        {"dialog 9\n1 button \"OK\"\n1 button \"x\"", "line 3: control 1 given twice"},
        {"dialog 9\n1 button \"OK\\", "line 2: unterminated text"},
        {"dialog 9\n0 static \"\"", "line 2: a control line begins"},
        {"dialog 9\n4x static \"\"", "line 2: a control line begins"},
        {"dialog 9\n2 static OK", "line 2: caption must be"},
        {"dialog 9\n2 static string", "line 2: string needs"},
        {"dialog 9\n2 static string 20000 \"x\"", "line 2: unexpected"},
        {"dialog 9\n2 static \"a\" de", "line 2: expected a language"},
        {"dialog 9\n2 static \"a\" de \"b\" de \"c\"", "line 2: language de given twice"},
        {"dialog 9\n2 static \"\\q\"", "line 2: unknown escape"},
        {"dialog 9\n2 static \"\xFF\"", "line 2: text is not UTF-8"},
    };
    for (auto [text, expected] : cases) {
        ui::DialogLayout layout;
        std::string why;
        EXPECT_FALSE(ui::parseDialog(text, &layout, &why)) << text;
        EXPECT_EQ(why.rfind(expected, 0), 0u) << text << " gave: " << why;
    }
}

using DialogCaptions = HostUi;

// Controls start with their caption in the host's language, else the first
// text; string captions come from the plug-in's table, else read as numbers.
TEST_F(DialogCaptions, ControlsStartWithTheCaptionOfTheLanguage) {
    ui::DialogLayout layout;
    std::string why;
    ASSERT_TRUE(ui::parseDialog("dialog 77\n1 button \"OK\"\n2 button \"Cancel\" de \"Abbrechen\"\n"
                                "3 static string 20012\n",
                                &layout, &why))
        << why;
    ui::addDialog(layout);
    ui::setStringSource(nullptr);  // no table until a case gives one
    struct Case {
        const char* language;
        bool source;
        const char* cancel;
        const char* three;
    };
    const Case cases[] = {{"en", false, "Cancel", "20012"},
                          {"de", false, "Abbrechen", "20012"},
                          {"de", true, "Abbrechen", "Unit: %S"}};
    for (const Case& c : cases) {
        ui::setLanguage(c.language);
        if (c.source)
            ui::setStringSource([](int32_t n, std::u16string* out) {
                if (n != 20012) return false;
                *out = u"Unit: %S";
                return true;
            });
        ui::scriptDialog({ui::click(2)});
        hostui::Settings s;
        ASSERT_NE(FX_Dialog(77, reinterpret_cast<void*>(&hostui::settingsHandler), nullptr, 0, &s,
                            FXT_VERSION),
                  nullptr);
        const ui::DialogRun& r = ui::dialogs().back();
        EXPECT_EQ(r.text8(2), c.cancel) << c.language;
        EXPECT_EQ(r.text8(3), c.three) << c.language;
    }
}

// The settings dialog in each of the bundle's languages: every caption is that
// language's text of its string number, none is missing or left to another.
TEST_F(DialogCaptions, SettingsDialogShowsEachLanguagesOwnCaptions) {
    ui::DialogLayout layout;
    std::string why;
    ASSERT_TRUE(ui::parseDialog(readFile(CAPOCHORDS_SOURCE_DIR "/resources/dialog20009.dlg"), &layout, &why))
        << why;
    for (const char* language : {"en", "de", "fr", "es", "it", "nl"}) {
        SCOPED_TRACE(language);
        auto table = std::make_shared<cfimpl::StringsTable>();
        ASSERT_TRUE(cfimpl::parseStringsTable(
            readFile(std::string(CAPOCHORDS_SOURCE_DIR "/resources/") + language + ".lproj/Localizable.strings"),
            *table));
        auto entry = [table](int32_t n) {
            const std::string key = std::to_string(n);
            auto it = table->find(std::u16string(key.begin(), key.end()));
            return it == table->end() ? std::string() : ui::utf8(it->second);
        };
        ui::setLanguage(language);
        ui::setStringSource([table](int32_t n, std::u16string* out) {
            const std::string key = std::to_string(n);
            auto it = table->find(std::u16string(key.begin(), key.end()));
            if (it == table->end()) return false;
            *out = it->second;
            return true;
        });
        ui::scriptDialog({ui::click(2)});
        hostui::Settings s;
        ASSERT_NE(hostui::showSettings(&s), nullptr);
        const ui::DialogRun& r = ui::dialogs().back();
        for (const ui::ControlLayout& c : layout.controls) {
            if (c.caption.stringNumber == 0 || c.kind == ui::ControlKind::Text || c.kind == ui::ControlKind::Number)
                continue;
            const std::string want = entry(c.caption.stringNumber);
            EXPECT_FALSE(want.empty()) << "no string " << c.caption.stringNumber;
            EXPECT_EQ(r.text8(c.number), want) << "control " << c.number;
        }
    }
}

}  // namespace
