// The simulated host's document store, reached through the plug-in's own
// forwarders as the command will reach it: the host's numbering rules per
// kind, sizes in units and loads that never write past the capacity.
#include "hostsim/score.h"
#include "records.h"

#include <string>

using hostsim::Fx;
using hostsim::doc::Op;
using hostsim::doc::RecordId;
using testing_support::Guarded;

namespace doc = hostsim::doc;

namespace {

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new testing_support::BoundToEngine);

using Store = testing_support::FreshHost;

std::vector<uint8_t> chord(uint8_t mark) { return std::vector<uint8_t>(30, mark); }

int16_t save(uint32_t tag, EDataID id, const std::vector<uint8_t>& b) {
    std::vector<uint8_t> copy = b;
    return FX_SaveEData(static_cast<int32_t>(tag), &id, copy.data(), static_cast<int32_t>(copy.size()),
                        FXT_VERSION);
}

// Marks of the chord records of one staff-measure, in index order.
std::vector<uint8_t> marks(int16_t staff, int16_t measure) {
    std::vector<uint8_t> out;
    for (const RecordId& id : doc::list(doc::kChord)) {
        if (id.first != staff || id.second != measure) continue;
        EXPECT_EQ(id.third, static_cast<int16_t>(out.size())) << "a gap in the numbering";
        out.push_back((*doc::get(doc::kChord, id))[0]);
    }
    return out;
}

TEST_F(Store, IndexedKindsAreNumberedWithoutGaps) {
    EXPECT_EQ(save(doc::kChord, {3, 7, 0}, chord(0xA0)), 1);
    EXPECT_EQ(save(doc::kChord, {3, 7, 1}, chord(0xA1)), 1);  // the first free index appends
    EXPECT_EQ(save(doc::kChord, {3, 7, 3}, chord(0xA3)), 0);  // beyond it
    EXPECT_EQ(save(doc::kChord, {3, 7, -1}, chord(0xAF)), 0);
    EXPECT_EQ(save(doc::kChord, {3, 7, 2}, chord(0xA2)), 1);
    EXPECT_EQ(save(doc::kChord, {3, 7, 1}, chord(0xB1)), 1);  // replaces in place
    EXPECT_EQ(marks(3, 7), (std::vector<uint8_t>{0xA0, 0xB1, 0xA2}));
    EXPECT_EQ(save(doc::kChord, {3, 8, 0}, chord(0xC0)), 1);  // another measure numbers anew

    EDataID one{3, 7, 1};
    EXPECT_EQ(FX_DeleteEData(static_cast<int32_t>(doc::kChord), &one, FXT_VERSION), 1);
    EXPECT_EQ(marks(3, 7), (std::vector<uint8_t>{0xA0, 0xA2}));  // later ones move down
    EXPECT_EQ(FX_DeleteEData(static_cast<int32_t>(doc::kChord), &one, FXT_VERSION), 1);
    EXPECT_EQ(FX_DeleteEData(static_cast<int32_t>(doc::kChord), &one, FXT_VERSION), 0);
    EXPECT_EQ(marks(3, 8), (std::vector<uint8_t>{0xC0}));

    // A create with -1 appends and says where.
    std::vector<uint8_t> text(10, 0x11);
    EDataID fresh{3, 7, -1};
    for (int16_t expect : {0, 1}) {
        fresh.third = -1;
        EXPECT_EQ(FX_CreateEData(static_cast<int32_t>(doc::kMeasureText), &fresh, text.data(), 10,
                                 FXT_VERSION),
                  1);
        EXPECT_EQ(fresh.third, expect);
        EXPECT_EQ(fresh.first, 3);
        EXPECT_EQ(fresh.second, 7);
    }
    // A create at a taken index inserts there; beyond the end it fails.
    EDataID front{3, 7, 0};
    EXPECT_EQ(FX_CreateEData(static_cast<int32_t>(doc::kChord), &front, chord(0x9F).data(), 30, FXT_VERSION), 1);
    EXPECT_EQ(marks(3, 7), (std::vector<uint8_t>{0x9F, 0xA0}));
    EDataID far{3, 7, 9};
    EXPECT_EQ(FX_CreateEData(static_cast<int32_t>(doc::kChord), &far, chord(0x90).data(), 30, FXT_VERSION), 0);
}

TEST_F(Store, AssignedKindsKeepTheirNumbersOnDelete) {
    std::vector<uint8_t> block(30, 0x22);
    std::vector<int16_t> got;
    for (int i = 0; i < 3; ++i) {
        EDataID id{-1, -1, 0};  // the text block's creation passes -1 twice
        ASSERT_EQ(FX_CreateEData(static_cast<int32_t>(doc::kTextBlock), &id, block.data(), 30,
                                 FXT_VERSION),
                  1);
        got.push_back(id.first);
    }
    EXPECT_EQ(got, (std::vector<int16_t>{1, 2, 3}));
    EDataID two{2, 0, 0};
    EXPECT_EQ(FX_DeleteEData(static_cast<int32_t>(doc::kTextBlock), &two, FXT_VERSION), 1);
    EXPECT_TRUE(doc::get(doc::kTextBlock, {3, 0, 0}));  // 3 stays 3
    EXPECT_FALSE(doc::get(doc::kTextBlock, {2, 0, 0}));
    EXPECT_EQ(save(doc::kTextBlock, {2, 0, 0}, block), 0);  // a save needs the record
    EXPECT_EQ(save(doc::kTextBlock, {3, 9, 9}, block), 1);  // addressed by the first number
}

TEST_F(Store, RawTextsAreSizedInUnitsAndLoadsStopAtTheCapacity) {
    const std::u16string text = u"^font(x)capo 2";
    EDataID id{-1, 0, 0};
    std::u16string copy = text;
    ASSERT_EQ(FX_CreateEData(static_cast<int32_t>(doc::kRawText), &id, &copy[0],
                             static_cast<int32_t>(text.size()), FXT_VERSION),
              1);
    EXPECT_EQ(id.first, 1);
    EXPECT_EQ(doc::getText(doc::kRawText, {1, 0, 0}), text);

    for (int32_t capacity : {0, 5, 14, 256}) {
        Guarded buf(static_cast<size_t>(capacity) * 2 + 2, 0xEE);
        int32_t size = capacity;
        EDataID at{1, 0, 0};
        ASSERT_EQ(FX_LoadEData(static_cast<int32_t>(doc::kRawText), &at, buf.data(), &size, FXT_VERSION), 1);
        EXPECT_EQ(size, 14);  // the record's size in units
        const size_t copied = std::min<size_t>(static_cast<size_t>(capacity), 14);
        EXPECT_EQ(std::memcmp(buf.data(), text.data(), copied * 2), 0);
        for (size_t i = copied * 2; i < buf.size(); ++i) ASSERT_EQ(buf.data()[i], 0xEE) << capacity;
        EXPECT_TRUE(buf.intact());
    }
}

}  // namespace
