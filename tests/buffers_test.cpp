// The simulated host and the plug-in's buffers: a behaviour that writes past
// the room it was given is caught and kept out of the caller's memory, and in
// an AddressSanitizer build a caller claiming more room than its buffer holds
// gets a failed call, an untouched buffer and a fault on record. The host's
// functions are called at their exported addresses, as the plug-in's
// forwarders reach them. Without its checking (zemlo-host apply) the host
// serves the same calls and logs none.
#include "records.h"

#include "hostsim/ui.h"

#include <functional>

#include <string>

#if defined(__SANITIZE_ADDRESS__)
#define BUFFERS_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BUFFERS_TEST_ASAN 1
#endif
#endif
#ifndef BUFFERS_TEST_ASAN
#define BUFFERS_TEST_ASAN 0
#endif

using hostsim::Fx;
using testing_support::Guarded;

namespace doc = hostsim::doc;

namespace {

using RecordCall = uint64_t (*)(int32_t, void*, void*, void*, uint32_t);
using StepCall = uint64_t (*)(int32_t, void*, void*, int32_t, uint32_t);
using StringCall = uint64_t (*)(void*, int16_t, void*, int16_t, uint32_t);
using AlertCall = uint64_t (*)(void*, uint16_t, int32_t, void*, uint32_t);

template <class F> F host(Fx fx) { return reinterpret_cast<F>(hostsim::implementation(fx)); }

using Buffers = testing_support::FreshHost;

// One out-buffer call per row: the caller gives `room` bytes (in the
// function's own units), a behaviour writes its first byte and the byte at
// `reach`. Up to the room's last byte is the host's to write; one beyond is
// a host fault.
TEST_F(Buffers, BehavioursWritePastTheRoomOnlyIntoTheGuards) {
    struct Case {
        const char* what;
        Fx fx;
        size_t arg;    // the buffer's argument
        size_t bytes;  // the room in bytes
        std::function<uint64_t(uint8_t*)> call;
    };
    const Case cases[] = {
        {"load of a raw text, 5 units", Fx::FX_LoadEData, 2, 10,
         [](uint8_t* buf) {
             EDataID id{1, 0, 0};
             int32_t size = 5;
             return host<RecordCall>(Fx::FX_LoadEData)(static_cast<int32_t>(doc::kRawText), &id, buf, &size,
                                                       0);
         }},
        {"next chord record, 30 bytes", Fx::FX_NextEData, 2, 30,
         [](uint8_t* buf) {
             EDataID id{1, 1, 0};
             return host<StepCall>(Fx::FX_NextEData)(static_cast<int32_t>(doc::kChord), &id, buf, 30, 0);
         }},
        {"8-bit dialog string, limit 8", Fx::FX_GetDlgString, 2, 8,
         [](uint8_t* buf) { return host<StringCall>(Fx::FX_GetDlgString)(nullptr, 1, buf, 8, 0); }},
        {"UTF-16 dialog string, limit 8", Fx::FX_GetDlgString_UTF16, 2, 16,
         [](uint8_t* buf) { return host<StringCall>(Fx::FX_GetDlgString_UTF16)(nullptr, 1, buf, 8, 0); }},
    };
    for (const Case& c : cases) {
        for (size_t past : {0u, 1u, 16u}) {  // 0: the room's last byte
            SCOPED_TRACE(std::string(c.what) + ", reaching " + std::to_string(past) + " past the room");
            hostsim::reset();
            const size_t reach = c.bytes - 1 + past;
            hostsim::setHandler(c.fx, [&c, reach](hostsim::Call& call) -> uint64_t {
                uint8_t* p = call.ptr<uint8_t>(c.arg);
                p[0] = 0x66;
                p[reach] = 0x77;
                return 1;
            });
            Guarded buf(c.bytes + 32, 0xCD);  // the caller's memory goes on past the room it gave
            EXPECT_EQ(c.call(buf.data()), 1u);
            EXPECT_EQ(buf.data()[0], 0x66) << "a write within the room did not reach the caller";
            for (size_t i = c.bytes; i < buf.size(); ++i) ASSERT_EQ(buf.data()[i], 0xCD) << "byte " << i;
            EXPECT_EQ(buf.data()[c.bytes - 1], past == 0 ? 0x77 : 0xCD);
            EXPECT_TRUE(buf.intact());
            const auto& faults = hostsim::bufferFaults();
            ASSERT_EQ(faults.size(), past == 0 ? 0u : 1u);
            if (past) {
                EXPECT_EQ(faults[0].fx, c.fx);
                EXPECT_NE(faults[0].text.find("wrote past the " + std::to_string(c.bytes) + " bytes"),
                          std::string::npos)
                    << faults[0].text;
            }
        }
    }
}

// A caller claiming more than it has. Only an AddressSanitizer build knows
// where the caller's memory ends; there the call must fail without a byte
// read or written.
TEST_F(Buffers, ClaimsBeyondTheCallersMemoryFailTheCallUntouched) {
    if (!BUFFERS_TEST_ASAN)
        GTEST_SKIP() << "where a caller's memory ends is known in AddressSanitizer builds only";
    doc::put(doc::kChord, {1, 1, 0}, std::vector<uint8_t>(200, 0x42));
    struct Case {
        const char* what;
        Fx fx;
        const char* says;
        std::function<uint64_t()> call;
    };
    const Case cases[] = {
        {"heap buffer of 10 bytes claimed as 100", Fx::FX_LoadEData, "claims 100 bytes, but byte 10",
         [] {
             std::unique_ptr<uint8_t[]> small(new uint8_t[10]());
             EDataID id{1, 1, 0};
             int32_t size = 100;
             const uint64_t r = host<RecordCall>(Fx::FX_LoadEData)(static_cast<int32_t>(doc::kChord), &id,
                                                                   small.get(), &size, 0);
             EXPECT_EQ(std::vector<uint8_t>(small.get(), small.get() + 10), std::vector<uint8_t>(10, 0));
             EXPECT_EQ(size, 100);
             return r;
         }},
        {"stack buffer of 16 bytes claimed as 17", Fx::FX_NextEData, "claims 17 bytes, but byte 16",
         [] {
             volatile uint8_t room[16] = {};
             EDataID id{1, 0, 0};
             const uint64_t r = host<StepCall>(Fx::FX_NextEData)(static_cast<int32_t>(doc::kChord), &id,
                                                                 const_cast<uint8_t*>(room), 17, 0);
             for (uint8_t b : room) EXPECT_EQ(b, 0);
             EXPECT_EQ(id.second, 0) << "the identifier was written back";
             return r;
         }},
        {"an identifier cut short", Fx::FX_DeleteEData, "claims 6 bytes, but byte 4",
         [] {
             std::unique_ptr<int16_t[]> id(new int16_t[2]{1, 1});
             return host<uint64_t (*)(int32_t, void*, uint32_t)>(Fx::FX_DeleteEData)(
                 static_cast<int32_t>(doc::kChord), id.get(), 0);
         }},
        {"alert text without a terminator", Fx::FX_AlertMessage_UTF16, "without a terminator",
         [] {
             std::unique_ptr<char16_t[]> text(new char16_t[3]{u'a', u'b', u'c'});
             const uint64_t r = host<AlertCall>(Fx::FX_AlertMessage_UTF16)(nullptr, 64, 0, text.get(), 0);
             EXPECT_TRUE(hostsim::ui::alerts().empty());
             return r;
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        hostsim::clearCalls();
        const size_t before = hostsim::bufferFaults().size();
        EXPECT_EQ(c.call(), 0u);
        ASSERT_EQ(hostsim::bufferFaults().size(), before + 1);
        const hostsim::BufferFault& f = hostsim::bufferFaults().back();
        EXPECT_EQ(f.fx, c.fx);
        EXPECT_NE(f.text.find(c.says), std::string::npos) << f.text;
        ASSERT_EQ(hostsim::calls().size(), 1u);
        EXPECT_TRUE(hostsim::calls()[0].faulted);
    }
    EXPECT_EQ(doc::get(doc::kChord, {1, 1, 0}), std::vector<uint8_t>(200, 0x42)) << "the delete went through";
}

// Without its checking the host still fails the calls a scenario chose, but
// logs none; reset() brings the checking back for the next scenario. (That
// it serves them alike, the MusicXML tests' outputs of zemlo-host show.)
TEST_F(Buffers, UncheckedCallsFailAsScheduledUnloggedTillReset) {
    for (bool reset : {false, true}) {
        hostsim::setChecking(false);
        if (reset) hostsim::reset();
        doc::put(doc::kChord, {1, 1, 0}, std::vector<uint8_t>(30, 0x42));
        hostsim::failCall(Fx::FX_LoadEData, 2);
        Guarded buf(30);
        EDataID id{1, 1, 0};
        int32_t size = 30;
        for (uint64_t answer : {1u, 0u})
            EXPECT_EQ(host<RecordCall>(Fx::FX_LoadEData)(static_cast<int32_t>(doc::kChord), &id,
                                                          buf.data(), &size, 0),
                      answer);
        EXPECT_EQ(hostsim::calls().size(), reset ? 2u : 0u);
        EXPECT_EQ(doc::ops().size(), reset ? 1u : 0u);
    }
}

}  // namespace
