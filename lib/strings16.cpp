// C-string routines for 8-bit and UTF-16 text.
#include "strings16.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cctype>
#include <climits>
#include <cstdarg>
#include <cstdio>

namespace {

// The C library's upper-casing, but a negative byte (0x80 to 0xFF taken as
// signed) comes back unchanged instead of being undefined.
int upper(int c) { return c < 0 ? c : std::toupper(c); }

int caseCompare(char const* a, char const* b, bool bounded, unsigned long bound) {
    for (;; ++a, ++b, --bound) {
        if (bounded && bound == 0) return 0;
        int x = upper(static_cast<signed char>(*a));
        int y = upper(static_cast<signed char>(*b));
        if (x != y) return x < y ? -1 : 1;
        if (*a == 0) return 0;
    }
}

}  // namespace

int stricmp(char const* a, char const* b) { return caseCompare(a, b, false, 0); }

int strnicmp(char const* a, char const* b, unsigned long bound) {
    return caseCompare(a, b, true, bound);
}

void num2str(int value, char* dest) { std::snprintf(dest, 12, "%d", value); }

std::uint64_t fx_strlen(unsigned short const* s) {
    unsigned short const* p = s;
    while (*p) ++p;
    return static_cast<std::uint64_t>(p - s);
}

int fx_sprintf(unsigned short* dest, unsigned long capacity, unsigned short const* format, ...) {
    if (capacity == 0) return 0;  // no room even for the terminator
    CFStringRef f = CFStringCreateWithCharacters(kCFAllocatorDefault, format,
                                                 static_cast<CFIndex>(fx_strlen(format)));
    CFStringRef result = nullptr;
    if (f) {
        va_list ap;
        va_start(ap, format);
        result = CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, f, ap);
        va_end(ap);
        CFRelease(f);
    }
    CFIndex n = 0;
    if (result) {
        // The cut falls on a unit boundary, pairs or not; the count must fit the answer.
        n = CFStringGetLength(result);
        if (static_cast<unsigned long>(n) > capacity - 1) n = static_cast<CFIndex>(capacity - 1);
        if (n > INT_MAX) n = INT_MAX;
        if (n > 0) CFStringGetCharacters(result, CFRangeMake(0, n), dest);
        CFRelease(result);
    }
    dest[n] = 0;
    return static_cast<int>(n);
}

unsigned short* fx_strchr(unsigned short const* s, unsigned short unit) {
    for (;; ++s) {
        if (*s == unit) return const_cast<unsigned short*>(s);
        if (*s == 0) return nullptr;
    }
}

unsigned short* fx_strstr(unsigned short const* text, unsigned short const* sought) {
    if (*sought == 0) return const_cast<unsigned short*>(text);
    const std::uint64_t n = fx_strlen(sought);
    // Every position where the first unit matches, overlapping ones included.
    for (unsigned short const* p = text; (p = fx_strchr(p, *sought)) != nullptr; ++p)
        if (fx_strncmp(p, sought, n) == 0) return const_cast<unsigned short*>(p);
    return nullptr;
}

void fx_strncpy(unsigned short* dest, unsigned short const* src, unsigned long count) {
    unsigned long i = 0;
    for (; i < count && src[i]; ++i) dest[i] = src[i];
    for (; i < count; ++i) dest[i] = 0;
}

void fx_strcpy(unsigned short* dest, unsigned long capacity, unsigned short const* src) {
    if (capacity == 0) return;
    unsigned short* const last = dest + (capacity - 1);
    while (dest != last && *src) *dest++ = *src++;
    *dest = 0;
}

void fx_strcpy(unsigned short* dest, unsigned short const* src) {
    while ((*dest++ = *src++) != 0) {
    }
}

void fx_strcat(unsigned short* dest, unsigned long capacity, unsigned short const* src) {
    // Look for the terminator only inside the room: a text that fills it, or
    // has none there, leaves no place to append.
    unsigned long used = 0;
    while (used < capacity && dest[used]) ++used;
    if (used >= capacity) return;
    fx_strcpy(dest + used, capacity - used, src);
}

int fx_strcmp(unsigned short const* a, unsigned short const* b) {
    while (*a && *a == *b) ++a, ++b;
    return *a < *b ? -1 : (*a > *b ? 1 : 0);
}

int fx_strncmp(unsigned short const* a, unsigned short const* b, unsigned long count) {
    if (count == 0) return 0;
    while (*a && *a == *b) {
        if (--count == 0) return 0;
        ++a, ++b;
    }
    return *a < *b ? -1 : (*a > *b ? 1 : 0);
}
