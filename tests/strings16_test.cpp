// The C-string routines: capacities, cuts, terminators and comparison results.
#include "strings16.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::literals;
using Units = std::vector<unsigned short>;

constexpr unsigned short kGuard = 0xBEEF;
constexpr unsigned long kNoBound = ULONG_MAX;  // compare with fx_strcmp as well

// The units of a text and its terminator, on the heap and no more, so that
// the sanitizer sees any read past the terminator.
Units z(std::u16string_view s) {
    Units v(s.begin(), s.end());
    v.push_back(0);
    return v;
}

std::u16string text(unsigned short const* p) {
    std::u16string r;
    while (*p) r.push_back(static_cast<char16_t>(*p++));
    return r;
}

// A destination of `capacity` units and guard units after it. A zero sits in
// the guard so that a routine that looks past the capacity for a terminator
// finds one there and shows its mistake by writing over the guard.
struct Room {
    explicit Room(unsigned long capacity, std::u16string_view before = u"")
        : units(capacity + 4, kGuard), end(capacity) {
        units[end + 1] = 0;
        std::copy(before.begin(), before.end(), units.begin());
        if (before.size() < capacity) units[before.size()] = 0;
    }
    unsigned short* data() { return units.data(); }
    bool guardIntact() const {
        return units[end] == kGuard && units[end + 1] == 0 && units[end + 2] == kGuard &&
               units[end + 3] == kGuard;
    }
    Units units;
    unsigned long end;
};

TEST(Strings16, StrFindsTheFirstOccurrenceOverlapsIncluded) {
    struct Case {
        std::u16string_view text, sought;
        long at;  // -1: not found
    } const cases[] = {
        {u"abc", u"", 0},        {u"", u"a", -1},         {u"ab", u"abc", -1},
        {u"aaab", u"aab", 1},    {u"abababc", u"ababc", 2}, {u"abcd", u"cdx", -1},
        {u"\xD83D\xDE00\xD83D\xDE01", u"\xDE01", 3},
    };
    for (const Case& c : cases) {
        Units t = z(c.text), s = z(c.sought);
        unsigned short* found = fx_strstr(t.data(), s.data());
        EXPECT_EQ(found ? found - t.data() : -1, c.at) << c.text.size() << " / " << c.sought.size();
    }
}

// Exactly -1, 0 or 1, in unsigned unit order, and negated with the operands
// swapped; a bound looks at no more units than it says.
TEST(Strings16, ComparisonsAnswerMinusOneZeroOneInUnitOrder) {
    struct Case {
        std::u16string_view a, b;
        unsigned long count;
        int result;
    } const cases[] = {
        {u"", u"", kNoBound, 0},          {u"a", u"ab", kNoBound, -1},
        {u"a", u"c", kNoBound, -1},       {u"\x7FFF", u"\x8000", kNoBound, -1},
        {u"\xD83D\xDE00", u"\xFF5A", kNoBound, -1}, {u"ab\xFFFF", u"ab\x0001", kNoBound, 1},
        {u"abc", u"xyz", 0, 0},           {u"abX", u"abY", 2, 0},
        {u"abX", u"abY", 3, -1},          {u"abc", u"abc", 1000, 0},
        {u"ab", u"abc", 2, 0},            {u"ab", u"abc", 3, -1},
    };
    for (const Case& c : cases) {
        Units a = z(c.a), b = z(c.b);
        EXPECT_EQ(fx_strncmp(a.data(), b.data(), c.count), c.result) << c.count;
        EXPECT_EQ(fx_strncmp(b.data(), a.data(), c.count), -c.result) << c.count;
        if (c.count != kNoBound) continue;
        EXPECT_EQ(fx_strcmp(a.data(), b.data()), c.result);
        EXPECT_EQ(fx_strcmp(b.data(), a.data()), -c.result);
    }
}

