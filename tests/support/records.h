// Shared by the record and frame suites: buffers framed by guard bytes, a
// gtest environment that binds this process's forwarders to the simulated
// engine, and small helpers for element records.
#ifndef CAPOCHORDS_TESTS_RECORDS_H
#define CAPOCHORDS_TESTS_RECORDS_H

#include "binding.h"
#include "fresh.h"
#include "hostsim/document.h"
#include "hostsim/host.h"
#include "zemlopdk.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace testing_support {

// A caller's buffer with guard bytes on both sides, on the heap at its own
// size so that the sanitizer sees a write past the guards as well.
class Guarded {
  public:
    static constexpr size_t kGuard = 32;
    explicit Guarded(size_t n, uint8_t fill = 0xCD, uint8_t guard = 0x5A)
        : n_(n), guard_(guard), raw_(new uint8_t[n + 2 * kGuard]) {
        std::memset(raw_.get(), guard, n + 2 * kGuard);
        std::memset(data(), fill, n);
    }
    uint8_t* data() { return raw_.get() + kGuard; }
    const uint8_t* data() const { return raw_.get() + kGuard; }
    size_t size() const { return n_; }
    bool intact() const {
        for (size_t i = 0; i < kGuard; ++i)
            if (raw_[i] != guard_ || raw_[kGuard + n_ + i] != guard_) return false;
        return true;
    }
    std::vector<uint8_t> bytes() const { return std::vector<uint8_t>(data(), data() + n_); }
    uint16_t u16(size_t at) const {
        uint16_t v;
        std::memcpy(&v, data() + at, 2);
        return v;
    }
    uint32_t u32(size_t at) const {
        uint32_t v;
        std::memcpy(&v, data() + at, 4);
        return v;
    }
    void setU16(size_t at, uint16_t v) { std::memcpy(data() + at, &v, 2); }
    void setU32(size_t at, uint32_t v) { std::memcpy(data() + at, &v, 4); }

  private:
    size_t n_;
    uint8_t guard_;
    std::unique_ptr<uint8_t[]> raw_;
};

// Binds this process's forwarders (linked from capochords_core) to the
// simulated engine once, before the first test.
class BoundToEngine : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(InitializeGlobals(), 0); }
};

// Element records are six words.
using Words = std::array<uint16_t, 6>;
inline void putElement(uint32_t tag, hostsim::doc::RecordId id, const Words& w) {
    hostsim::doc::putAs(tag, id, w);
}
inline Words element(uint32_t tag, hostsim::doc::RecordId id) {
    Words w{};
    auto b = hostsim::doc::get(tag, id);
    EXPECT_TRUE(b && b->size() == 12) << hostsim::doc::tagName(tag);
    if (b && b->size() == 12) std::memcpy(w.data(), b->data(), 12);
    return w;
}

// Host-side views of the document log.
inline std::vector<hostsim::doc::OpRecord> opsOf(hostsim::doc::Op op) {
    std::vector<hostsim::doc::OpRecord> out;
    for (const auto& r : hostsim::doc::ops())
        if (r.op == op) out.push_back(r);
    return out;
}

}  // namespace testing_support

#endif
