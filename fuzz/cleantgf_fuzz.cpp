// Frame cleaning against random frames: entries are allocated at their exact
// size, and every cleaned entry follows the rules; a second cleaning changes
// only the placeholder notes the first one added.
#include "frames.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace {

void check(bool ok) {
    if (!ok) __builtin_trap();
}

template <class T> T at(const uint8_t* p, size_t off) {
    T v;
    std::memcpy(&v, p + off, sizeof v);
    return v;
}

size_t noteOff(int i) { return offsetof(EXENTRY, notes) + static_cast<size_t>(i) * sizeof(EXNOTE); }
int16_t countOf(const uint8_t* e) { return at<int16_t>(e, offsetof(EXENTRY, numNotes)); }
int16_t idOf(const uint8_t* e, int i) { return at<int16_t>(e, noteOff(i) + offsetof(EXNOTE, noteID)); }
uint32_t flagsOf(const uint8_t* e, int i) { return at<uint32_t>(e, noteOff(i) + offsetof(EXNOTE, flags)); }

void checkEntry(const uint8_t* before, const uint8_t* after, bool placeholders) {
    const int16_t count = countOf(before);
    if (count < 0 || count > 12) {
        check(std::memcmp(before, after, sizeof(EXENTRY)) == 0);
        return;
    }
    check(std::memcmp(before, after, 8) == 0 && std::memcmp(before + 12, after + 12, 2) == 0);
    check(std::memcmp(before + noteOff(12), after + noteOff(12), sizeof(EXENTRY) - noteOff(12)) == 0);
    const int16_t n = countOf(after);
    const bool placeholder = count == 0 && placeholders;
    check(n == (placeholder ? 1 : count));
    if (placeholder) {
        check(idOf(after, 0) == 0 && flagsOf(after, 0) == 0x80000000u);
        check(at<uint32_t>(after, 8) == (at<uint32_t>(before, 8) | 0x01000000u));
    } else {
        check(at<uint32_t>(after, 8) == at<uint32_t>(before, 8));
    }
    for (int i = 0; i < (placeholder ? 0 : n); ++i) {
        check(idOf(after, i) != 0);
        for (int j = 0; j < i; ++j) check(idOf(after, i) != idOf(after, j));
        check(((flagsOf(after, i) >> 16) & 0x1F) == (static_cast<uint16_t>(idOf(after, i)) & 0x1Fu));
        check((flagsOf(after, i) & ~0x001F0000u) == (flagsOf(before, i) & ~0x001F0000u));
        check(at<uint32_t>(after, noteOff(i)) == at<uint32_t>(before, noteOff(i)));
    }
    for (size_t b = noteOff(n); b < noteOff(12); ++b) check(after[b] == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    CanAddNoteRecordToRests = data[0];
    const bool placeholders = (data[0] & 1) != 0;
    ++data;
    --size;
    const size_t entries = size / sizeof(EXENTRY);
    std::unique_ptr<uint8_t[]> list(new uint8_t[entries * sizeof(EXENTRY) + 1]);
    std::memcpy(list.get(), data, entries * sizeof(EXENTRY));
    const std::vector<uint8_t> before(list.get(), list.get() + entries * sizeof(EXENTRY));

    std::unique_ptr<uint8_t[]> frame(new uint8_t[sizeof(EXTGF2005a)]);
    std::memset(frame.get(), 0xF0, sizeof(EXTGF2005a));
    uint8_t* p = list.get();
    const int16_t n = static_cast<int16_t>(entries);
    std::memcpy(frame.get() + offsetof(EXTGF2005a, entries), &p, sizeof p);
    std::memcpy(frame.get() + offsetof(EXTGF2005a, numEntries), &n, sizeof n);

    CleanTGF(frame.get());
    for (size_t k = 0; k < entries; ++k)
        checkEntry(before.data() + k * sizeof(EXENTRY), list.get() + k * sizeof(EXENTRY), placeholders);

    const std::vector<uint8_t> once(list.get(), list.get() + entries * sizeof(EXENTRY));
    CleanTGF(frame.get());
    for (size_t k = 0; k < entries; ++k) {
        const uint8_t* a = once.data() + k * sizeof(EXENTRY);
        const uint8_t* b = list.get() + k * sizeof(EXENTRY);
        if (countOf(before.data() + k * sizeof(EXENTRY)) == 0 && placeholders) {
            check(idOf(b, 0) == 1 && flagsOf(b, 0) == 0x80010000u);
            check(std::memcmp(a, b, noteOff(0) + 4) == 0);
            check(std::memcmp(a + noteOff(1), b + noteOff(1), sizeof(EXENTRY) - noteOff(1)) == 0);
        } else {
            check(std::memcmp(a, b, sizeof(EXENTRY)) == 0);
        }
    }
    return 0;
}
