// The host interface and the preference maps against the lists in
// tests/interface/, written out by hand from the host interface
// documentation. Both sides of the host calls (our forwarders and the
// simulated host's exports) come from pdk/table/fxtable.def and the maps drive
// both load and save, so a wrong row there is mirrored everywhere else and
// only an independent list can see it.
#include "prefmaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> split(const std::string& s, char by) {
    std::vector<std::string> out;
    std::string item;
    std::istringstream in(s);
    while (std::getline(in, item, by))
        if (item.find_first_not_of(" \n") != std::string::npos) out.push_back(item);
    return out;
}

std::string trim(const std::string& s) {
    const size_t a = s.find_first_not_of(" \n"), b = s.find_last_not_of(" \n");
    return a == std::string::npos ? "" : s.substr(a, b - a + 1);
}

// The lines of a list in tests/interface/, comments and blank lines left out.
std::vector<std::string> listOf(const char* name) {
    std::ifstream in(std::string(CAPOCHORDS_SOURCE_DIR) + "/tests/interface/" + name);
    EXPECT_TRUE(in.good()) << name;
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);)
        if (!trim(line).empty() && line[0] != '#') out.push_back(line);
    return out;
}

// One row of fxtable.def as the table states it.
struct DefRow {
    const char *result, *params, *args, *kinds, *missing, *step;
};
const std::map<std::string, DefRow>& defRows() {
    static const std::map<std::string, DefRow> rows = {
#define FX_ENTRY(result, name, params, args, kinds, missing, step) \
    {#name, {#result, #params, #args, #kinds, #missing, #step}},
#include "fxtable.def"
#undef FX_ENTRY
    };
    return rows;
}

// A parameter list ("(int32_t a1, void* a2, uint32_t ver)") or a list of
// kinds ("(I32, PTR, VER)") in the documentation's words ("int32 ptr"); the
// stamp must end it. The names of a parameter list go to *names.
std::string wordsOf(const std::string& list, std::string* names = nullptr) {
    static const std::map<std::string, std::string> words = {
        {"int16_t", "int16"}, {"uint16_t", "uint16"}, {"int32_t", "int32"}, {"void*", "ptr"},
        {"bool", "bool"},     {"double", "double"},   {"I16", "int16"},     {"U16", "uint16"},
        {"I32", "int32"},     {"PTR", "ptr"},         {"BOOL", "bool"},     {"DBL", "double"},
        {"VOID", "-"},        {"uint32_t", "stamp"},  {"VER", "stamp"}};
    std::string out;
    const auto parts = split(list.substr(1, list.size() - 2), ',');
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string p = trim(parts[i]);
        const size_t cut = names ? p.find_last_of(' ') : p.size();
        if (names) *names += (i ? ", " : "") + p.substr(cut + 1);
        const std::string w = words.count(p.substr(0, cut)) ? words.at(p.substr(0, cut)) : "?" + p;
        if ((w == "stamp") != (i + 1 == parts.size())) return "not the stamp last";
        if (w != "stamp") out += (out.empty() ? "" : " ") + w;
    }
    return out;
}

TEST(Interface, EveryHostFunctionAsDocumented) {
    std::map<std::string, DefRow> left = defRows();
    size_t listed = 0;
    for (const std::string& entry : listOf("host_functions.txt")) {
        const std::string e = trim(entry);
        const size_t colon = e.find(" : "), eq = e.find(" = ");
        const std::string head = e.substr(0, colon), result = e.substr(colon + 3, eq - colon - 3),
                          missing = e.substr(eq + 3);
        const size_t space = head.find(' ');
        const std::string name = head.substr(0, space);
        const std::string args = space == std::string::npos ? "" : head.substr(space + 1);
        ++listed;
        SCOPED_TRACE(name);
        auto it = left.find(name);
        ASSERT_NE(it, left.end()) << "not in the table";
        const DefRow& r = it->second;
        std::string names;
        EXPECT_EQ(wordsOf(r.params, &names), args) << "parameters";
        EXPECT_EQ("(" + names + ")", std::string(r.args)) << "arguments passed on";
        EXPECT_EQ(wordsOf(r.kinds), args) << "kinds";
        EXPECT_EQ(wordsOf("(" + std::string(r.result) + ", VER)"), result) << "result";
        const bool answered = missing == "\" \"" || missing == "zeros";
        const std::string zero = missing == "null" || missing == "false" || missing == "-" ||
                                         missing == "zeros" ? "0" : missing;
        EXPECT_EQ(std::string(r.missing), missing == "\" \"" ? "FX_BLANK_PART_NAME" : zero)
            << "value without the host function";
        if (answered) {
            EXPECT_STREQ(r.step, "STEP") << "the forwarder makes its answer by hand";
        }
        left.erase(it);
    }
    EXPECT_EQ(listed, 164u);
    EXPECT_STREQ(FxBlankPartName, " ");
    for (const auto& extra : left) ADD_FAILURE() << extra.first << " is not a host function";
}

