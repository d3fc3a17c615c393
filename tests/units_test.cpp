// Measurement units inside a loaded copy of the test image: the user's unit
// from the host's preference, and entries refused or too large for 32 bits.
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

// ---- Conversions ---------------------------------------------------------

struct Conversion {
    int32_t whole, fraction;
    EUNIT from, to;
    int32_t wholeOut, fractionOut;
};

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

}  // namespace
