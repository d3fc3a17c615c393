// Frames: the forwarders that hand a frame back to the host clean it first.
#include "frames.h"

#include "forwarders.h"

#include <cstring>

namespace {

template <class T> T loadAt(const uint8_t* p, size_t at) {
    T v;
    std::memcpy(&v, p + at, sizeof v);
    return v;
}
template <class T> void storeAt(uint8_t* p, size_t at, T v) { std::memcpy(p + at, &v, sizeof v); }

size_t noteAt(int i, size_t field) {
    return offsetof(EXENTRY, notes) + static_cast<size_t>(i) * sizeof(EXNOTE) + field;
}

int16_t noteID(const uint8_t* e, int i) { return loadAt<int16_t>(e, noteAt(i, offsetof(EXNOTE, noteID))); }

}  // namespace

void CleanEXENTRY(void* entry) {
    uint8_t* e = static_cast<uint8_t*>(entry);
    const int16_t count = loadAt<int16_t>(e, offsetof(EXENTRY, numNotes));
    // Outside 0..12 the entry is not one we understand: leave it to the host
    // rather than clear notes or reach past the twelfth.
    if (count < 0 || count > kMaxEntryNotes) return;

    int16_t highest = 0;  // from 0, so that negative identifiers never raise it
    for (int i = 0; i < count; ++i)
        if (noteID(e, i) > highest) highest = noteID(e, i);

    for (int i = 0; i < count; ++i) {
        const int16_t id = noteID(e, i);
        bool renumber = id == 0;
        for (int j = 0; j < count && !renumber; ++j)
            renumber = j != i && noteID(e, j) == id;  // the earlier of two gives way
        if (renumber) {
            highest = static_cast<int16_t>(highest + 1);
            storeAt<int16_t>(e, noteAt(i, offsetof(EXNOTE, noteID)), highest);
        }
    }

    for (int i = 0; i < count; ++i) {
        const size_t at = noteAt(i, offsetof(EXNOTE, flags));
        storeAt<uint32_t>(e, at, SETNOTEID(loadAt<uint32_t>(e, at), noteID(e, i)));
    }

    std::memset(e + noteAt(count, 0), 0, static_cast<size_t>(kMaxEntryNotes - count) * sizeof(EXNOTE));

    if (count == 0 && (CanAddNoteRecordToRests & 1)) {
        storeAt<int16_t>(e, offsetof(EXENTRY, numNotes), 1);
        storeAt<uint32_t>(e, noteAt(0, offsetof(EXNOTE, flags)), kPlaceholderNoteFlags);
        const uint32_t flags = loadAt<uint32_t>(e, offsetof(EXENTRY, flags));
        storeAt<uint32_t>(e, offsetof(EXENTRY, flags), flags | kEntryHasPlaceholder);
    }
}

void CleanTGF(void* frame) {
    if (!frame) return;
    const uint8_t* f = static_cast<const uint8_t*>(frame);
    uint8_t* entries = loadAt<uint8_t*>(f, offsetof(EXTGF2005a, entries));
    const int16_t count = loadAt<int16_t>(f, offsetof(EXTGF2005a, numEntries));
    if (!entries) return;
    for (int16_t i = 0; i < count; ++i) CleanEXENTRY(entries + static_cast<size_t>(i) * sizeof(EXENTRY));
}

extern "C" int16_t FX_SaveTGF(void* frame, uint32_t ver) {
    CleanTGF(frame);
    return fxcall_FX_SaveTGF(frame, ver);
}

extern "C" int16_t FX_InsertEXENTRY(void* frame, int16_t a2, int16_t a3, uint32_t ver) {
    CleanTGF(frame);
    return fxcall_FX_InsertEXENTRY(frame, a2, a3, ver);
}

extern "C" int16_t FX_DeleteEXENTRY(void* frame, int16_t a2, int16_t a3, uint32_t ver) {
    CleanTGF(frame);
    return fxcall_FX_DeleteEXENTRY(frame, a2, a3, ver);
}

extern "C" void FX_ReduceEntries(void* frame, uint32_t ver) {
    CleanTGF(frame);
    fxcall_FX_ReduceEntries(frame, ver);
}
