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
    explicit Room(unsigned long capacity) : units(capacity + 4, kGuard), end(capacity) {
        units[end + 1] = 0;
    }
    unsigned short* data() { return units.data(); }
    bool guardIntact() const {
        return units[end] == kGuard && units[end + 1] == 0 && units[end + 2] == kGuard &&
               units[end + 3] == kGuard;
    }
    Units units;
    unsigned long end;
};

TEST(Strings16, LengthCountsUnitsUpToTheFirstZero) {
    struct Case {
        std::u16string_view s;
        std::uint64_t length;
    } const cases[] = {
        {u""sv, 0},
        {u"a"sv, 1},
        {u"\U0001F600"sv, 2},  // a surrogate pair is two units
        {u"ab\0cd"sv, 2},
        {u"\xFFFF\x8000\x0001"sv, 3},
    };
    for (const Case& c : cases) EXPECT_EQ(fx_strlen(z(c.s).data()), c.length) << c.s.size();
}

TEST(Strings16, ChrFindsTheFirstUnitAndTheTerminator) {
    Units s = z(u"ab\xFFFF" u"b\xD83D\xDE00"sv);
    EXPECT_EQ(fx_strchr(s.data(), 'b'), s.data() + 1);
    EXPECT_EQ(fx_strchr(s.data(), 0xFFFF), s.data() + 2);
    EXPECT_EQ(fx_strchr(s.data(), 0xDE00), s.data() + 5);  // half of a pair is a unit like any
    EXPECT_EQ(fx_strchr(s.data(), 0), s.data() + 6);
    EXPECT_EQ(fx_strchr(s.data(), 'x'), nullptr);
    Units empty = z(u"");
    EXPECT_EQ(fx_strchr(empty.data(), 0), empty.data());
    EXPECT_EQ(fx_strchr(empty.data(), 'a'), nullptr);
}

TEST(Strings16, StrFindsTheFirstOccurrenceOverlapsIncluded) {
    struct Case {
        std::u16string_view text, sought;
        long at;  // -1: not found
    } const cases[] = {
        {u"abc", u"", 0},
        {u"", u"", 0},
        {u"", u"a", -1},
        {u"ab", u"abc", -1},
        {u"abcab", u"abc", 0},
        {u"abcabc", u"bc", 1},
        {u"aaab", u"aab", 1},  // the first try fails half way, the next overlaps it
        {u"abababc", u"ababc", 2},
        {u"aaaaaaaaab", u"aaab", 6},
        {u"xyzxyz", u"xyz", 0},
        {u"abcab", u"cab", 2},
        {u"abcd", u"cdx", -1},  // a match cut off by the end of the text
        {u"a\xFFFF\x8000", u"\xFFFF\x8000", 1},
        {u"\xD83D\xDE00\xD83D\xDE01", u"\xDE01", 3},
        {u"\xD83D\xDE00", u"\xD83D\xDE01", -1},
    };
    for (const Case& c : cases) {
        Units t = z(c.text), s = z(c.sought);
        unsigned short* found = fx_strstr(t.data(), s.data());
        long at = found ? found - t.data() : -1;
        EXPECT_EQ(at, c.at) << c.text.size() << " units, sought " << c.sought.size();
    }
}

// Every comparison answers exactly -1, 0 or 1, in unsigned unit order, and
// the same with the operands swapped, negated.
TEST(Strings16, CompareAnswersMinusOneZeroOneInUnitOrder) {
    struct Case {
        std::u16string_view a, b;
        int result;
    } const cases[] = {
        {u"", u"", 0},
        {u"abc", u"abc", 0},
        {u"a", u"ab", -1},
        {u"", u"a", -1},
        {u"a", u"c", -1},  // a difference of 2 still answers -1
        {u"a", u"\x8000", -1},
        {u"\x7FFF", u"\x8000", -1},  // signed 16-bit order would say otherwise
        {u"\xFFFE", u"\xFFFF", -1},
        {u"z", u"\xFFFF", -1},
        {u"\xD83D\xDE00", u"\xFF5A", -1},  // units, not code points
        {u"ab\xFFFF", u"ab\x0001", 1},
    };
    for (const Case& c : cases) {
        Units a = z(c.a), b = z(c.b);
        EXPECT_EQ(fx_strcmp(a.data(), b.data()), c.result) << c.a.size();
        EXPECT_EQ(fx_strcmp(b.data(), a.data()), -c.result) << c.a.size();
    }
}

