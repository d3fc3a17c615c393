// Cleaning of frames before they go back to the host: note identifiers,
// their copy in the note flags, empty slots, placeholders for rests; on the
// listed cases and through the forwarders with frames the simulated host
// hands out behind guard bytes (random frames: cleantgf_fuzz).
#include "frames.h"
#include "fresh.h"
#include "records.h"

#include <random>

using hostsim::Fx;
using testing_support::Guarded;
using testing_support::Probe;

namespace doc = hostsim::doc;

namespace {

constexpr size_t kEntry = sizeof(EXENTRY);
constexpr size_t kNote = sizeof(EXNOTE);

template <class T> T at(const uint8_t* p, size_t off) {
    T v;
    std::memcpy(&v, p + off, sizeof v);
    return v;
}
template <class T> void put(uint8_t* p, size_t off, T v) { std::memcpy(p + off, &v, sizeof v); }

size_t noteOff(int i) { return offsetof(EXENTRY, notes) + static_cast<size_t>(i) * kNote; }
int16_t countOf(const uint8_t* e) { return at<int16_t>(e, offsetof(EXENTRY, numNotes)); }
int16_t idOf(const uint8_t* e, int i) { return at<int16_t>(e, noteOff(i) + offsetof(EXNOTE, noteID)); }
uint32_t flagsOf(const uint8_t* e, int i) { return at<uint32_t>(e, noteOff(i) + offsetof(EXNOTE, flags)); }
uint32_t entryFlags(const uint8_t* e) { return at<uint32_t>(e, offsetof(EXENTRY, flags)); }

// An entry whose every byte is something: host bytes 0xE0.., notes with the
// given identifiers and flags 0xA5A5A5A5, slots beyond them 0x77.
std::vector<uint8_t> entry(int16_t count, std::vector<int16_t> ids) {
    std::vector<uint8_t> e(kEntry);
    for (size_t i = 0; i < kEntry; ++i) e[i] = static_cast<uint8_t>(0xE0 + i % 16);
    put<uint32_t>(e.data(), offsetof(EXENTRY, flags), 0x00000100);
    put<int16_t>(e.data(), offsetof(EXENTRY, numNotes), count);
    std::memset(e.data() + noteOff(0), 0x77, 12 * kNote);
    for (size_t i = 0; i < ids.size(); ++i) {
        uint8_t* n = e.data() + noteOff(static_cast<int>(i));
        put<uint16_t>(n, 0, 0x1111);
        put<uint16_t>(n, 2, 0x2222);
        put<int16_t>(n, 4, ids[i]);
        put<uint32_t>(n, 6, 0xA5A5A5A5);
    }
    return e;
}

// A frame of the host's layout over an entry array.
struct Frame {
    std::vector<uint8_t> header = std::vector<uint8_t>(32, 0xF0);
    explicit Frame(uint8_t* entries, int16_t count) {
        put(header.data(), offsetof(EXTGF2005a, entries), entries);
        put(header.data(), offsetof(EXTGF2005a, numEntries), count);
    }
    void* data() { return header.data(); }
};

class Frames : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        CanAddNoteRecordToRests = 1;
    }
    void TearDown() override {
        hostsim::reset();
        CanAddNoteRecordToRests = 1;
    }
};

TEST_F(Frames, NoteIdentifiersBecomeUniqueAndLandInTheFlags) {
    const std::pair<std::vector<int16_t>, std::vector<int16_t>> cases[] = {
        {{0, 0, 0}, {1, 2, 3}},   {{5, 5}, {6, 5}},       {{2, 0, 2}, {3, 4, 2}},
        {{31, 0}, {31, 32}},      {{-1}, {-1}},           {{-1, -1}, {1, -1}},
        {{3, 3, 3}, {4, 5, 3}},   {{7, -4, 0}, {7, -4, 8}}, {{32767, 1}, {32767, 1}},
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
    };
    for (const auto& [in, out] : cases) {
        std::vector<uint8_t> e = entry(static_cast<int16_t>(in.size()), in);
        CleanEXENTRY(e.data());
        for (size_t i = 0; i < out.size(); ++i) {
            const int n = static_cast<int>(i);
            EXPECT_EQ(idOf(e.data(), n), out[i]) << "note " << i;
            EXPECT_EQ(flagsOf(e.data(), n) & 0x001F0000u,
                      (static_cast<uint32_t>(static_cast<uint16_t>(out[i])) & 0x1Fu) << 16);
            EXPECT_EQ(flagsOf(e.data(), n) & ~0x001F0000u, 0xA5A5A5A5u & ~0x001F0000u);
            EXPECT_EQ(at<uint16_t>(e.data(), noteOff(n)), 0x1111);  // host words are kept
            EXPECT_EQ(at<uint16_t>(e.data(), noteOff(n) + 2), 0x2222);
        }
    }
}

TEST_F(Frames, SlotsBeyondTheCountAreClearedAndHostBytesKept) {
    std::vector<uint8_t> e = entry(3, {1, 2, 3});
    const std::vector<uint8_t> before = e;
    CleanEXENTRY(e.data());
    for (size_t i = noteOff(3); i < noteOff(12); ++i) EXPECT_EQ(e[i], 0) << "byte " << i;
    for (size_t i = 0; i < noteOff(0); ++i) EXPECT_EQ(e[i], before[i]) << "byte " << i;
    for (size_t i = noteOff(12); i < kEntry; ++i) EXPECT_EQ(e[i], before[i]) << "byte " << i;
}

