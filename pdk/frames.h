// Frames of entries: the host's editable copy of a stretch of music, an
// array of entries with up to twelve note records each. A frame is cleaned
// before it goes back to the host (insert, delete, save, reduce).
#ifndef CAPOCHORDS_PDK_FRAMES_H
#define CAPOCHORDS_PDK_FRAMES_H

#include "zemlopdk.h"

#include <cstddef>
#include <cstdint>

/* Byte layouts, packed, little-endian; only the fields we touch are named, the
   rest belongs to the host. Fields sit at odd offsets (entries are 146 bytes
   apart): they are read and written with memcpy, never through these types. */
#pragma pack(push, 1)
struct EXNOTE {
    uint16_t host0;
    uint16_t host2;
    int16_t noteID;  /* 0: none assigned yet */
    uint32_t flags;  /* bits 16 to 20 repeat noteID */
};
struct EXENTRY {
    uint8_t host0[8];
    uint32_t flags;  /* 0x01000000: received a placeholder note record */
    uint8_t host12[2];
    int16_t numNotes; /* 0 to 12 */
    EXNOTE notes[12];
    uint8_t host136[10];
};
struct EXTGF2005a {
    uint8_t host0[14];
    EXENTRY* entries; /* the entry array */
    int16_t numEntries;
};
#pragma pack(pop)
static_assert(sizeof(EXNOTE) == 10, "note record is 10 bytes");
static_assert(offsetof(EXNOTE, noteID) == 4 && offsetof(EXNOTE, flags) == 6, "note fields");
static_assert(sizeof(EXENTRY) == 146, "entry is 146 bytes");
static_assert(offsetof(EXENTRY, flags) == 8 && offsetof(EXENTRY, numNotes) == 14 &&
                  offsetof(EXENTRY, notes) == 16,
              "entry fields");
static_assert(offsetof(EXTGF2005a, entries) == 14 && offsetof(EXTGF2005a, numEntries) == 22,
              "frame fields");

constexpr int kMaxEntryNotes = 12;
constexpr uint32_t kNoteIDMask = 0x001F0000u;
constexpr uint32_t kPlaceholderNoteFlags = 0x80000000u;
constexpr uint32_t kEntryHasPlaceholder = 0x01000000u;

/* The note identifier's low five bits in the flags' bits 16 to 20. */
constexpr uint32_t MAKENOTEID(int16_t id) {
    return (static_cast<uint32_t>(static_cast<uint16_t>(id)) << 16) & kNoteIDMask;
}
constexpr uint32_t SETNOTEID(uint32_t flags, int16_t id) {
    return (flags & ~kNoteIDMask) | MAKENOTEID(id);
}

extern "C" {
/* While set (lowest bit), cleaning gives every entry without notes one
   placeholder note record. */
FX_EXPORT extern uint8_t CanAddNoteRecordToRests;
}

/* Cleans a frame in place: unique nonzero note identifiers within each entry,
   copied into the note flags; note slots beyond the count cleared; a
   placeholder note for entries without notes. Entries whose note count is
   not 0 to 12 are left as they are. */
void CleanTGF(void* frame);
/* The same for one entry. */
void CleanEXENTRY(void* entry);

#endif