TEST(Strings16, BoundedCompareLooksAtNoMoreThanTheCount) {
    struct Case {
        std::u16string_view a, b;
        unsigned long count;
        int result;
    } const cases[] = {
        {u"abc", u"xyz", 0, 0},
        {u"abX", u"abY", 2, 0},
        {u"abX", u"abY", 3, -1},
        {u"abc", u"abc", 1000, 0},  // matching terminators end the look
        {u"ab", u"abc", 3, -1},
        {u"ab", u"abc", 2, 0},
        {u"\x8000", u"\x7FFF", 1, 1},
        {u"a\xFFFF", u"a\xFFFE", ULONG_MAX, 1},
    };
    for (const Case& c : cases) {
        Units a = z(c.a), b = z(c.b);
        EXPECT_EQ(fx_strncmp(a.data(), b.data(), c.count), c.result) << c.count;
        EXPECT_EQ(fx_strncmp(b.data(), a.data(), c.count), -c.result) << c.count;
    }
}

TEST(Strings16, NcpyFillsExactlyTheCount) {
    struct Case {
        std::u16string_view src;
        unsigned long count;
        std::u16string_view written;  // exactly `count` units
    } const cases[] = {
        {u"ab", 5, u"ab\0\0\0"sv},
        {u"abcde", 5, u"abcde"sv},  // no terminator
        {u"abcdefg", 3, u"abc"sv},
        {u"", 3, u"\0\0\0"sv},
        {u"abc", 0, u""sv},
        {u"abc", 1, u"a"sv},
    };
    for (const Case& c : cases) {
        Room room(c.count);
        Units src = z(c.src);
        fx_strncpy(room.data(), src.data(), c.count);
        EXPECT_EQ(std::u16string(room.units.begin(), room.units.begin() + long(c.count)), c.written);
        EXPECT_TRUE(room.guardIntact()) << c.count;
    }
}

TEST(Strings16, CpyWithCapacityCutsAndAlwaysTerminates) {
    const std::u16string hundred(100, u'x');
    struct Case {
        std::u16string_view src;
        unsigned long capacity;
        std::u16string_view result;
    } const cases[] = {
        {u"abc", 1, u""},
        {u"abc", 4, u"abc"},  // exactly full
        {u"abc", 3, u"ab"},   // one short
        {u"abc", 100, u"abc"},
        {u"", 5, u""},
        {hundred, 64, std::u16string_view(hundred).substr(0, 63)},
        {u"a\xD83D\xDE00", 3, u"a\xD83D"},  // cut inside a pair
    };
    for (const Case& c : cases) {
        Room room(c.capacity);
        Units src = z(c.src);
        fx_strcpy(room.data(), c.capacity, src.data());
        EXPECT_EQ(text(room.data()), c.result) << c.capacity;
        EXPECT_EQ(room.units[c.result.size()], 0);
        EXPECT_TRUE(room.guardIntact()) << c.capacity;
    }
    Room none(0);
    fx_strcpy(none.data(), 0, z(u"abc").data());
    EXPECT_TRUE(none.guardIntact());
    // A source without terminator, exactly as long as the room takes: read no further.
    Units unterminated = {'a', 'b', 'c'};
    Room four(4);
    fx_strcpy(four.data(), 4, unterminated.data());
    EXPECT_EQ(text(four.data()), u"abc");
    EXPECT_TRUE(four.guardIntact());
    // Without capacity the terminator is copied too.
    Room five(5);
    fx_strcpy(five.data(), z(u"ab\xFFFF" u"c").data());
    EXPECT_EQ(Units(five.units.begin(), five.units.begin() + 5), (Units{'a', 'b', 0xFFFF, 'c', 0}));
    EXPECT_TRUE(five.guardIntact());
}

TEST(Strings16, CatKeepsTheWholeWithinTheCapacity) {
    struct Case {
        std::u16string_view before, src;
        unsigned long capacity;
        std::u16string_view after;
    } const cases[] = {
        {u"abc", u"defghijkl", 10, u"abcdefghi"},
        {u"abc", u"de", 10, u"abcde"},
        {u"abc", u"", 10, u"abc"},
        {u"", u"xyz", 3, u"xy"},
        {u"abc", u"x", 4, u"abc"},   // already exactly full
        {u"abc", u"xy", 5, u"abcx"}, // one short
        {u"", u"x", 1, u""},
    };
    for (const Case& c : cases) {
        Room room(c.capacity);
        std::copy(c.before.begin(), c.before.end(), room.units.begin());
        room.units[c.before.size()] = 0;
        Units src = z(c.src);
        fx_strcat(room.data(), c.capacity, src.data());
        EXPECT_EQ(text(room.data()), c.after) << c.capacity;
        EXPECT_TRUE(room.guardIntact()) << c.capacity;
    }
}

TEST(Strings16, CatOnAFullDestinationLeavesItUntouched) {
    // The text fills the room with no terminator in it: nothing can be
    // appended, and the guard's own zero must not be taken for the end.
    for (unsigned long capacity : {0ul, 1ul, 3ul}) {
        Room room(capacity);
        for (unsigned long i = 0; i < capacity; ++i) room.units[i] = 'a';
        Units before = room.units;
        Units src = z(u"xyz");
        fx_strcat(room.data(), capacity, src.data());
        EXPECT_EQ(room.units, before) << capacity;
    }
    // No guard here: the room is the whole heap block, so the sanitizer build
    // sees a look for the terminator that goes past it.
    Units full(4, 'a');
    fx_strcat(full.data(), full.size(), z(u"xyz").data());
    EXPECT_EQ(full, Units(4, 'a'));
}

