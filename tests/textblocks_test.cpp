// Measure text blocks: the exact text of a created block, and removal in the
// host's order that stops at the first failure.
#include "capo.h"

using hostsim::Fx;
using hostsim::doc::Op;
using namespace testing_support;

namespace {

struct Font {
    uint16_t fontNumber;
    int16_t size;
    uint16_t effects;
};
static_assert(sizeof(Font) == 6, "");

using FindFn = short (*)(const unsigned short*, short, short, short, short);
using CreateFn = unsigned short (*)(const unsigned short*, short, short, short, Font*);
using UpdateFn = short (*)(const unsigned short*, short, short, short, short, Font*);
using RemoveFn = short (*)(short, short, short);

class TextBlocks : public CommandTest {
  protected:
    void SetUp() override {
        CommandTest::SetUp();
        if (HasFatalFailure()) return;
        find_ = probe().fn<FindFn>("FindMeasTextBlock");
        create_ = probe().fn<CreateFn>("CreateMeasTextBlock");
        update_ = probe().fn<UpdateFn>("UpdateMeasTextBlock");
        remove_ = probe().fn<RemoveFn>("RemoveMeasTextBlock");
    }
    short find(const std::u16string& text, short staff, short measure, short h, short v) {
        return find_(reinterpret_cast<const unsigned short*>(text.c_str()), staff, measure, h, v);
    }
    unsigned short create(const std::u16string& text, short staff, short measure, short v, Font f) {
        return create_(reinterpret_cast<const unsigned short*>(text.c_str()), staff, measure, v, &f);
    }
    short update(const std::u16string& text, short staff, short measure, short index, short v, Font f) {
        return update_(reinterpret_cast<const unsigned short*>(text.c_str()), staff, measure, index, v, &f);
    }
    FindFn find_ = nullptr;
    CreateFn create_ = nullptr;
    UpdateFn update_ = nullptr;
    RemoveFn remove_ = nullptr;
};

std::u16string letters(size_t n, char16_t c = u'a') { return std::u16string(n, c); }

// The raw text of a block: the font command from the font given, its name
// record, then the label as it is.
TEST_F(TextBlocks, CreatedBlockTextStartsWithTheFontCommand) {
    struct Case {
        const char* what;
        Font font;
        bool nameRecord;
        std::u16string name;
        int16_t nameValue;
        std::u16string label;
        std::u16string expected;
    };
    const std::u16string long511 = letters(511, u'n');
    const Case cases[] = {
        {"plain", {5, 10, 3}, true, u"Arial", -3, u"Capo 3", u"^font(Arial,-3)^nfx(3)^size(10)Capo 3"},
        {"effects unsigned, size signed", {5, -4, 0xFFF2}, true, u"Arial", 32767, u"Capo",
         u"^font(Arial,32767)^nfx(65522)^size(-4)Capo"},
        {"label not escaped", {5, 12, 2}, true, u"Times New Roman", 0, u"^b %d ^font(x)",
         u"^font(Times New Roman,0)^nfx(2)^size(12)^b %d ^font(x)"},
        {"no name record: empty name and 0", {9, 12, 2}, false, u"", 0, u"Capo 1",
         u"^font(,0)^nfx(2)^size(12)Capo 1"},
        {"name filling its record is cut to end in it", {5, 12, 2}, true, letters(600, u'n'), 1, u"C",
         u"^font(" + long511 + u",1)^nfx(2)^size(12)C"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        hostsim::reset();
        score::Score s(1, 2);
        if (c.nameRecord) {
            std::vector<uint8_t> rec(1036, 0);
            std::memcpy(rec.data(), &c.nameValue, 2);
            for (size_t i = 2; i < 12; ++i) rec[i] = 0x77;
            std::memcpy(rec.data() + 12, c.name.data(), std::min<size_t>(c.name.size(), 512) * 2);
            doc::put(doc::kFontName, {static_cast<int16_t>(c.font.fontNumber), 0, 0}, rec);
        }
        score::MeasureRecord m;  // every byte but the text flag stays
        std::memset(static_cast<void*>(&m), 0x3C, sizeof m);
        doc::putAs(doc::kMeasure, {2, 0, 0}, m);
        Expected e{doc::snapshot()};
        labelBlock(e, 1, 2, 0, 1, 1, 194, c.expected);
        EXPECT_EQ(create(c.label, 1, 2, 194, c.font), 1);
        EXPECT_DOCUMENT(e);
    }
}

TEST_F(TextBlocks, RemovalDeletesRawTextBlockAndPlaceInThatOrder) {
    score::Score s(1, 1);
    s.textBlock(1, 1, -200, 194, u"Capo").textBlock(1, 1, 5, 5, u"after");
    Expected e{doc::snapshot()};
    e.erase(doc::kRawText, {1, 0, 0});
    e.erase(doc::kTextBlock, {1, 0, 0});
    e.put(doc::kMeasureText, {1, 1, 0}, e.d.records.at({doc::kMeasureText, {1, 1, 1}}));
    e.erase(doc::kMeasureText, {1, 1, 1});
    EXPECT_EQ(remove_(1, 1, 0), 1);
    EXPECT_DOCUMENT(e) << "the later block moves down; the text flag stays";
    // Each failure stops the removal there.
    for (int k = 1; k <= 3; ++k) {
        SCOPED_TRACE(k);
        hostsim::reset();
        score::Score t(1, 1);
        t.textBlock(1, 1, -200, 194, u"Capo");
        hostsim::failCall(Fx::FX_DeleteEData, k);
        EXPECT_EQ(remove_(1, 1, 0), 0);
        EXPECT_EQ(doc::list(doc::kRawText).size(), k > 1 ? 0u : 1u);
        EXPECT_EQ(doc::list(doc::kTextBlock).size(), k > 2 ? 0u : 1u);
        EXPECT_EQ(doc::list(doc::kMeasureText).size(), 1u);
    }
    hostsim::reset();
    EXPECT_EQ(remove_(1, 1, 0), 0) << "no block";
}

}  // namespace
