// The document-data forwarders' own steps: the fret-instrument record that a
// host may fill and still answer 0, plain passage of ordinary records, and
// what is left of the preference paths on a host without the functions.
#include "fresh.h"
#include "records.h"

using hostsim::Fx;
using hostsim::doc::Op;
using testing_support::Guarded;
using testing_support::Probe;

namespace doc = hostsim::doc;

namespace {

constexpr int32_t kFret = 0x4F156649;

using DocData = testing_support::FreshHost;

int16_t loadFret(Guarded& buf, int32_t capacity) {
    EDataID id{1, 0, 0};
    int32_t size = capacity;
    return FX_LoadEData(kFret, &id, buf.data(), &size, FXT_VERSION);
}

// A host answering 0 may still have filled the record: the 252 bytes are
// cleared first, and any byte set counts as success.
TEST_F(DocData, FretInstrumentAnsweredZeroCountsWhenFilled) {
    for (bool fills : {true, false}) {
        hostsim::reset();
        hostsim::setHandler(Fx::FX_LoadEData, [fills](hostsim::Call& c) -> uint64_t {
            if (fills) c.ptr<uint8_t>(2)[251] = 0x42;  // the last byte only
            return 0;
        });
        Guarded buf(300, 0xCD);
        EXPECT_EQ(loadFret(buf, 300), fills ? 1 : 0);
        EXPECT_EQ(hostsim::count(Fx::FX_LoadEData), 1u);
        std::vector<uint8_t> record(252, 0);
        record[251] = fills ? 0x42 : 0;
        EXPECT_EQ(std::vector<uint8_t>(buf.data(), buf.data() + 252), record);
        EXPECT_EQ(buf.data()[252], 0xCD);
        EXPECT_TRUE(buf.intact());
    }
}

#ifndef NDEBUG
TEST_F(DocData, FretInstrumentIntoASmallerBufferIsAProgrammingFault) {
    EXPECT_DEATH(
        {
            Guarded buf(251);
            loadFret(buf, 251);
        },
        "Assertion failed: \\*size >= sizeof\\(EDTFretInstrument25_3\\), function FX_LoadEData, "
        "file zemlopdk\\.");
}
#endif

TEST_F(DocData, OrdinaryRecordsReachTheHostOnceAndUnchanged) {
    doc::put(doc::kChord, {2, 3, 0}, std::vector<uint8_t>(30, 0x61));
    EDataID id{2, 3, 0};
    Guarded buf(30);
    int32_t size = 30;
    ASSERT_EQ(FX_LoadEData(static_cast<int32_t>(doc::kChord), &id, buf.data(), &size, 0x19500001), 1);
    ASSERT_EQ(hostsim::calls().size(), 1u);
    const hostsim::Call& c = hostsim::calls()[0];
    EXPECT_EQ(c.ptr<void>(1), &id);
    EXPECT_EQ(c.ptr<void>(2), buf.data());
    EXPECT_EQ(c.ptr<void>(3), &size);
    EXPECT_EQ(c.args[4], 0x19500001u);
    EXPECT_EQ(buf.bytes(), std::vector<uint8_t>(30, 0x61));
}

TEST_F(DocData, WithoutTheHostsFunctionsPreferencesReadAsZerosAndNothingIsWritten) {
    hostsim::setPresent(Fx::FX_LoadEData, false);
    hostsim::setPresent(Fx::FX_SaveEData, false);
    Probe p;
    ASSERT_TRUE(p.ready());
    auto load = p.fn<int16_t (*)(int32_t, void*, void*, void*, uint32_t)>("FX_LoadEData");
    auto save = p.fn<int16_t (*)(int32_t, void*, void*, int32_t, uint32_t)>("FX_SaveEData");
    EDataID id{0, 0, 0};
    Guarded buf(40, 0xCD);
    int32_t size = 40;
    EXPECT_EQ(load(static_cast<int32_t>(doc::kChord), &id, buf.data(), &size, FXT_VERSION), 0);
    EXPECT_EQ(buf.bytes(), std::vector<uint8_t>(40, 0xCD));
    // A composite still answers 1: element loads are not checked, and a
    // missing element reads as zeros.
    EXPECT_EQ(load(0x70665250, &id, buf.data(), &size, FXT_VERSION), 1);
    EXPECT_EQ(buf.bytes(), std::vector<uint8_t>(40, 0));
    buf.setU16(0, 5);
    EXPECT_EQ(save(0x70665250, &id, buf.data(), 40, FXT_VERSION), 1);
    EXPECT_EQ(save(static_cast<int32_t>(doc::kChord), &id, buf.data(), 30, FXT_VERSION), 0);
    EXPECT_TRUE(buf.intact());
    EXPECT_TRUE(hostsim::calls().empty());
    EXPECT_EQ(hostsim::lookups(Fx::FX_LoadEData), 1);
}

}  // namespace