// What the settings dialog and the text blocks format, and every cut.
TEST(Strings16, SprintfCutsToTheCapacity) {
    const Units prefix = z(u"Capo "), suffix = z(u" \xD834\xDD1E");  // suffix ends in a pair
    const Units capoFormat = z(u"%S%d%S"), ten = z(u"0123456789"), two = z(u"ab");
    struct Case {
        const Units* format;
        unsigned long capacity;
        std::u16string_view result;
    } const cases[] = {
        {&ten, 4, u"012"},
        {&two, 4, u"ab"},
        {&ten, 1, u""},
        {&ten, 11, u"0123456789"},  // exactly full
        {&ten, 10, u"012345678"},   // one short
        {&capoFormat, 64, u"Capo 3 \xD834\xDD1E"},
        {&capoFormat, 9, u"Capo 3 \xD834"},  // the cut splits the pair
    };
    for (const Case& c : cases) {
        Room room(c.capacity);
        int n = fx_sprintf(room.data(), c.capacity, c.format->data(), prefix.data(), 3,
                           suffix.data());
        EXPECT_EQ(text(room.data()), c.result) << c.capacity;
        EXPECT_EQ(n, static_cast<int>(c.result.size())) << c.capacity;
        EXPECT_EQ(room.units[c.result.size()], 0);
        EXPECT_TRUE(room.guardIntact()) << c.capacity;
    }
}

TEST(Strings16, SprintfWithoutRoomOrWithABadFormat) {
    Room none(0);
    EXPECT_EQ(fx_sprintf(none.data(), 0, z(u"abc").data()), 0);
    EXPECT_TRUE(none.guardIntact());

    struct Case {
        std::u16string_view format;
        std::u16string_view result;
    } const cases[] = {
        {u"%99999999d", u""},  // no string: an empty text
        {u"a%yb", u"ayb"},     // unknown conversions print their letter
    };
    for (const Case& c : cases) {
        Room room(16);
        Units f = z(c.format);
        int n = fx_sprintf(room.data(), 16, f.data(), 1);
        EXPECT_EQ(text(room.data()), c.result);
        EXPECT_EQ(n, static_cast<int>(c.result.size()));
        EXPECT_TRUE(room.guardIntact());
    }
}

TEST(Strings16, CaseInsensitiveCompareTakesBytesAsSigned) {
    struct Case {
        const char* a;
        const char* b;
        int result;
    } const cases[] = {
        {"abc", "ABC", 0},
        {"", "", 0},
        {"a", "B", -1},
        {"a", "z", -1},       // not the difference
        {"\xE9", "a", -1},    // 0xE9 is negative
        {"\x80", "\xFF", -1}, // -128 < -1
        {"\xE9", "\xC9", 1},  // beyond ASCII: no folding
        {"[", "a", 1},        // upper-cased: '[' (0x5B) after 'A' (0x41)
        {"_", "B", 1},
        {"abc", "abcd", -1},
        {"ABCD", "abc", 1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(stricmp(c.a, c.b), c.result) << c.a << " / " << c.b;
        EXPECT_EQ(stricmp(c.b, c.a), -c.result) << c.b << " / " << c.a;
    }
}

TEST(Strings16, BoundedCaseInsensitiveCompare) {
    struct Case {
        const char* a;
        const char* b;
        unsigned long bound;
        int result;
    } const cases[] = {
        {"abcX", "ABCY", 3, 0},
        {"abcX", "ABCY", 4, -1},
        {"abc", "xyz", 0, 0},
        {"abc", "ABC", ULONG_MAX, 0},
        {"ab", "abc", 2, 0},
        {"ab", "abc", 3, -1},
        {"\xFF", "a", 1, -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(strnicmp(c.a, c.b, c.bound), c.result) << c.a << " / " << c.b << " " << c.bound;
        EXPECT_EQ(strnicmp(c.b, c.a, c.bound), -c.result) << c.a << " / " << c.b << " " << c.bound;
    }
}

TEST(Strings16, Num2strFitsTwelveBytes) {
    struct Case {
        int value;
        const char* text;
    } const cases[] = {
        {0, "0"}, {-1, "-1"}, {42, "42"}, {INT_MAX, "2147483647"}, {INT_MIN, "-2147483648"},
    };
    for (const Case& c : cases) {
        char buffer[16];
        std::memset(buffer, 0x55, sizeof buffer);
        num2str(c.value, buffer);
        EXPECT_STREQ(buffer, c.text);
        for (size_t i = std::strlen(c.text) + 1; i < sizeof buffer; ++i)
            EXPECT_EQ(buffer[i], 0x55) << i << " for " << c.text;
    }
}

}  // namespace
