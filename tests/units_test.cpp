// Measurement units inside a loaded copy of the test image: the user's unit
// from the host's preference, lengths shown in it and read from it, the
// conversions between units, and entries too large for 32 bits.
#include "bundles.h"
#include "command.h"
#include "fresh.h"
#include "hostsim/document.h"
#include "hostsim/host.h"
#include "units.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

using hostsim::Fx;
namespace doc = hostsim::doc;
using namespace testing_support;

namespace {

class Units : public ::testing::Test {
  protected:
    void SetUp() override {
        hostsim::reset();
        ASSERT_TRUE(p_.ok()) << p_.error();
        ASSERT_EQ(p_.bind(), 1);
        currentUnit = p_.fn<EUNIT (*)()>("GetZemloCurrentUnit");
        toText = p_.fn<char* (*)(char*, short)>("evpuToStrInCurrUnits");
        unitName = p_.fn<unsigned short* (*)(EUNIT)>("UnitString");
        parse = p_.fn<short (*)(char*, ACC_decimal*)>("StrToDecimal");
        convert = p_.fn<ACC_decimal (*)(ACC_decimal*, EUNIT, EUNIT)>("UnitConverter");
        fits = p_.fn<bool (*)(ACC_decimal*, EUNIT, EUNIT)>("UnitConverterFits");
    }
    void TearDown() override { hostsim::reset(); }

    std::string shown(int16_t unit, short evpu) {
        putUnitPreference(unit);
        char buffer[256];
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(toText(buffer, evpu), buffer);
        return buffer;
    }

