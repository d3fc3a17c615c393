// Preferences that the host no longer keeps as one record. The host keeps
// them in its older element records (tags o, t and two characters; 12 bytes,
// six 16-bit words each) and we assemble and split them here:
//  - composites: a map table per preference says, field by field, which word
//    of which element holds it and how it is converted;
//  - arrays: a run of whole element records of one element tag, chosen by the
//    preference's number.
// FX_LoadEData and FX_SaveEData (docdata.cpp) call in here and are called
// back for the element records.
#ifndef CAPOCHORDS_PDK_PREFMAPS_H
#define CAPOCHORDS_PDK_PREFMAPS_H

#include "zemlopdk.h"

#include <cstddef>
#include <cstdint>

/* How a value travels between an element word and a composite field.
   W(i) is element word i, unsigned. */
enum MAP_ARRAY_CONVERSION : int32_t {
    MAPCONV_NONE = 0,         /* copy; a 32-bit field loads 0 and saves nothing */
    MAPCONV_HIWORD_FIRST = 1, /* 32-bit: W(word) is the high half */
    MAPCONV_LOWORD_FIRST = 2, /* 32-bit: W(word) is the low half */
    MAPCONV_INVERT = 3,       /* 16-bit: 1 where the other side is 0, else 0 */
    MAPCONV_BYTE = 4,         /* 16-bit: load the low byte 0..255, save it sign-widened */
};

/* Where one field of a composite lives. The rows are constant: the marks of
   rows already served live in an array of the call (fragmentStructLoad). */
struct PREFERENCE_LOCATION_MAPRECORD {
    char elementTag[2];  /* the characters after o, t; the first is the higher byte */
    uint16_t number1;    /* first number of the element's identifier; 0 means 0xFFFE */
    int16_t number2;     /* second number */
    int16_t offset;      /* of the field in the composite record */
    int16_t word;        /* element word 0..5; the first of two for a 32-bit field */
    int16_t size;        /* 4: a 32-bit field of words word and word + 1; else 16-bit */
    MAP_ARRAY_CONVERSION conversion;
};

/* An element record: six 16-bit words. */
constexpr int32_t kPrefElementBytes = 12;
constexpr int kPrefElementWords = 6;
constexpr uint16_t kPrefElementFirst = 0xFFFE; /* first number of most element identifiers */
/* Room for the marks of the longest map. */
constexpr int kMaxMapRows = 64;

/* The tag of a row's element record. */
constexpr uint32_t prefElementTag(const PREFERENCE_LOCATION_MAPRECORD& r) {
    return 0x6F740000u | (static_cast<uint32_t>(static_cast<uint8_t>(r.elementTag[0])) << 8) |
           static_cast<uint8_t>(r.elementTag[1]);
}

/* A composite tag: its map and the size its size query answers, which is how
   far its fields reach. Number: the only first number of the identifier that
   makes it a composite, or -1 for any. */
struct PREF_COMPOSITE {
    uint32_t tag;
    int16_t number;
    const PREFERENCE_LOCATION_MAPRECORD* map;
    int16_t rows;
    int32_t size;
};
/* An array tag: numbers low..high are admitted (numbered: start = n - 1);
   an unnumbered one admits any number and starts at element 0. */
struct PREF_ARRAY {
    uint32_t tag;
    uint32_t elementTag;
    int16_t count;
    bool numbered;
    int16_t low;
    int16_t high;
};
const PREF_COMPOSITE* prefComposites(size_t* count);
const PREF_ARRAY* prefArrays(size_t* count);

/* True, with the map and its rows, when tag and number name a composite.
   False for others: map null and rows 0, except that the page-format tag with
   a number other than 0 leaves both as they were. */
bool mapPrefStruct(uint32_t tag, int16_t number, const PREFERENCE_LOCATION_MAPRECORD** map,
                   int16_t* rows);
/* Clears the outputs, then for an array tag sets element tag, count and start.
   False only for an array tag whose number is not admitted; true with element
   tag 0 for an ordinary tag. */
bool mapPrefTag(uint32_t tag, int16_t number, uint32_t* elementTag, int16_t* count,
                int16_t* start);

/* The composite's size query answer: how far its fields reach. */
int32_t fragmentStructExtent(const PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows);
/* Assembles a composite from its element records, one load per distinct
   element in the order the map first names it. Reports the size in *size;
   no buffer is a size query. A field that would end beyond the capacity
   passed in is not written. 0 only without a size location. */
int16_t fragmentStructLoad(void* buffer, int32_t* size, const PREFERENCE_LOCATION_MAPRECORD* map,
                           int16_t rows);
/* Writes a composite's fields back, saving only the elements whose words
   changed and that could be loaded. Fields beyond size are not read. 0 when
   there is no buffer or size is below twice the rows. */
int16_t fragmentStructSave(const void* buffer, int32_t size,
                           const PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows);

/* Two words into 32 bits and back, by the conversion; other conversions
   build 0 and split into nothing. */
uint32_t makePrefsFourbyte(uint16_t first, uint16_t second, MAP_ARRAY_CONVERSION conversion);
void makePrefsTwobytes(uint32_t value, uint16_t* first, uint16_t* second,
                       MAP_ARRAY_CONVERSION conversion);
/* A 16-bit field from its element word, and the word a field saves as. */
uint16_t prefLoadWord(uint16_t word, MAP_ARRAY_CONVERSION conversion);
uint16_t prefSaveWord(uint16_t field, MAP_ARRAY_CONVERSION conversion);

#endif
