// Loading, binding and ending the plug-in, and its entry points with odd
// arguments.
#include "check.h"
#include "session.h"

#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <climits>
#include <cstring>

namespace validate {
namespace {

namespace ui = hostsim::ui;

void freshCopies(Context& cx) {
    const int copies = byLevel(cx.plan(), 5, 200);
    for (int i = 0; i < copies && !cx.failures(); ++i) {
        Session s(cx, /*freshCopy=*/true);
        if (!s.start()) return;
        s.terminate();
        s.checkHost("copy " + std::to_string(i + 1));
        cx.count("loads");
    }
}

// Index -2..2 through both enumeration entry points, and the wide one's
// indexes whose low 16 bits say something else.
void enumerate(Context& cx) {
    Session s(cx);
    if (!s.start()) return;
    auto narrow = s.entry<Session::EnumerateFn>("ZemloExtensionEnumerate_UTF16");
    auto wide = s.entry<Session::ExtEnumerateFn>("Ext_enumerate_UTF16");
    auto status = s.entry<int16_t (*)(int16_t)>("ZemloExtensionGetMenuStatus");
    auto wideStatus = s.entry<int32_t (*)(int32_t)>("Ext_getmenustatus");
    auto version = s.entry<uint32_t (*)(uint32_t)>("ZemloExtensionVersion");
    auto wideVersion = s.entry<uint32_t (*)(uint32_t)>("Ext_getversion");
    auto wideInit = s.entry<int32_t (*)(void*, int32_t*)>("Ext_init");
    if (!narrow || !wide || !status || !wideStatus || !version || !wideVersion || !wideInit) return;

    struct Case {
        int32_t index;
        bool offered;  // the low 16 bits are 0 or negative
    };
    const Case cases[] = {{-2, true},       {-1, true},       {0, true},       {1, false},
                          {2, false},       {INT32_MIN, true}, {INT32_MAX, true}, {65535, true},
                          {65536, true},    {65537, false},   {32767, false},  {32768, true},
                          {-65535, false}};
    for (const Case& c : cases) {
        for (bool viaWide : {false, true}) {
            if (!viaWide && (c.index < INT16_MIN || c.index > INT16_MAX)) continue;
            const std::string what = std::string(viaWide ? "Ext_enumerate_UTF16(" : "enumerate(") +
                                     std::to_string(c.index) + ")";
            Guarded record(sizeof(MenuItemRecord), 0x5A);
            const int32_t r = viaWide ? wide(nullptr, c.index, record.as<MenuItemRecord>())
                                      : narrow(nullptr, static_cast<int16_t>(c.index), record.as<MenuItemRecord>());
            cx.expect(r == (c.offered ? 1 : 0), what + " answered " + std::to_string(r));
            cx.expect(record.damage().empty(), what + " wrote outside the record: " + record.damage());
            const MenuItemRecord* m = record.as<MenuItemRecord>();
            bool hostKept = true, untouched = true;
            for (uint8_t b : m->hostOnly) hostKept = hostKept && b == 0x5A;
            for (size_t i = 0; i < hostsim::kMenuItemFilled; ++i) untouched = untouched && record.data()[i] == 0x5A;
            cx.expect(hostKept, what + " wrote into the host's part of the record");
            if (c.offered) cx.expect(m->itemText[0] != 0 && m->itemText[0] != 0x5A5A, what + " gave no item text");
            else cx.expect(untouched, what + " wrote into the record of an item it does not have");
            cx.count("entry point calls");
        }
        if (c.index >= INT16_MIN && c.index <= INT16_MAX)
            cx.expect(status(static_cast<int16_t>(c.index)) == 1, "status(" + std::to_string(c.index) + ") is not 1");
        cx.expect(wideStatus(c.index) == 1, "Ext_getmenustatus(" + std::to_string(c.index) + ") is not 1");
    }
    cx.expect(narrow(nullptr, 0, nullptr) == 0, "enumerate(0) without a record did not answer 0");
    cx.expect(wide(nullptr, 0, nullptr) == 0, "Ext_enumerate_UTF16(0) without a record did not answer 0");
    for (uint32_t v : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        cx.expect(wideVersion(v) == version(v) && version(v) == version(0),
                  "the version depends on what is asked (" + std::to_string(v) + ")");
    Guarded value(sizeof(int32_t), 0xA5);
    cx.expect(wideInit(nullptr, value.as<int32_t>()) == 1, "Ext_init did not answer 1");
    cx.expect(*value.as<int32_t>() == 0 && value.damage().empty(), "Ext_init did not clear exactly its value");
    cx.expect(wideInit(nullptr, nullptr) == 1, "Ext_init without a value did not answer 1");
    s.terminate();
    if (auto t = s.entry<void (*)(void*)>("Ext_terminate")) t(nullptr);
    s.checkHost("");
}

// Menu items -1, 0 and 1, the dialog cancelled: only item 1 is none of the
// plug-in's, and no item changes the score when the user cancels.
void invokeItems(Context& cx) {
    struct Case {
        int32_t item;
        bool wide;
        bool shows;  // the dialog comes up
    };
    const Case cases[] = {{-1, false, true}, {0, false, true},      {1, false, false},
                          {-1, true, true},  {65536, true, true},   {65537, true, false},
                          {INT32_MIN, true, true}, {INT32_MAX, true, true}};
    for (const Case& c : cases) {
        Session s(cx);
        if (!s.start()) return;
        score::Score sc(2, 3);
        score::ChordRecord chord;
        chord.key3 = 240;
        sc.chord(1, 1, chord).chord(2, 3, chord);
        const doc::Document before = doc::snapshot();
        const score::Region whole = sc.whole();
        hostsim::driver::Answers cancel;
        cancel.cancel = true;
        std::string shown, confirmed;
        ui::scriptDialog(hostsim::driver::dialogScript(cancel, &shown, &confirmed));
        Guarded region(sizeof whole), all(sizeof whole);
        std::memcpy(region.data(), &whole, sizeof whole);
        std::memcpy(all.data(), &whole, sizeof whole);
        int32_t r;
        const std::string what = std::string(c.wide ? "Ext_invoke(" : "invoke(") + std::to_string(c.item) + ")";
        if (c.wide) {
            auto f = s.entry<int32_t (*)(void*, int32_t, void*, void*)>("Ext_invoke");
            if (!f) return;
            r = f(nullptr, c.item, region.data(), all.data());
        } else {
            r = s.invoke(&whole, whole, static_cast<int16_t>(c.item));
        }
        cx.expect(r == 0, what + " with the dialog cancelled answered " + std::to_string(r));
        cx.expect(ui::dialogs().size() == (c.shows ? 1u : 0u),
                  what + " showed " + std::to_string(ui::dialogs().size()) + " dialogs");
        cx.expect(doc::difference(before, doc::snapshot()).empty(),
                  what + " changed the score: " + doc::difference(before, doc::snapshot()));
        cx.expect(region.damage().empty() && all.damage().empty(), what + " wrote outside a region");
        s.terminate();
        s.checkHost(what);
        cx.count("entry point calls");
    }
}

// The command confirmed with a label on part of a small score, then the
// removal of what it wrote: both answer 1, the first writes capo chords and
// the second takes every one of them away, ordinary chords and everything
// outside the region stay, and the host holds nothing against the plug-in.
void runOnce(Context& cx) {
    Session s(cx);
    if (!s.start()) return;
    score::Score sc(2, 4);
    for (int16_t m = 1; m <= 4; ++m) {
        score::ChordRecord chord;
        chord.key1 = m;
        chord.key3 = static_cast<int16_t>(cx.between(0, 3) * 240);
        sc.chord(1, m, chord);
        if (m % 2) sc.chord(2, m, chord);
    }
    sc.textBlock(2, 4, 0, 0, u"outside the region");
    const score::Region region = score::region(1, 1, 2, 3);
    const std::set<int16_t> staves{1, 2};
    auto capoChords = [] {
        size_t n = 0;
        for (int16_t staff = 1; staff <= 2; ++staff)
            for (int16_t m = 1; m <= 4; ++m)
                for (const score::ChordRecord& c : score::chords(staff, m)) n += c.isCapo() ? 1 : 0;
        return n;
    };

    hostsim::driver::Answers confirmed;
    confirmed.capo = "2";
    confirmed.setLabel = true;
    confirmed.label = "Capo 2";
    const doc::Document start = doc::snapshot();
    cx.expect(s.run(confirmed, &region, sc.whole()) == 1, "the confirmed run did not answer 1");
    const doc::Document added = doc::snapshot();
    cx.expect(capoChords() == 5, "the confirmed run wrote " + std::to_string(capoChords()) +
                                     " capo chords for the region's 5 chords");
    expectOrdinaryKept(cx, start, added, "the confirmed run");
    expectOutsideUnchanged(cx, start, added, region, staves, "the confirmed run");

    hostsim::driver::Answers removal;
    removal.capo = "2";
    removal.remove = true;
    cx.expect(s.run(removal, &region, sc.whole()) == 1, "the removal did not answer 1");
    const doc::Document removed = doc::snapshot();
    cx.expect(capoChords() == 0, std::to_string(capoChords()) + " capo chords left after the removal");
    expectOrdinaryKept(cx, added, removed, "the removal");
    expectOutsideUnchanged(cx, added, removed, region, staves, "the removal");
    s.terminate();
    s.checkHost("");
    cx.count("runs", 2);
}

}  // namespace

void addLifecycleChecks(const Plan&, Checks& out) {
    out.push_back({"lifecycle/fresh-copies", freshCopies, 120});
    out.push_back({"lifecycle/enumerate", enumerate});
    out.push_back({"lifecycle/invoke-items", invokeItems});
    out.push_back({"lifecycle/run", runOnce});
}

}  // namespace validate
