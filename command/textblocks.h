// Measure text blocks: a text attached to one staff in one measure, made of
// three host records (measure text, text block, raw text) and a flag in the
// measure record.
#ifndef CAPOCHORDS_COMMAND_TEXTBLOCKS_H
#define CAPOCHORDS_COMMAND_TEXTBLOCKS_H

#include <cstdint>
#include <type_traits>

// The font a block's text is written in; its layout is that of the host's
// font definition record, so that one loads straight into it.
class EOrvexFont {
  public:
    EOrvexFont() : fontNumber(0), size(0), effects(0) {}
    ~EOrvexFont() = default;  // nothing to do, and the record stays trivially copyable
    uint16_t fontNumber;
    int16_t size;      // points
    uint16_t effects;  // effect bits
};
static_assert(sizeof(EOrvexFont) == 6, "font definition is three 16-bit fields");
static_assert(std::is_trivially_copyable<EOrvexFont>::value && std::is_standard_layout<EOrvexFont>::value,
              "the host loads font definitions straight into it");

// The record kind of a tag: its low 16 bits, read as signed.
int ExtractOrvexTag(unsigned int tag);

// The index of the first measure text of the staff-measure that sits at the
// position given or whose text contains `text` (an empty text matches by
// position only); -1 when none does, or when a block cannot be read.
short FindMeasTextBlock(const unsigned short* text, short staff, short measure, short horizontal,
                        short vertical);
// Writes a new block at horizontal -200; its number, or 0 on failure.
unsigned short CreateMeasTextBlock(const unsigned short* text, short staff, short measure,
                                   short vertical, EOrvexFont* font);
// Moves the block back to horizontal -200 at `vertical` and rewrites its text.
short UpdateMeasTextBlock(const unsigned short* text, short staff, short measure, short index,
                          short vertical, EOrvexFont* font);
// Deletes the block's three records; the measure's text flag stays.
short RemoveMeasTextBlock(short staff, short measure, short index);

#endif
