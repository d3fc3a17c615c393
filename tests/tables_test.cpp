// The string tables the bundle ships: every localization holds every number
// the plug-in asks for, in the room it asks with, in a form the command can use.
#include "cfobject.h"

#include "hostsim/boundary.h"
#include "hostsim/ui.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

const std::set<std::string> kRequired = {"en", "de", "fr", "es", "it", "nl"};

// Rooms in UTF-16 units, terminator included, as the host hands them out.
size_t roomOf(int number) {
    if (number <= 20002) return hostsim::kMenuTextRoom;
    if (number == 20012) return hostsim::kUnitCaptionRoom;
    return hostsim::kTextRoom;
}

// The string numbers the settings dialog's description takes its words from.
std::set<int32_t> dialogNumbers() {
    std::ifstream in(std::string(CAPOCHORDS_SOURCE_DIR) + "/resources/dialog20009.dlg", std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    hostsim::ui::DialogLayout layout;
    std::string why;
    EXPECT_TRUE(hostsim::ui::parseDialog(text.str(), &layout, &why)) << why;
    std::set<int32_t> numbers = {layout.title.stringNumber};
    for (const auto& c : layout.controls)
        if (c.caption.stringNumber) numbers.insert(c.caption.stringNumber);
    return numbers;
}

std::u16string at(const cfimpl::StringsTable& t, int number) {
    auto key = std::to_string(number);
    auto it = t.find(std::u16string(key.begin(), key.end()));
    return it == t.end() ? u"" : it->second;
}

bool isDigit(char16_t c) { return c >= '0' && c <= '9'; }

size_t count(const std::u16string& s, const std::u16string& what) {
    size_t n = 0;
    for (size_t at = s.find(what); at != std::u16string::npos; at = s.find(what, at + what.size())) ++n;
    return n;
}

TEST(Tables, EveryLocalizationHoldsEveryNumber) {
    fs::path resources = fs::path(CAPOCHORDS_SOURCE_DIR) / "resources";
    std::set<std::string> found;
    for (const auto& dir : fs::directory_iterator(resources)) {
        if (dir.path().extension() != ".lproj") continue;
        std::string lang = dir.path().stem().string();
        found.insert(lang);
        SCOPED_TRACE(lang);
        std::ifstream in(dir.path() / "Localizable.strings", std::ios::binary);
        ASSERT_TRUE(in) << "no table";
        std::ostringstream bytes;
        bytes << in.rdbuf();
        cfimpl::StringsTable t;
        ASSERT_TRUE(cfimpl::parseStringsTable(bytes.str(), t)) << "the table does not parse";
        for (int n = 20000; n <= 20013; ++n) {
            std::u16string text = at(t, n);
            EXPECT_FALSE(text.empty()) << n << " missing";
            EXPECT_LT(text.size(), roomOf(n)) << n << " does not fit its room";
            // The 8-bit interface delivers these too.
            for (char16_t c : text) EXPECT_GE(cfimpl::macRomanByteFor(c), 0) << n << " has U+" << std::hex << int(c);
        }
        for (int32_t n : dialogNumbers()) EXPECT_FALSE(at(t, n).empty()) << n << " (a dialog caption) missing";
        // The caption format takes exactly one unit name and nothing else.
        std::u16string caption = at(t, 20012);
        EXPECT_EQ(count(caption, u"%S"), 1u) << "20012";
        EXPECT_EQ(count(caption, u"%"), 1u) << "20012 has another conversion";
        // The default label carries the fret in digits, so that the dialog
        // can keep it in step; the search text is part of it and has no
        // digits, so it survives every fret change.
        std::u16string label = at(t, 20004), search = at(t, 20013);
        EXPECT_TRUE(std::any_of(label.begin(), label.end(), isDigit)) << "20004";
        EXPECT_NE(label.find(search), std::u16string::npos) << "20013 is not part of 20004";
        EXPECT_TRUE(std::none_of(search.begin(), search.end(), isDigit)) << "20013";
    }
    for (const std::string& lang : kRequired) EXPECT_TRUE(found.count(lang)) << lang << ".lproj missing";
}

}  // namespace
