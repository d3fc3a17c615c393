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

// UTF-16 text as the bytes of a raw text record.
inline std::vector<uint8_t> unitsOf(const std::u16string& text) {
    std::vector<uint8_t> b(text.size() * 2);
    std::memcpy(b.data(), text.data(), b.size());
    return b;
}

// The raw text of a label block: the font command, then the label.
inline std::u16string labelText(const std::u16string& font, int nameValue, int effects, int size,
                                const std::u16string& label) {
    const std::string head = "," + std::to_string(nameValue) + ")^nfx(" + std::to_string(effects) +
                             ")^size(" + std::to_string(size) + ")";
    return u"^font(" + font + std::u16string(head.begin(), head.end()) + label;
}

// The three records of a created block and its measure's text flag.
inline void labelBlock(Expected& e, int16_t staff, int16_t measure, int16_t index, int16_t block,
                       int16_t raw, int16_t vertical, const std::u16string& text) {
    e.put(doc::kRawText, {raw, 0, 0}, unitsOf(text));
    score::TextBlockRecord tb;
    tb.rawTextNumber = static_cast<uint16_t>(raw);
    tb.word8 = 100;
    tb.word14 = 0x1808;
    tb.rawTextKind = 0x626C;
    e.put(doc::kTextBlock, {block, 0, 0}, bytesOf(tb));
    score::MeasureTextRecord mt;
    mt.blockNumber = static_cast<uint16_t>(block);
    mt.horizontal = -200;
    mt.vertical = vertical;
    e.put(doc::kMeasureText, {staff, measure, index}, bytesOf(mt));
    auto m = e.d.records.at({doc::kMeasure, {measure, 0, 0}});
    m[15] = static_cast<uint8_t>(m[15] | 0x01);  // 0x0100 of the word at 14
    e.put(doc::kMeasure, {measure, 0, 0}, m);
}

// The settings of one run.
struct Args {
    short fret = 3;
    short distance = 64;
    bool showLabel = false;
    const char16_t* label = u"Capo 3";
    bool chordFlag = false;
    bool remove = false;
    static Args removal(const char16_t* label = u"Capo 3") {
        Args a;
        a.remove = true;
        a.label = label;
        return a;
    }
    static Args labelled() {
        Args a;
        a.showLabel = true;
        return a;
    }
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

    // One run; the count starts at 0 as the caller's does. Without a count
    // the run gets none, as the command allows.
    short run(score::Region* region, const Args& a, short* count = nullptr,
              BrevadoFn brevado = nullptr) {
        std::u16string label = a.label ? a.label : u"";
        if (count) *count = 0;
        return (brevado ? brevado : brevado_)(
            region, a.fret, a.distance, a.showLabel ? 1 : 0,
            a.label ? reinterpret_cast<unsigned short*>(&label[0]) : nullptr, a.chordFlag ? 1 : 0,
            a.remove ? 1 : 0, count);
    }
    short run(score::Region region, const Args& a, short* count = nullptr) {
        return run(&region, a, count);
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
