// Shared by the command's suites: a fresh test image bound to the simulated
// host with the command's functions handed out, chord records with every
// byte marked, and the expected document built from the one before a run.
#ifndef CAPOCHORDS_TESTS_CAPO_H
#define CAPOCHORDS_TESTS_CAPO_H

#include "fresh.h"
#include "hostsim/document.h"
#include "hostsim/host.h"
#include "hostsim/score.h"
#include "hostsim/ui.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace testing_support {

namespace doc = hostsim::doc;
namespace score = hostsim::score;
namespace ui = hostsim::ui;

using BrevadoFn = short (*)(void*, short, short, short, unsigned short*, short, short, short*);
using SiblingFn = short (*)(void*, score::ChordRecord, score::ChordRecord*);

// A chord symbol whose bytes the command must carry over unchanged: the
// host's own bytes, flag bits and capo bits 7 to 15 are all marked.
inline score::ChordRecord chordSymbol(int32_t key3, int16_t vertical, uint8_t mark = 0x11,
                                      uint16_t flags = 0x0123) {
    score::ChordRecord c;
    c.key1 = static_cast<int16_t>(key3 & 0x7F);
    c.key2 = static_cast<int16_t>(-1 - (key3 & 0x3));
    for (size_t i = 0; i < sizeof c.host4; ++i) c.host4[i] = static_cast<uint8_t>(mark + i);
    for (size_t i = 0; i < sizeof c.host10; ++i) c.host10[i] = static_cast<uint8_t>(mark + 0x20 + i);
    for (size_t i = 0; i < sizeof c.host24; ++i) c.host24[i] = static_cast<uint8_t>(mark + 0x40 + i);
    c.vertical = vertical;
    c.flags = flags;
    c.capoBits = 0x0A95;  // host bits above the capo flag, stale fret bits below it
    c.key3 = key3;
    return c;
}

// The capo chord the command writes for `source`.
inline score::ChordRecord capoOf(score::ChordRecord source, int fret, int16_t vertical, bool flag) {
    source.capoBits = static_cast<uint16_t>((source.capoBits & ~0x003F) | 0x0040 | fret);
    source.vertical = vertical;
    source.flags = static_cast<uint16_t>(flag ? source.flags | 0x8000 : source.flags & ~0x8000);
    return source;
}

template <class T> std::vector<uint8_t> bytesOf(const T& v) {
    std::vector<uint8_t> b(sizeof v);
    std::memcpy(b.data(), &v, sizeof v);
    return b;
}

// Edits of a document snapshot, for the document expected after a run.
struct Expected {
    doc::Document d;
    void put(uint32_t tag, doc::RecordId id, std::vector<uint8_t> b) {
        d.records[{tag, doc::keyOf(tag, id)}] = std::move(b);
    }
    void chord(int16_t staff, int16_t measure, int16_t index, const score::ChordRecord& c) {
        put(doc::kChord, {staff, measure, index}, bytesOf(c));
    }
    void erase(uint32_t tag, doc::RecordId id) { d.records.erase({tag, doc::keyOf(tag, id)}); }
};

inline std::u16string u16(const unsigned short* s) {
    return std::u16string(reinterpret_cast<const char16_t*>(s));
}

// The settings of one run.
struct Args {
    short fret = 3;
    short distance = 64;
    bool showLabel = false;
    const char16_t* label = u"Capo 3";
    bool chordFlag = false;
    bool remove = false;
};

// A fresh copy of the test image per test, bound as the host binds the
// plug-in, in English, over an empty host.
class CommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        setenv("LC_ALL", "C", 1);
        setenv("LANG", "en", 1);
        hostsim::reset();
        probe_ = std::make_unique<Probe>();
        ASSERT_TRUE(probe_->ok()) << probe_->error();
        ASSERT_EQ(probe_->bind(), 1);
        brevado_ = probe_->fn<BrevadoFn>("Brevado");
        ASSERT_NE(brevado_, nullptr);
        hostsim::clearCalls();
        doc::clearOps();
    }
    void TearDown() override {
        EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
        probe_.reset();
        hostsim::reset();
    }

    // One run; the count starts at 0 as the caller's does.
    short run(score::Region region, const Args& a, short* count = nullptr) {
        std::u16string label = a.label ? a.label : u"";
        short local = 0;
        short* c = count ? count : &local;
        *c = 0;
        return brevado_(&region, a.fret, a.distance, a.showLabel ? 1 : 0,
                        a.label ? reinterpret_cast<unsigned short*>(&label[0]) : nullptr,
                        a.chordFlag ? 1 : 0, a.remove ? 1 : 0, c);
    }

    Probe& probe() { return *probe_; }
    BrevadoFn brevado_ = nullptr;

  private:
    std::unique_ptr<Probe> probe_;
};

// The document equals the expected one, byte for byte.
#define EXPECT_DOCUMENT(expected) \
    EXPECT_EQ(hostsim::doc::difference((expected).d, hostsim::doc::snapshot()), "")

}  // namespace testing_support

#endif