TEST_F(Frames, RestsGetAPlaceholderOnlyWhileTheSwitchIsSet) {
    std::vector<uint8_t> rest = entry(0, {});
    CleanEXENTRY(rest.data());
    EXPECT_EQ(countOf(rest.data()), 1);
    EXPECT_EQ(flagsOf(rest.data(), 0), 0x80000000u);
    EXPECT_EQ(idOf(rest.data(), 0), 0);
    EXPECT_EQ(at<uint16_t>(rest.data(), noteOff(0)), 0);
    EXPECT_EQ(entryFlags(rest.data()), 0x01000100u);
    CleanEXENTRY(rest.data());
    EXPECT_EQ(idOf(rest.data(), 0), 1);  // on the second cleaning it is an ordinary note
    EXPECT_EQ(flagsOf(rest.data(), 0), 0x80010000u);
    EXPECT_EQ(countOf(rest.data()), 1);

    CanAddNoteRecordToRests = 0xFE;  // only the lowest bit counts
    std::vector<uint8_t> plain = entry(0, {});
    CleanEXENTRY(plain.data());
    EXPECT_EQ(countOf(plain.data()), 0);
    EXPECT_EQ(entryFlags(plain.data()), 0x00000100u);
    for (size_t i = noteOff(0); i < noteOff(12); ++i) EXPECT_EQ(plain[i], 0);
}

TEST_F(Frames, EmptyAndNegativeFramesChangeNothing) {
    Guarded e(kEntry);
    const std::vector<uint8_t> bytes = entry(2, {0, 0});
    std::memcpy(e.data(), bytes.data(), kEntry);
    for (int16_t n : {int16_t(0), int16_t(-1), int16_t(-32768)}) {
        Frame f(e.data(), n);
        const std::vector<uint8_t> header = f.header;
        CleanTGF(f.data());
        EXPECT_EQ(e.bytes(), bytes);
        EXPECT_EQ(f.header, header);
    }
    Frame none(nullptr, 5);
    CleanTGF(none.data());
    CleanTGF(nullptr);
}

TEST_F(Frames, SavedFramesReachTheDocumentCleanedAndComeBackIntact) {
    std::vector<uint8_t> entries = entry(2, {4, 4});
    const std::vector<uint8_t> rest = entry(0, {});
    entries.insert(entries.end(), rest.begin(), rest.end());
    doc::putFrame({3, 1, 2, 0, 0}, entries);
    const int32_t loaded = LoadedTGFCounter;
    void* frame = FX_LoadTGF(3, 1, 2, 0, 0, FXT_VERSION);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(FX_SaveTGF(frame, FXT_VERSION), 1);
    FX_FreeTGF(frame, FXT_VERSION);
    EXPECT_EQ(LoadedTGFCounter, loaded);
    EXPECT_EQ(doc::guardFaults(), 0);
    EXPECT_EQ(doc::framesOut(), 0u);
    const std::vector<uint8_t> saved = *doc::getFrame({3, 1, 2, 0, 0});
    EXPECT_EQ(idOf(saved.data(), 0), 5);
    EXPECT_EQ(idOf(saved.data(), 1), 4);
    EXPECT_EQ(countOf(saved.data() + kEntry), 1);  // the rest's placeholder
}

TEST_F(Frames, InsertDeleteAndReduceCleanBeforeTheHostSeesTheFrame) {
    const Fx fxs[] = {Fx::FX_InsertEXENTRY, Fx::FX_DeleteEXENTRY, Fx::FX_ReduceEntries};
    for (Fx fx : fxs) {
        hostsim::reset();
        std::vector<uint8_t> e = entry(2, {0, 0});
        Frame f(e.data(), 1);
        int16_t seen = -1;
        hostsim::setHandler(fx, [&](hostsim::Call&) -> uint64_t {
            seen = idOf(e.data(), 1);
            return 6;
        });
        int16_t answer = 6;
        if (fx == Fx::FX_InsertEXENTRY) answer = FX_InsertEXENTRY(f.data(), -7, 9, FXT_VERSION);
        if (fx == Fx::FX_DeleteEXENTRY) answer = FX_DeleteEXENTRY(f.data(), -7, 9, FXT_VERSION);
        if (fx == Fx::FX_ReduceEntries) FX_ReduceEntries(f.data(), FXT_VERSION);
        EXPECT_EQ(answer, 6);
        EXPECT_EQ(seen, 2) << hostsim::info(fx).name;
        ASSERT_EQ(hostsim::calls().size(), 1u);
        EXPECT_EQ(hostsim::calls()[0].ptr<void>(0), f.data());
        if (fx != Fx::FX_ReduceEntries) {
            EXPECT_EQ(hostsim::calls()[0].i(1), -7);
            EXPECT_EQ(hostsim::calls()[0].i(2), 9);
        }
    }
}

}  // namespace
