// Composite and array preferences served from the host's element records.
// The composite cases are generated from the map tables: every field of every
// composite is loaded, saved back unchanged and changed alone.
#include "prefmaps.h"
#include "records.h"

#include <map>
#include <set>
#include <tuple>

using hostsim::doc::Op;
using hostsim::doc::RecordId;
using testing_support::Guarded;
using testing_support::Words;
using testing_support::element;
using testing_support::opsOf;
using testing_support::putElement;

namespace doc = hostsim::doc;

namespace {

using Prefs = testing_support::FreshHost;

using Row = PREFERENCE_LOCATION_MAPRECORD;
using ElementKey = std::tuple<uint32_t, int16_t, int16_t>;  // tag and the two numbers

ElementKey keyOf(const Row& r) {
    return {prefElementTag(r), static_cast<int16_t>(r.number1 ? r.number1 : 0xFFFE), r.number2};
}
RecordId idOf(const ElementKey& k) { return {std::get<1>(k), std::get<2>(k), 0}; }
ElementKey keyOf(const doc::OpRecord& o) { return {o.tag, o.id.first, o.id.second}; }

std::vector<PREF_COMPOSITE> composites() {
    size_t n = 0;
    const PREF_COMPOSITE* c = prefComposites(&n);
    return std::vector<PREF_COMPOSITE>(c, c + n);
}

const PREF_COMPOSITE& composite(uint32_t tag) {
    size_t n = 0;
    const PREF_COMPOSITE* c = prefComposites(&n);
    for (size_t i = 0; i < n; ++i)
        if (c[i].tag == tag) return c[i];
    ADD_FAILURE() << "no composite " << doc::tagName(tag);
    return c[0];
}

// Load and save skip the tables for tags other than p f ones: every row of
// both tables must be such a tag, and other tags must come out unmapped.
TEST_F(Prefs, OnlyPreferenceTagsAreMapped) {
    size_t arrays = 0;
    const PREF_ARRAY* a = prefArrays(&arrays);
    for (const PREF_COMPOSITE& c : composites()) EXPECT_EQ(c.tag >> 16, 0x7066u) << doc::tagName(c.tag);
    for (size_t i = 0; i < arrays; ++i) EXPECT_EQ(a[i].tag >> 16, 0x7066u) << doc::tagName(a[i].tag);
    for (uint32_t tag : {0x53444368u, 0x7478626Cu, 0x6F743838u, 0x00004450u, 0x71664450u}) {
        const Row* map = reinterpret_cast<const Row*>(&arrays);
        int16_t rows = 7;
        EXPECT_FALSE(mapPrefStruct(tag, -1, &map, &rows)) << doc::tagName(tag);
        EXPECT_EQ(map, nullptr);
        EXPECT_EQ(rows, 0);
        uint32_t element = 1;
        int16_t count = 1, start = 1;
        EXPECT_TRUE(mapPrefTag(tag, 1, &element, &count, &start)) << doc::tagName(tag);
        EXPECT_EQ(element, 0u);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(start, 0);
    }
}

// Distinct elements of a map in the order it first names them.
std::vector<ElementKey> elementsOf(const PREF_COMPOSITE& c) {
    std::vector<ElementKey> out;
    for (int16_t i = 0; i < c.rows; ++i)
        if (std::find(out.begin(), out.end(), keyOf(c.map[i])) == out.end()) out.push_back(keyOf(c.map[i]));
    return out;
}

// Fills every element of a map with distinct words. Words that a row converts
// are in the form a save writes back (a byte widened with its sign, 0 or 1
// for an inverted field), so that saving what was loaded changes nothing.
void fillElements(const PREF_COMPOSITE& c) {
    std::map<ElementKey, Words> words;
    uint16_t next = 0x1001;
    for (const ElementKey& k : elementsOf(c)) {
        Words w;
        for (uint16_t& x : w) x = next++ * 0x0101u ^ 0x8000u;
        words[k] = w;
    }
    uint8_t b = 0x70;
    for (int16_t i = 0; i < c.rows; ++i) {
        const Row& r = c.map[i];
        uint16_t& x = words[keyOf(r)][static_cast<size_t>(r.word)];
        if (r.conversion == MAPCONV_INVERT) x = static_cast<uint16_t>(i & 1);
        if (r.conversion == MAPCONV_BYTE) x = static_cast<uint16_t>(static_cast<int8_t>(b += 0x13));
    }
    for (const auto& e : words) putElement(std::get<0>(e.first), idOf(e.first), e.second);
}

// What a row's field holds once loaded from the element words.
uint32_t expectedField(const Row& r, const Words& w) {
    const size_t i = static_cast<size_t>(r.word);
    if (r.size == 4) return (static_cast<uint32_t>(w[i]) << 16) | w[i + 1];
    if (r.conversion == MAPCONV_INVERT) return w[i] == 0 ? 1 : 0;
    if (r.conversion == MAPCONV_BYTE) return w[i] & 0xFF;
    return w[i];
}

int16_t numberOf(const PREF_COMPOSITE& c) { return c.number >= 0 ? c.number : 0; }

int16_t load(uint32_t tag, int16_t number, void* buf, int32_t* size) {
    EDataID id{number, 0, 0};
    return FX_LoadEData(static_cast<int32_t>(tag), &id, buf, size, FXT_VERSION);
}
int16_t save(uint32_t tag, int16_t number, void* buf, int32_t size, uint32_t ver = FXT_VERSION) {
    EDataID id{number, 0, 0};
    return FX_SaveEData(static_cast<int32_t>(tag), &id, buf, size, ver);
}

TEST_F(Prefs, TenCompositesWithTheirRowsAndSizeQueries) {
    // tag, rows, size query; the smart-shape one answers how far its fields
    // reach (108), not the sum of its field sizes (96).
    const std::tuple<uint32_t, int, int32_t, int32_t> expected[] = {
        {0x70663035, 11, 22, 22},  {0x70664450, 36, 76, 76},  {0x70664558, 25, 50, 50},
        {0x70664D53, 49, 104, 104}, {0x70665042, 11, 44, 44}, {0x70665046, 22, 48, 48},
        {0x7066504C, 7, 14, 14},   {0x70665250, 20, 40, 40},  {0x70665349, 23, 54, 54},
        {0x70665353, 43, 108, 96},
    };
    ASSERT_EQ(composites().size(), 10u);
    for (auto [tag, rows, query, sum] : expected) {
        const PREF_COMPOSITE& c = composite(tag);
        EXPECT_EQ(c.rows, rows) << doc::tagName(tag);
        int32_t fields = 0;
        std::set<int16_t> offsets;
        std::set<std::pair<ElementKey, int>> words;
        for (int16_t i = 0; i < c.rows; ++i) {
            fields += c.map[i].size == 4 ? 4 : 2;
            EXPECT_TRUE(offsets.insert(c.map[i].offset).second) << "two fields at one offset";
            for (int k = 0; k < (c.map[i].size == 4 ? 2 : 1); ++k)
                EXPECT_TRUE(words.insert({keyOf(c.map[i]), c.map[i].word + k}).second)
                    << doc::tagName(tag) << " row " << i << ": an element word serves two fields";
            EXPECT_LE(c.map[i].word + (c.map[i].size == 4 ? 1 : 0), 5);
            EXPECT_EQ(c.map[i].size == 4, c.map[i].conversion == MAPCONV_HIWORD_FIRST);
        }
        EXPECT_EQ(fields, sum) << doc::tagName(tag);
        int32_t size = -5;
        EXPECT_EQ(load(tag, numberOf(c), nullptr, &size), 1);
        EXPECT_EQ(size, query) << doc::tagName(tag);
    }
    EXPECT_TRUE(doc::ops().empty());  // a size query asks the host nothing
}

TEST_F(Prefs, EveryCompositeLoadsEachFieldOnceFromEachElementLoadedOnce) {
    for (const PREF_COMPOSITE& c : composites()) {
        SCOPED_TRACE(doc::tagName(c.tag));
        hostsim::reset();
        fillElements(c);
        Guarded buf(static_cast<size_t>(c.size), 0xCD);
        int32_t size = c.size;
        ASSERT_EQ(load(c.tag, numberOf(c), buf.data(), &size), 1);
        EXPECT_EQ(size, c.size);
        EXPECT_TRUE(buf.intact());

        std::vector<bool> covered(static_cast<size_t>(c.size), false);
        for (int16_t i = 0; i < c.rows; ++i) {
            const Row& r = c.map[i];
            const Words w = element(std::get<0>(keyOf(r)), idOf(keyOf(r)));
            const uint32_t got = r.size == 4 ? buf.u32(static_cast<size_t>(r.offset))
                                             : buf.u16(static_cast<size_t>(r.offset));
            EXPECT_EQ(got, expectedField(r, w)) << "offset " << r.offset;
            for (int k = 0; k < (r.size == 4 ? 4 : 2); ++k) covered[static_cast<size_t>(r.offset + k)] = true;
        }
        for (size_t i = 0; i < covered.size(); ++i)
            EXPECT_TRUE(covered[i] || buf.data()[i] == 0xCD) << "byte " << i << " of no field";

        std::vector<ElementKey> loaded;
        for (const auto& o : opsOf(Op::Load)) {
            loaded.push_back(keyOf(o));
            EXPECT_EQ(o.size, 12);  // the element buffer's capacity
        }
        EXPECT_EQ(loaded, elementsOf(c));  // each element once, in first-named order
        EXPECT_TRUE(opsOf(Op::Save).empty());
    }
}

TEST_F(Prefs, SavingWhatWasLoadedSavesNothingAndOneChangedFieldSavesOneElement) {
    for (const PREF_COMPOSITE& c : composites()) {
        SCOPED_TRACE(doc::tagName(c.tag));
        hostsim::reset();
        fillElements(c);
        Guarded loaded(static_cast<size_t>(c.size));
        int32_t size = c.size;
        ASSERT_EQ(load(c.tag, numberOf(c), loaded.data(), &size), 1);
        const doc::Document original = doc::snapshot();

        doc::clearOps();
        EXPECT_EQ(save(c.tag, numberOf(c), loaded.data(), c.size), 1);
        EXPECT_TRUE(opsOf(Op::Save).empty());
        EXPECT_EQ(opsOf(Op::Load).size(), elementsOf(c).size());
        EXPECT_TRUE(loaded.intact());

        for (int16_t i = 0; i < c.rows; ++i) {
            const Row& r = c.map[i];
            SCOPED_TRACE("offset " + std::to_string(r.offset));
            doc::restore(original);
            doc::clearOps();
            Guarded changed(static_cast<size_t>(c.size));
            std::memcpy(changed.data(), loaded.data(), loaded.size());
            const size_t at = static_cast<size_t>(r.offset);
            const Words before = element(std::get<0>(keyOf(r)), idOf(keyOf(r)));
            Words want = before;
            const size_t w = static_cast<size_t>(r.word);
            if (r.size == 4) {
                const uint32_t v = changed.u32(at) ^ 0x00010001u;
                changed.setU32(at, v);
                want[w] = static_cast<uint16_t>(v >> 16);
                want[w + 1] = static_cast<uint16_t>(v);
            } else if (r.conversion == MAPCONV_INVERT) {
                changed.setU16(at, changed.u16(at) ^ 1u);
                want[w] = before[w] == 0 ? 1 : 0;
            } else if (r.conversion == MAPCONV_BYTE) {
                changed.setU16(at, changed.u16(at) ^ 1u);
                want[w] = static_cast<uint16_t>(static_cast<int8_t>((before[w] ^ 1u) & 0xFF));
            } else {
                changed.setU16(at, changed.u16(at) ^ 0x8001u);
                want[w] = before[w] ^ 0x8001u;
            }
            ASSERT_EQ(save(c.tag, numberOf(c), changed.data(), c.size), 1);
            const auto saves = opsOf(Op::Save);
            ASSERT_EQ(saves.size(), 1u);
            EXPECT_EQ(keyOf(saves[0]), keyOf(r));
            EXPECT_EQ(saves[0].size, 12);
            EXPECT_EQ(element(std::get<0>(keyOf(r)), idOf(keyOf(r))), want);
            EXPECT_TRUE(changed.intact());
        }
    }
}

TEST_F(Prefs, ConversionsAtTheirEdges) {
    const uint32_t misc = 0x70664D53, distance = 0x70664450;
    const uint32_t ot19 = doc::elementTag('1', '9'), ot36 = doc::elementTag('3', '6'),
                   ot68 = doc::elementTag('6', '8');
    const RecordId e{-2, 0, 0};
    putElement(ot19, e, {0, 0, 0, 0, 0x12C8, 0});
    putElement(ot36, e, {0, 0, 0, 0, 0, 0});
    putElement(ot68, e, {0, 0, 0, 0, 0x1234, 0xABCD});
    Guarded m(104);
    int32_t size = 104;
    ASSERT_EQ(load(misc, 0, m.data(), &size), 1);
    EXPECT_EQ(m.u16(52), 200);  // a byte field loads the low byte
    EXPECT_EQ(m.u16(12), 1);    // an inverted field loads 1 from 0
    ASSERT_EQ(save(misc, 0, m.data(), 104), 1);
    EXPECT_EQ(element(ot19, e)[4], 0xFFC8);  // 200 saves widened with its sign
    m.setU16(52, 100);
    m.setU16(12, 0);
    ASSERT_EQ(save(misc, 0, m.data(), 104), 1);
    EXPECT_EQ(element(ot19, e)[4], 0x0064);
    EXPECT_EQ(element(ot36, e)[1], 1);  // an inverted 0 saves 1
    putElement(ot36, e, {0, 7, 0, 0, 0, 0});
    ASSERT_EQ(load(misc, 0, m.data(), &size), 1);
    EXPECT_EQ(m.u16(12), 0);
    m.setU16(12, 1);
    ASSERT_EQ(save(misc, 0, m.data(), 104), 1);
    EXPECT_EQ(element(ot36, e)[1], 0);

    Guarded d(76);
    size = 76;
    ASSERT_EQ(load(distance, 0, d.data(), &size), 1);
    EXPECT_EQ(d.u32(18), 0x1234ABCDu);  // the lower-numbered word is the high half
    d.setU32(18, 0xCAFEF00D);
    ASSERT_EQ(save(distance, 0, d.data(), 76), 1);
    EXPECT_EQ(element(ot68, e)[4], 0xCAFE);
    EXPECT_EQ(element(ot68, e)[5], 0xF00D);
    EXPECT_EQ(doc::countOps(Op::Load, ot68), 2u);  // once per call, though three fields live there
}

TEST_F(Prefs, WordsAndHalvesByConversion) {
    EXPECT_EQ(makePrefsFourbyte(0x1234, 0xABCD, MAPCONV_HIWORD_FIRST), 0x1234ABCDu);
    EXPECT_EQ(makePrefsFourbyte(0x1234, 0xABCD, MAPCONV_LOWORD_FIRST), 0xABCD1234u);
    for (auto conv : {MAPCONV_NONE, MAPCONV_INVERT, MAPCONV_BYTE, static_cast<MAP_ARRAY_CONVERSION>(9)}) {
        EXPECT_EQ(makePrefsFourbyte(0xFFFF, 0xFFFF, conv), 0u);
        uint16_t a = 1, b = 2;
        makePrefsTwobytes(0xDEADBEEF, &a, &b, conv);
        EXPECT_EQ(a, 1);
        EXPECT_EQ(b, 2);
    }
    uint16_t a = 0, b = 0;
    makePrefsTwobytes(0xDEADBEEF, &a, &b, MAPCONV_LOWORD_FIRST);
    EXPECT_EQ(std::make_pair(a, b), std::make_pair(uint16_t{0xBEEF}, uint16_t{0xDEAD}));
    const std::tuple<uint16_t, MAP_ARRAY_CONVERSION, uint16_t, uint16_t> cases[] = {
        // word, conversion, loads as, a field of that value saves as
        {0x12C8, MAPCONV_BYTE, 0x00C8, 0xFFC8}, {0x0064, MAPCONV_BYTE, 0x0064, 0x0064},
        {0xFF80, MAPCONV_BYTE, 0x0080, 0xFF80}, {0x007F, MAPCONV_BYTE, 0x007F, 0x007F},
        {0, MAPCONV_INVERT, 1, 1},              {1, MAPCONV_INVERT, 0, 0},
        {0x8000, MAPCONV_INVERT, 0, 0},         {0x8001, MAPCONV_NONE, 0x8001, 0x8001},
        {0x8001, static_cast<MAP_ARRAY_CONVERSION>(7), 0x8001, 0x8001},
    };
    for (auto [word, conv, loads, saves] : cases) {
        EXPECT_EQ(prefLoadWord(word, conv), loads) << word << " " << conv;
        EXPECT_EQ(prefSaveWord(word, conv), saves) << word << " " << conv;
    }
}

TEST_F(Prefs, LoadsOfRepeatPageFormatAndPlaybackNameTheirElementsInOrder) {
    const std::pair<uint32_t, std::vector<std::string>> cases[] = {
        {0x70665250, {"ot70", "ot71", "ot05", "ot72", "ot76"}},
        {0x70665046, {"ot14", "ot15", "ot39", "ot16", "ot02", "ot17", "ot01", "ot13", "ot03"}},
        {0x7066504C, {"ot13", "ot39", "ot36", "ot37"}},
    };
    for (const auto& [tag, names] : cases) {
        hostsim::reset();
        Guarded buf(64);
        int32_t size = 64;
        ASSERT_EQ(load(tag, 0, buf.data(), &size), 1);
        std::vector<std::string> got;
        for (const auto& o : opsOf(Op::Load)) got.push_back(doc::tagName(o.tag));
        EXPECT_EQ(got, names) << doc::tagName(tag);
    }
}

TEST_F(Prefs, MissingElementsReadAsZerosAndAreNeverWrittenBack) {
    const uint32_t repeat = 0x70665250;
    const RecordId e{-2, 0, 0};
    for (char c : {'0', '1', '2'}) putElement(doc::elementTag('7', c), e, {9, 9, 9, 9, 9, 9});
    putElement(doc::elementTag('7', '6'), e, {9, 9, 9, 9, 9, 9});
    // ot05 is missing.
    Guarded buf(40, 0xCD);
    int32_t size = 40;
    ASSERT_EQ(load(repeat, 0, buf.data(), &size), 1);
    EXPECT_EQ(buf.u16(24), 0) << "ot05 w3, missing";
    EXPECT_EQ(buf.u16(0), 9);
    buf.setU16(24, 5);
    buf.setU16(0, 8);
    doc::clearOps();
    ASSERT_EQ(save(repeat, 0, buf.data(), 40), 1);
    const auto saves = opsOf(Op::Save);
    ASSERT_EQ(saves.size(), 1u);
    EXPECT_EQ(doc::tagName(saves[0].tag), "ot70");
    EXPECT_FALSE(doc::get(doc::elementTag('0', '5'), e));  // never created from a guess
}

TEST_F(Prefs, SmartShapeBuffersSizedByTheQueryAreNeverOverrun) {
    const uint32_t ss = 0x70665353;
    const PREF_COMPOSITE& c = composite(ss);
    fillElements(c);
    int32_t query = 0;
    ASSERT_EQ(load(ss, 0, nullptr, &query), 1);
    Guarded full(static_cast<size_t>(query), 0xCD);
    int32_t size = query;
    ASSERT_EQ(load(ss, 0, full.data(), &size), 1);
    EXPECT_TRUE(full.intact());
    EXPECT_NE(full.u16(106), 0xCDCD);  // the last field is delivered

    // A caller that knows the record as 96 bytes: nothing past 96 is written,
    // everything before it is.
    Guarded short96(96, 0xCD);
    size = 96;
    ASSERT_EQ(load(ss, 0, short96.data(), &size), 1);
    EXPECT_TRUE(short96.intact());
    EXPECT_EQ(size, 108);
    EXPECT_EQ(std::memcmp(short96.data(), full.data(), 96), 0);
    // Its save reads nothing past 96: ot97 (fields 100 to 106) is not touched
    // although what lies beyond would differ.
    short96.setU16(0, static_cast<uint16_t>(short96.u16(0) ^ 1u));
    doc::clearOps();
    ASSERT_EQ(save(ss, 0, short96.data(), 96), 1);
    ASSERT_EQ(opsOf(Op::Save).size(), 1u);
    EXPECT_EQ(doc::tagName(opsOf(Op::Save)[0].tag), "ot92");
    for (int32_t capacity : {0, 1, 27, 29, 101}) {
        Guarded small(static_cast<size_t>(capacity), 0xCD);
        size = capacity;
        ASSERT_EQ(load(ss, 0, small.data(), &size), 1);
        EXPECT_TRUE(small.intact()) << capacity;
    }
}

TEST_F(Prefs, CompositeRefusalsTouchNothing) {
    const PREF_COMPOSITE& c = composite(0x70665250);
    fillElements(c);
    doc::clearOps();
    Guarded buf(40);
    EXPECT_EQ(save(c.tag, 0, buf.data(), 2 * c.rows - 1), 0);
    EXPECT_EQ(save(c.tag, 0, nullptr, 40), 0);
    EXPECT_EQ(load(c.tag, 0, buf.data(), nullptr), 0);
    EXPECT_TRUE(doc::ops().empty());
    // An old stamp goes to the host as it is, with the composite's own tag.
    EXPECT_EQ(save(c.tag, 0, buf.data(), 40, 0x07FFFFFF), 1);
    ASSERT_EQ(doc::ops().size(), 1u);
    EXPECT_EQ(doc::ops()[0].tag, c.tag);
    ASSERT_EQ(hostsim::calls().back().args.back(), 0x07FFFFFFu);
}

struct ArrayCase {
    uint32_t tag;
    int16_t number;
    bool admitted;
    const char* element;
    int16_t count;
    int16_t start;
};

TEST_F(Prefs, ArrayTagsAdmitTheirNumbersAndCopyWholeElements) {
    const ArrayCase cases[] = {
        {0x7066534E, 0, false, "ot40", 1, 0},    {0x7066534E, 1, true, "ot40", 1, 0},
        {0x7066534E, 5, true, "ot40", 1, 4},     {0x7066534E, 128, true, "ot40", 1, 127},
        {0x7066534E, 129, false, "ot40", 1, 0},  {0x7066534E, -1, false, "ot40", 1, 0},
        {0x70664762, 0, false, "ot98", 1, 0},    {0x70664762, 1, true, "ot98", 1, 0},
        {0x70664762, 4, true, "ot98", 1, 3},     {0x70664762, 5, false, "ot98", 1, 0},
        {0x70665046, 1, true, "ot77", 4, 0},     {0x70665046, 2, false, "ot77", 4, 0},
        {0x70664773, 1, true, "ot91", 1, 0},     {0x70664773, 2, false, "ot91", 1, 0},
        {0x7066536C, 15, true, "ot26", 1, 14},   {0x7066536C, 16, false, "ot26", 1, 0},
        {0x70665473, 9, true, "ot90", 1, 8},     {0x70665473, 10, false, "ot90", 1, 0},
        {0x70664747, -300, true, "ot88", 11, 0}, {0x70664744, 7, true, "ot79", 1, 0},
        {0x70664764, 0, true, "ot80", 1, 0},     {0x70664D4D, 3, true, "ot25", 2, 0},
        {0x70664E44, 0, true, "ot04", 1, 0},     {0x70664E64, 0, true, "ot66", 1, 0},
        {0x70665343, 0, true, "ot52", 2, 0},     {0x70665350, 0, true, "ot94", 3, 0},
        {0x70665443, 0, true, "ot86", 5, 0},     {0x70665449, 0, true, "ot84", 4, 0},
        {0x70665458, 0, true, "ot78", 9, 0},     {0x70665470, 0, true, "ot85", 4, 0},
    };
    size_t arrays = 0;
    prefArrays(&arrays);
    EXPECT_EQ(arrays, 18u);
    for (const ArrayCase& k : cases) {
        SCOPED_TRACE(doc::tagName(k.tag) + " " + std::to_string(k.number));
        hostsim::reset();
        const uint32_t el = doc::elementTag(k.element[2], k.element[3]);
        for (int16_t i = 0; i < k.start + k.count + 1; ++i)
            putElement(el, {-2, i, 0}, {static_cast<uint16_t>(i), 1, 2, 3, 4, 0xBEEF});
        const size_t bytes = 12u * static_cast<size_t>(k.count);

        int32_t size = 0;
        EXPECT_EQ(load(k.tag, k.number, nullptr, &size), k.admitted ? 1 : 0);
        if (k.admitted) {
            EXPECT_EQ(size, static_cast<int32_t>(bytes));
        }
        EXPECT_TRUE(doc::ops().empty());

        Guarded shortBuf(bytes - 1, 0xCD);
        size = static_cast<int32_t>(bytes - 1);
        EXPECT_EQ(load(k.tag, k.number, shortBuf.data(), &size), 0);
        EXPECT_EQ(shortBuf.bytes(), std::vector<uint8_t>(bytes - 1, 0xCD));
        EXPECT_TRUE(shortBuf.intact());
        EXPECT_EQ(save(k.tag, k.number, shortBuf.data(), static_cast<int32_t>(bytes - 1)), 0);
        EXPECT_EQ(save(k.tag, k.number, nullptr, static_cast<int32_t>(bytes)), 0);
        EXPECT_TRUE(doc::ops().empty());  // refused before any element

        Guarded buf(bytes, 0xCD);
        size = static_cast<int32_t>(bytes);
        ASSERT_EQ(load(k.tag, k.number, buf.data(), &size), k.admitted ? 1 : 0);
        EXPECT_TRUE(buf.intact());
        if (!k.admitted) {
            EXPECT_TRUE(doc::ops().empty());
            continue;
        }
        ASSERT_EQ(opsOf(Op::Load).size(), static_cast<size_t>(k.count));
        for (int16_t i = 0; i < k.count; ++i) {
            const auto o = opsOf(Op::Load)[static_cast<size_t>(i)];
            EXPECT_EQ(o.tag, el);
            EXPECT_EQ(o.id.first, -2);
            EXPECT_EQ(o.id.second, k.start + i);
            EXPECT_EQ(buf.u16(12u * static_cast<size_t>(i)), k.start + i);
            EXPECT_EQ(buf.u16(12u * static_cast<size_t>(i) + 10), 0xBEEF);
        }
        for (int16_t i = 0; i < k.count; ++i) buf.setU16(12u * static_cast<size_t>(i) + 2, 0x7700);
        doc::clearOps();
        ASSERT_EQ(save(k.tag, k.number, buf.data(), static_cast<int32_t>(bytes)), 1);
        EXPECT_EQ(opsOf(Op::Save).size(), static_cast<size_t>(k.count));
        for (int16_t i = 0; i < k.count; ++i)
            EXPECT_EQ(element(el, {-2, static_cast<int16_t>(k.start + i), 0})[1], 0x7700);
        EXPECT_EQ(element(el, {-2, static_cast<int16_t>(k.start + k.count), 0})[1], 1);  // not ours
    }
}

TEST_F(Prefs, MissingArrayElementsReadAsZeros) {
    Guarded buf(24, 0xCD);
    int32_t size = 24;
    putElement(doc::elementTag('2', '5'), {-2, 1, 0}, {1, 1, 1, 1, 1, 1});
    ASSERT_EQ(load(0x70664D4D, 0, buf.data(), &size), 1);
    EXPECT_EQ(buf.bytes(), (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                                  1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0}));
}

}  // namespace
