/*
 * eu16string.h: the plug-in's owning UTF-16 string. A growable run of
 * unsigned short code units with conversions from and to 8-bit text, and
 * editing operations with 1-based positions (the Ansi... members).
 *
 * 8-bit text given as char is in the application text encoding; given as
 * unsigned char it is UTF-8. Text that cannot be converted gives an empty
 * string. data() is a UTF-16 C string for as long as the string is unchanged.
 */
#ifndef CAPOCHORDS_LIB_EU16STRING_H
#define CAPOCHORDS_LIB_EU16STRING_H

#include <cstddef>
#include <cstring>
#include <cwchar>
#include <ios>
#include <string>

// Character traits for unsigned short units. The standard libraries need not
// provide std::char_traits<unsigned short> (newer libc++ no longer does), so
// the string carries its own.
struct EUnitTraits {
    using char_type = unsigned short;
    using int_type = unsigned int;  // wide enough for eof() to differ from every unit
    using off_type = std::streamoff;
    using pos_type = std::streampos;
    using state_type = std::mbstate_t;

    static constexpr void assign(char_type& r, const char_type& a) noexcept { r = a; }
    static constexpr bool eq(char_type a, char_type b) noexcept { return a == b; }
    static constexpr bool lt(char_type a, char_type b) noexcept { return a < b; }
    static constexpr int compare(const char_type* a, const char_type* b, std::size_t n) noexcept {
        for (std::size_t i = 0; i < n; ++i)
            if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
        return 0;
    }
    static constexpr std::size_t length(const char_type* s) noexcept {
        std::size_t n = 0;
        while (s[n]) ++n;
        return n;
    }
    static constexpr const char_type* find(const char_type* s, std::size_t n,
                                           const char_type& a) noexcept {
        for (std::size_t i = 0; i < n; ++i)
            if (s[i] == a) return s + i;
        return nullptr;
    }
    static char_type* move(char_type* d, const char_type* s, std::size_t n) noexcept {
        if (n) std::memmove(d, s, n * sizeof(char_type));
        return d;
    }
    static char_type* copy(char_type* d, const char_type* s, std::size_t n) noexcept {
        if (n) std::memcpy(d, s, n * sizeof(char_type));
        return d;
    }
    static char_type* assign(char_type* d, std::size_t n, char_type a) noexcept {
        for (std::size_t i = 0; i < n; ++i) d[i] = a;
        return d;
    }
    static constexpr char_type to_char_type(int_type c) noexcept {
        return static_cast<char_type>(c);
    }
    static constexpr int_type to_int_type(char_type c) noexcept { return c; }
    static constexpr bool eq_int_type(int_type a, int_type b) noexcept { return a == b; }
    static constexpr int_type eof() noexcept { return static_cast<int_type>(-1); }
    static constexpr int_type not_eof(int_type c) noexcept { return c == eof() ? 0 : c; }
};

class eu16string : public std::basic_string<unsigned short, EUnitTraits> {
  public:
    using base = std::basic_string<unsigned short, EUnitTraits>;

    eu16string() = default;
    // 8-bit text in the application text encoding.
    eu16string(char const* text);
    // UTF-8.
    eu16string(unsigned char const* text);
    // One or two units: a surrogate pair from 0x10000 to 0x10FFFF, otherwise
    // the low 16 bits (none when they are zero).
    explicit eu16string(unsigned int codePoint);
    // One 8-bit character in the application text encoding; none for '\0'.
    explicit eu16string(char c);
    eu16string(base const& units) : base(units) {}
    eu16string(eu16string const& other) = default;
    eu16string(eu16string&& other) noexcept = default;
    eu16string& operator=(eu16string const& other) = default;
    eu16string& operator=(eu16string&& other) noexcept = default;
    virtual ~eu16string() = default;

    // The 8-bit form in the application text encoding: '?' for every unit
    // the encoding lacks, cut at the first zero unit.
    void GetStdString(std::string& dest) const;

    // 1-based position of the first occurrence of `sought`, 0 if none.
    int AnsiPos(eu16string const& sought) const;
    // Removes up to `count` units from 1-based `position`; ignores a position
    // out of range or a count below 1.
    eu16string& AnsiDelete(unsigned int position, int count);
    // Up to `count` units from 1-based `start` (clamped to 1).
    eu16string AnsiSubString(int start, int count) const;
    // Shortens to `length` units; never lengthens.
    eu16string& AnsiSetLength(unsigned int length);
    // The unit at 1-based `position`; a space out of range.
    unsigned short AnsiCharAtIndex(int position) const;
    // The unit at 1-based `position`; the first unit out of range (on an
    // empty string the terminator, which must stay zero).
    unsigned short& AnsiCharAtIndex(int position);
};

// The integer value of the text as Core Foundation scans it (0 for text that
// is not a number); `def` only for an empty text.
int StrToIntDef(eu16string text, int def);
// The decimal text of `value`.
eu16string IntToEu16Str(long value);
// True when the code point needs a surrogate pair. Writes the pair, or the
// low 16 bits as one unit, to `out` unless it is null.
bool GetSurrogatePairForLongCharacter(unsigned int codePoint, unsigned short* out);

#endif
