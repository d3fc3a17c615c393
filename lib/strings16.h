/*
 * strings16.h: C-string routines for 8-bit text (case-insensitive comparison,
 * decimal text) and for UTF-16 text (zero-terminated arrays of unsigned short
 * code units). Units are not code points: a surrogate pair is two units.
 *
 * Capacities count the units a destination holds, terminator included, and
 * follow the destination. Text too long for its room is cut and terminated;
 * nothing is reported. No routine accepts a null pointer.
 */
#ifndef CAPOCHORDS_LIB_STRINGS16_H
#define CAPOCHORDS_LIB_STRINGS16_H

#include <cstdint>

/* Case-insensitive comparison, bytes taken as signed: bytes 0x80 to 0xFF sort
   before ASCII and are not folded. Answers -1, 0 or 1. */
int stricmp(char const* a, char const* b);
/* The same over at most `bound` positions; a bound of 0 answers 0. */
int strnicmp(char const* a, char const* b, unsigned long bound);
/* The decimal text of `value`; `dest` holds 12 bytes. */
void num2str(int value, char* dest);

/* Units before the terminator. */
std::uint64_t fx_strlen(unsigned short const* s);
/* Formats through Core Foundation (%d, %S for a UTF-16 C string, ...) into
   `dest`, cut to capacity - 1 units and terminated. Answers the units written.
   A capacity of 0 leaves `dest` untouched; a format that yields no string
   writes an empty text. */
int fx_sprintf(unsigned short* dest, unsigned long capacity, unsigned short const* format, ...);
/* The first unit equal to `unit`, the terminator included; null if none. */
unsigned short* fx_strchr(unsigned short const* s, unsigned short unit);
/* The first occurrence of `sought` in `text`; `text` itself for an empty
   `sought`; null if none. */
unsigned short* fx_strstr(unsigned short const* text, unsigned short const* sought);
/* strncpy in units: exactly `count` units written, zero-filled after the
   terminator, unterminated when the source has `count` units or more. */
void fx_strncpy(unsigned short* dest, unsigned short const* src, unsigned long count);
/* Copies at most capacity - 1 units and terminates; capacity 0 writes nothing. */
void fx_strcpy(unsigned short* dest, unsigned long capacity, unsigned short const* src);
/* Copies the source with its terminator; the caller guarantees the room. */
void fx_strcpy(unsigned short* dest, unsigned short const* src);
/* Appends so that the whole holds at most capacity - 1 units, terminated.
   A destination already that long is left untouched. */
void fx_strcat(unsigned short* dest, unsigned long capacity, unsigned short const* src);
/* Code-unit order (unsigned); answers -1, 0 or 1. */
int fx_strcmp(unsigned short const* a, unsigned short const* b);
/* The same over at most `count` units; a count of 0 answers 0. */
int fx_strncmp(unsigned short const* a, unsigned short const* b, unsigned long count);

#endif
