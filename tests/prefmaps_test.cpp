// Composite and array preferences served from the host's element records.
// The rows themselves are checked against the documented maps in
// interface_test.cpp; here every field of every composite is loaded, saved
// back unchanged and changed alone, and the arrays are copied.
#include "prefmaps.h"
#include "records.h"

#include <map>
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
    // Which tags and numbers are admitted is the interface test's; here the
    // copying, at a numbered tag's first and last number and at long runs.
    const ArrayCase cases[] = {
        {0x7066534E, 1, true, "ot40", 1, 0},     {0x7066534E, 128, true, "ot40", 1, 127},
        {0x7066534E, 129, false, "ot40", 1, 0},  {0x70665046, 1, true, "ot77", 4, 0},
        {0x70664747, -300, true, "ot88", 11, 0}, {0x70664D4D, 3, true, "ot25", 2, 0},
    };
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
