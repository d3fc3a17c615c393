// The item calls on an open dialog: value kinds, the capacity of the string
// getters (guard bytes on both sides), the 8-bit view of a control's text,
// and calls on dialogs that ended or never were.
#include "hostui_support.h"

#include <climits>
#include <cstring>
#include <vector>

namespace ui = hostsim::ui;
using hostui::HostUi;
using ui::ErrorKind;

namespace {

using DialogItems = HostUi;

constexpr uint8_t kGuard = 0xA5;

// The getters write at most `limit` units: limit - 1 of text and a 0.
template <class Unit>
void checkCapacity(void (*get)(void*, int16_t, void*, int16_t, uint32_t),
                   void (*set)(void*, int16_t, void*, uint32_t)) {
    constexpr size_t kBefore = 8, kRoom = 400;
    for (int16_t limit : {1, 2, 10, 255, 256}) {
        for (size_t length : {size_t{0}, size_t{1}, size_t(limit - 1), size_t(limit),
                              size_t(limit + 1), size_t{300}}) {
            SCOPED_TRACE(testing::Message() << "limit " << limit << " length " << length);
            std::vector<Unit> text(length, Unit('x'));
            text.push_back(0);
            std::vector<uint8_t> raw((kBefore + kRoom) * sizeof(Unit), kGuard);
            Unit* buffer = reinterpret_cast<Unit*>(raw.data()) + kBefore;
            hostui::withOpenDialog([&](OpaqueCocoaWindow* d) {
                set(d, 10, text.data(), FXT_VERSION);
                get(d, 10, buffer, limit, FXT_VERSION);
            });
            size_t copied = std::min(length, size_t(limit - 1));
            const uint8_t* end = raw.data() + (kBefore + copied + 1) * sizeof(Unit);
            for (size_t i = 0; i < copied; ++i) ASSERT_EQ(buffer[i], Unit('x')) << i;
            EXPECT_EQ(buffer[copied], Unit(0));
            for (const uint8_t* p = raw.data(); p < raw.data() + kBefore * sizeof(Unit); ++p)
                ASSERT_EQ(*p, kGuard) << "before the buffer";
            for (const uint8_t* p = end; p < raw.data() + raw.size(); ++p)
                ASSERT_EQ(*p, kGuard) << "beyond the terminator at " << (p - raw.data());
            EXPECT_TRUE(ui::errors().empty()) << ui::errorText();
            hostsim::reset();
            ui::setDialogFolder(std::string(CAPOCHORDS_BUNDLE) + "/Contents/Resources");
        }
    }
}

void get16(void* d, int16_t i, void* b, int16_t l, uint32_t v) {
    FX_GetDlgString_UTF16(d, i, b, l, v);
}
void set16(void* d, int16_t i, void* t, uint32_t v) { FX_SetDlgString_UTF16(d, i, t, v); }

TEST_F(DialogItems, SixteenBitGetterFillsLimitUnitsTerminatorIncluded) {
    checkCapacity<char16_t>(get16, set16);
}

// Every item call on a dialog that ended, or on something that never was a
// dialog: one error each, nothing changed, nothing written.
TEST_F(DialogItems, CallsOnEndedOrUnknownDialogsAreErrorsAndDoNothing) {
    ui::scriptDialog({ui::click(1)});
    hostui::Settings s;
    void* ended = hostui::showSettings(&s);
    ASSERT_NE(ended, nullptr);
    int notADialog = 0;
    char buffer[8] = "keep";
    char16_t units[8] = u"keep";
    using Call = std::function<void(void*)>;
    const std::pair<const char*, Call> calls[] = {
        {"FX_EndDialog", [](void* d) { FX_EndDialog(d, FXT_VERSION); }},
        {"FX_EnableDlgItem", [](void* d) { FX_EnableDlgItem(d, 4, 0, FXT_VERSION); }},
        {"FX_ShowHideDlgItem", [](void* d) { FX_ShowHideDlgItem(d, 4, 0, FXT_VERSION); }},
        {"FX_SetDlgFocus", [](void* d) { FX_SetDlgFocus(d, 6, FXT_VERSION); }},
        {"FX_GetDlgItemVal", [](void* d) { EXPECT_EQ(FX_GetDlgItemVal(d, 4, 3, FXT_VERSION), 0); }},
        {"FX_SetDlgItemVal", [](void* d) { FX_SetDlgItemVal(d, 4, 3, 9, FXT_VERSION); }},
        {"FX_GetDlgString", [&](void* d) { FX_GetDlgString(d, 6, buffer, 8, FXT_VERSION); }},
        {"FX_GetDlgString_UTF16",
         [&](void* d) { FX_GetDlgString_UTF16(d, 10, units, 8, FXT_VERSION); }},
        {"FX_SetDlgString",
         [](void* d) { FX_SetDlgString(d, 6, const_cast<char*>("9"), FXT_VERSION); }},
        {"FX_SetDlgString_UTF16",
         [](void* d) { FX_SetDlgString_UTF16(d, 10, const_cast<char16_t*>(u"9"), FXT_VERSION); }},
    };
    for (void* handle : {ended, static_cast<void*>(&notADialog), static_cast<void*>(nullptr)}) {
        const ErrorKind kind = handle == ended ? ErrorKind::EndedDialog : ErrorKind::UnknownDialog;
        for (const auto& [name, call] : calls) {
            SCOPED_TRACE(name);
            size_t before = ui::errors().size();
            call(handle);
            auto errs = ui::errors();
            ASSERT_EQ(errs.size(), before + 1);
            EXPECT_EQ(errs.back().kind, kind);
            EXPECT_NE(errs.back().text.find(name), std::string::npos) << errs.back().text;
        }
    }
    EXPECT_STREQ(buffer, "keep");
    EXPECT_EQ(std::u16string(units), u"keep");
    const ui::DialogRun& r = ui::dialogs()[0];
    EXPECT_EQ(r.control(4)->value, 1);
    EXPECT_TRUE(r.control(4)->enabled);
    EXPECT_TRUE(r.control(4)->visible);
    EXPECT_EQ(r.focused, 4);
    EXPECT_EQ(r.text8(6), "64");
}

}  // namespace