uint32_t prefTag(const char* name) {
    return 0x70660000u | static_cast<uint32_t>(static_cast<uint8_t>(name[2])) << 8 |
           static_cast<uint8_t>(name[3]);
}

// "36: ot41(-2,1) w3+w4" as a map row.
PREFERENCE_LOCATION_MAPRECORD rowOf(const std::string& field) {
    PREFERENCE_LOCATION_MAPRECORD r{};
    std::istringstream in(field);
    char c;
    std::string element, words, conversion;
    in >> r.offset >> c >> element >> words >> conversion;
    r.elementTag[0] = element[2];
    r.elementTag[1] = element[3];
    int first = -2, second = 0;
    if (element.size() > 4) std::sscanf(element.c_str() + 4, "(%d,%d)", &first, &second);
    r.number1 = static_cast<uint16_t>(first == -2 ? 0 : first);
    r.number2 = static_cast<int16_t>(second);
    r.word = static_cast<int16_t>(words[1] - '0');
    r.size = words.find('+') != std::string::npos ? 4 : 2;
    r.conversion = r.size == 4               ? MAPCONV_HIWORD_FIRST
                   : conversion == "inverted" ? MAPCONV_INVERT
                   : conversion == "byte"     ? MAPCONV_BYTE
                                              : MAPCONV_NONE;
    return r;
}

std::string show(const PREFERENCE_LOCATION_MAPRECORD& r) {
    std::ostringstream o;
    o << r.offset << ": ot" << r.elementTag[0] << r.elementTag[1] << "("
      << (r.number1 ? static_cast<int>(r.number1) : -2) << ","
      << r.number2 << ") w" << r.word << " size " << r.size << " conversion " << r.conversion;
    return o.str();
}

// A composite's characters and rows, and the array lines, as listed.
struct Listed {
    std::vector<std::pair<std::string, std::vector<std::string>>> composites;
    std::vector<std::string> arrays;
};
Listed preferenceMaps() {
    Listed l;
    for (const std::string& line : listOf("preference_maps.txt")) {
        if (line.rfind("array ", 0) == 0) l.arrays.push_back(line.substr(6));
        else if (line[0] != ' ') l.composites.push_back({line, {}});
        else if (!l.composites.empty()) l.composites.back().second.push_back(line);
    }
    return l;
}

TEST(Interface, EveryCompositeMapRowAsDocumented) {
    size_t count = 0;
    prefComposites(&count);
    const Listed listed = preferenceMaps();
    EXPECT_EQ(count, listed.composites.size());
    for (const auto& [head, fields] : listed.composites) {
        SCOPED_TRACE(head);
        const PREFERENCE_LOCATION_MAPRECORD* map = nullptr;
        int16_t rows = 0;
        ASSERT_TRUE(mapPrefStruct(prefTag(head.c_str()), 0, &map, &rows));
        ASSERT_EQ(std::to_string(rows), head.substr(5));
        ASSERT_EQ(fields.size(), static_cast<size_t>(rows));
        int32_t reach = 0;
        for (int16_t i = 0; i < rows; ++i) {
            const auto want = rowOf(fields[static_cast<size_t>(i)]);
            EXPECT_EQ(show(map[i]), show(want)) << "row " << i;
            reach = std::max<int32_t>(reach, want.offset + want.size);
        }
        // The size query answers how far the fields reach, so that a buffer
        // sized by it holds them all.
        EXPECT_EQ(fragmentStructExtent(map, rows), reach);
    }
}

TEST(Interface, EveryArrayPreferenceAsDocumented) {
    size_t count = 0;
    prefArrays(&count);
    const auto entries = preferenceMaps().arrays;
    EXPECT_EQ(count, entries.size());
    for (const std::string& e : entries) {
        std::istringstream in(e);
        std::string name, admitted, element;
        int elements = 0;
        in >> name >> admitted >> element >> elements;
        SCOPED_TRACE(name);
        const uint32_t tag = prefTag(name.c_str());
        const uint32_t elementTag = 0x6F740000u | static_cast<uint32_t>(element[2]) << 8 |
                                    static_cast<uint32_t>(element[3]);
        int low = -300, high = 300;
        const bool numbered = admitted != "any";
        if (numbered && std::sscanf(admitted.c_str(), "%d-%d", &low, &high) == 1) high = low;
        for (int n : {low - 1, low, high, high + 1}) {
            uint32_t got = 1;
            int16_t elems = -1, start = -1;
            const bool admits = !numbered || (n >= low && n <= high);
            EXPECT_EQ(mapPrefTag(tag, static_cast<int16_t>(n), &got, &elems, &start), admits) << n;
            if (!admits) continue;
            EXPECT_EQ(got, elementTag) << "number " << n;
            EXPECT_EQ(elems, elements) << "number " << n;
            EXPECT_EQ(start, numbered ? n - 1 : 0) << "number " << n;
        }
    }
}

}  // namespace