    Locale english_{"en_US.UTF-8"};
    Probe p_;
    EUNIT (*currentUnit)() = nullptr;
    char* (*toText)(char*, short) = nullptr;
    unsigned short* (*unitName)(EUNIT) = nullptr;
    short (*parse)(char*, ACC_decimal*) = nullptr;
    ACC_decimal (*convert)(ACC_decimal*, EUNIT, EUNIT) = nullptr;
    bool (*fits)(ACC_decimal*, EUNIT, EUNIT) = nullptr;
};

// ---- The user's unit -----------------------------------------------------

TEST_F(Units, CurrentUnitIsTheSixteenBitsAtByteThirtyOrEvpu) {
    EXPECT_EQ(currentUnit(), EUNIT_EVPUS) << "no record";
    for (int16_t unit : {1, 2, 3, 4, 5, 6, 0, 7, -1, 32767}) {
        putUnitPreference(unit);
        EXPECT_EQ(currentUnit(), static_cast<EUNIT>(unit)) << unit;
    }
    putUnitPreference(EUNIT_INCHES);
    hostsim::failCall(Fx::FX_LoadEData, 1);
    EXPECT_EQ(currentUnit(), EUNIT_EVPUS) << "the load fails";
    EXPECT_EQ(currentUnit(), EUNIT_INCHES);
    hostsim::setPresent(Fx::FX_LoadEData, false);
    Probe lacking;  // binds anew, to a host without the load
    ASSERT_EQ(lacking.bind(), 1);
    EXPECT_EQ(lacking.fn<EUNIT (*)()>("GetZemloCurrentUnit")(), EUNIT_EVPUS) << "no load function";
}

// ---- Lengths shown in the user's unit ------------------------------------

struct Shown {
    int16_t unit;
    short evpu;
    const char* text;
};

TEST_F(Units, EvpuShownInEachUnit) {
    const Shown cases[] = {
        {1, 64, "64"},         {2, 64, "0.222"},  {3, 64, "0.566"},      {4, 64, "16.00"},
        {5, 64, "1.333"},      {6, 64, "2.667"},  {4, 65, "16.250"},     {2, 130, "0.451"},
        {6, 130, "5.417"},     {3, 113, "1.000"}, {4, 0, "0.00"},        {2, 1, "0.003"},
        {2, 32767, "113.774"}, {2, -64, "-0.222"}, {1, -32768, "-32768"},
        // Codes outside 1 to 6 convert with factor 1: tenths of an EVPU.
        {0, 64, "640"},        {7, 64, "640.000"},
    };
    for (const Shown& c : cases)
        EXPECT_EQ(shown(c.unit, c.evpu), c.text) << "unit " << c.unit << ", " << c.evpu << " EVPU";
    EXPECT_EQ(toText(nullptr, 64), nullptr);
}

// ---- Conversions ---------------------------------------------------------

struct Conversion {
    int32_t whole, fraction;
    EUNIT from, to;
    int32_t wholeOut, fractionOut;
};

TEST_F(Units, ConversionsBothWays) {
    const Conversion cases[] = {
        {64, 0, EUNIT_EVPUS, EUNIT_INCHES, 0, 222},  {64, 0, EUNIT_EVPUS, EUNIT_SPACES, 2, 667},
        {64, 0, EUNIT_EVPUS, EUNIT_POINTS, 16, 0},   {64, 0, EUNIT_EVPUS, EUNIT_CENTS, 0, 566},
        {64, 0, EUNIT_EVPUS, EUNIT_PICAS, 1, 333},   {1, 500, EUNIT_INCHES, EUNIT_EVPUS, 432, 0},
        {0, 100, EUNIT_INCHES, EUNIT_EVPUS, 28, 800}, {1, 0, EUNIT_CENTS, EUNIT_EVPUS, 113, 0},
        {113, 0, EUNIT_EVPUS, EUNIT_CENTS, 1, 0},    {0, 510, EUNIT_SPACES, EUNIT_EVPUS, 12, 240},
        {16, 250, EUNIT_POINTS, EUNIT_EVPUS, 65, 0}, {2, 667, EUNIT_SPACES, EUNIT_EVPUS, 64, 8},
        {1, 0, EUNIT_CENTS, EUNIT_INCHES, 0, 392},   {745, 0, EUNIT_INCHES, EUNIT_EVPUS, 214560, 0},
        // 2 / 3 thousandths of an EVPU round half up; a third rounds down.
        {0, 1, EUNIT_SPACES, EUNIT_EVPUS, 0, 24},    {1, 0, EUNIT_EVPUS, EUNIT_SPACES, 0, 42},
        {1, 0, EUNIT(7), EUNIT_EVPUS, 0, 100},       {1, 0, EUNIT_EVPUS, EUNIT(0), 10, 0},
    };
    for (const Conversion& c : cases) {
        ACC_decimal d = {c.whole, c.fraction, 1000};
        const ACC_decimal out = convert(&d, c.from, c.to);
        SCOPED_TRACE(std::to_string(c.whole) + "." + std::to_string(c.fraction) + " from " +
                     std::to_string(c.from) + " to " + std::to_string(c.to));
        EXPECT_EQ(out.whole, c.wholeOut);
        EXPECT_EQ(out.fraction, c.fractionOut);
        EXPECT_EQ(out.precision, 1000);
        EXPECT_EQ(std::memcmp(&out, &d, sizeof d), 0) << "stored into the record too";
    }
}

// Products that leave 32 bits are refused and the record stays as it was.
TEST_F(Units, ConversionsBeyondThirtyTwoBitsAreRefused) {
    struct {
        ACC_decimal d;
        EUNIT from, to;
    } cases[] = {
        {{746, 0, 1000}, EUNIT_INCHES, EUNIT_EVPUS},      // N x Ff just beyond 745 inches
        {{INT32_MAX, 0, 1000}, EUNIT_EVPUS, EUNIT_INCHES}, // N beyond
        {{2147483, 648, 1000}, EUNIT_EVPUS, EUNIT_EVPUS},  // N = 2^31
        {{1, 0, 1000000}, EUNIT_EVPUS, EUNIT_INCHES},     // B = P x Ft beyond
        {{INT32_MAX, INT32_MAX, INT32_MAX}, EUNIT_INCHES, EUNIT_INCHES},
        {{INT32_MIN, INT32_MIN, INT32_MAX}, EUNIT_CENTS, EUNIT_EVPUS},
        {{5, 0, 0}, EUNIT_EVPUS, EUNIT_INCHES},           // no precision
        {{5, 0, -1000}, EUNIT_EVPUS, EUNIT_INCHES},
    };
    for (auto& c : cases) {
        const ACC_decimal before = c.d;
        ACC_decimal d = c.d;
        EXPECT_FALSE(fits(&d, c.from, c.to)) << before.whole << " / " << before.precision;
        EXPECT_EQ(std::memcmp(&d, &before, sizeof d), 0);
        const ACC_decimal out = convert(&d, c.from, c.to);
        EXPECT_EQ(std::memcmp(&out, &before, sizeof d), 0);
    }
}

// ---- Decimal entry -------------------------------------------------------

struct Parsed {
    const char* text;
    int32_t precision, whole, fraction;
};

// At the record's precision: that many decimals count.
TEST_F(Units, DecimalTextsRead) {
    const Parsed cases[] = {
        {"2", 1000, 2, 0},        {"2.5", 1000, 2, 500},      {".25", 1000, 0, 250},
        {"2.", 1000, 2, 0},       {".", 1000, 0, 0},          {"1.2345", 1000, 1, 234},
        {"1.2.3", 1000, 1, 230},  {"007", 1000, 7, 0},        {"2147483647", 1000, INT32_MAX, 0},
        {"1.25", 10, 1, 2},       {"1.5", 1000000, 1, 500000}, {"1.25", 7, 1, 0},
        {"0.99999999999999999999", 1000, 0, 999},  // decimals beyond the precision never add up
    };
    for (const Parsed& c : cases) {
        ACC_decimal d = {-7, -7, c.precision};
        std::string text = c.text;
        EXPECT_EQ(parse(&text[0], &d), 1) << c.text;
        EXPECT_EQ(d.whole, c.whole) << c.text;
        EXPECT_EQ(d.fraction, c.fraction) << c.text;
        EXPECT_EQ(d.precision, c.precision) << c.text;
    }
}

TEST_F(Units, DecimalTextsRefusedLeaveTheRecord) {
    const char* refused[] = {"-1",  "+1",  " 2",   "2 ",     "1,5",   "abc",        "2a",  "1e3",
                             "",    "\t1", "0x10", "\xB2",   "1\xA0", "12345678901", "2147483648",
                             "99999999999999999999", "4294967298"};
    for (const char* t : refused) {
        ACC_decimal d = {-7, -8, 1000};
        std::string text = t;
        EXPECT_EQ(parse(&text[0], &d), 0) << "\"" << t << "\"";
        EXPECT_EQ(d.whole, -7);
        EXPECT_EQ(d.fraction, -8);
        EXPECT_EQ(d.precision, 1000);
    }
    ACC_decimal d = {1, 2, 1000};
    EXPECT_EQ(parse(nullptr, &d), 0);
    char two[] = "2";
    EXPECT_EQ(parse(two, nullptr), 0);
}

// The names of codes 1 to 6 show in the dialog's caption; any other code
// shares the EVPU name and buffer, and every call fetches the name anew.
TEST_F(Units, UnitNamesFromTheStringTable) {
    unsigned short* evpus = unitName(EUNIT_EVPUS);
    for (EUNIT other : {EUNIT(0), EUNIT(7), EUNIT(-1)}) EXPECT_EQ(unitName(other), evpus) << other;
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(evpus)), u"EVPUs");
    unsigned short* inches = unitName(EUNIT_INCHES);
    EXPECT_NE(inches, evpus);
    inches[0] = u'X';
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(unitName(EUNIT_INCHES))), u"Inches");
}

}  // namespace