// Bytes taken as signed, only ASCII folded.
TEST(Strings16, CaseInsensitiveComparisons) {
    struct Case {
        const char *a, *b;
        unsigned long bound;
        int result;
    } const cases[] = {
        {"abc", "ABC", kNoBound, 0}, {"a", "z", kNoBound, -1},   {"\xE9", "a", kNoBound, -1},
        {"\x80", "\xFF", kNoBound, -1}, {"\xE9", "\xC9", kNoBound, 1}, {"[", "a", kNoBound, 1},
        {"ABCD", "abc", kNoBound, 1}, {"abcX", "ABCY", 3, 0},       {"abcX", "ABCY", 4, -1},
        {"abc", "xyz", 0, 0},        {"ab", "abc", 3, -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(strnicmp(c.a, c.b, c.bound), c.result) << c.a << " / " << c.b << " " << c.bound;
        EXPECT_EQ(strnicmp(c.b, c.a, c.bound), -c.result) << c.b << " / " << c.a << " " << c.bound;
        if (c.bound != kNoBound) continue;
        EXPECT_EQ(stricmp(c.a, c.b), c.result) << c.a << " / " << c.b;
    }
}

// Copy, bounded copy and append: cut to the room, terminated where there is
// room for it, never a unit past it.
TEST(Strings16, CopiesCutToTheRoom) {
    struct Case {
        int routine;  // 0 fx_strcpy with capacity, 1 fx_strncpy, 2 fx_strcat
        std::u16string_view before, src;
        unsigned long capacity;
        std::u16string_view written;  // the first units of the room
    } const cases[] = {
        {0, u"", u"abc", 4, u"abc\0"sv},        {0, u"", u"abc", 3, u"ab\0"sv},
        {0, u"", u"abc", 1, u"\0"sv},           {0, u"", u"abc", 0, u""sv},
        {0, u"", u"a\xD83D\xDE00", 3, u"a\xD83D\0"sv},
        {1, u"", u"ab", 5, u"ab\0\0\0"sv},      {1, u"", u"abcde", 5, u"abcde"sv},
        {1, u"", u"abc", 0, u""sv},
        {2, u"abc", u"defghijkl", 10, u"abcdefghi\0"sv}, {2, u"abc", u"x", 4, u"abc\0"sv},
        {2, u"abc", u"xy", 5, u"abcx\0"sv},     {2, u"aaa", u"xyz", 3, u"aaa"sv},
        {2, u"", u"x", 0, u""sv},
    };
    for (const Case& c : cases) {
        Room room(c.capacity, c.before);
        Units src = z(c.src);
        if (c.routine == 0) fx_strcpy(room.data(), c.capacity, src.data());
        if (c.routine == 1) fx_strncpy(room.data(), src.data(), c.capacity);
        if (c.routine == 2) fx_strcat(room.data(), c.capacity, src.data());
        EXPECT_EQ(std::u16string(room.units.begin(), room.units.begin() + long(c.written.size())),
                  c.written) << c.routine << " capacity " << c.capacity;
        EXPECT_TRUE(room.guardIntact()) << c.routine << " capacity " << c.capacity;
    }
    // A text that fills its whole heap block: the sanitizer build sees a look
    // for the terminator that goes past it.
    Units full(4, 'a');
    fx_strcat(full.data(), full.size(), z(u"xyz").data());
    EXPECT_EQ(full, Units(4, 'a'));
}

// What the settings dialog and the text blocks format, and every cut.
TEST(Strings16, SprintfCutsToTheCapacity) {
    const Units prefix = z(u"Capo "), suffix = z(u" \xD834\xDD1E");  // suffix ends in a pair
    const Units capo = z(u"%S%d%S"), ten = z(u"0123456789"), bad = z(u"%99999999d"),
                unknown = z(u"a%yb");
    struct Case {
        const Units* format;
        unsigned long capacity;
        std::u16string_view result;
    } const cases[] = {
        {&ten, 11, u"0123456789"}, {&ten, 10, u"012345678"}, {&ten, 1, u""}, {&ten, 0, u""},
        {&capo, 64, u"Capo 3 \xD834\xDD1E"}, {&capo, 9, u"Capo 3 \xD834"},
        {&bad, 16, u""},  // no string: an empty text
        {&unknown, 16, u"ayb"},  // unknown conversions print their letter
    };
    for (const Case& c : cases) {
        Room room(c.capacity);
        int n = fx_sprintf(room.data(), c.capacity, c.format->data(), prefix.data(), 3, suffix.data());
        EXPECT_EQ(n, static_cast<int>(c.result.size())) << c.capacity;
        EXPECT_TRUE(room.guardIntact()) << c.capacity;
        if (c.capacity == 0) continue;
        EXPECT_EQ(text(room.data()), c.result) << c.capacity;
    }
}

}  // namespace
