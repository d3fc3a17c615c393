// The host's start-up of a plug-in, written once for zemlo-host and the
// validator.
#include "hostsim/driver.h"

#include "hostsim/host.h"
#include "hostsim/ui.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <memory>

namespace hostsim {
namespace driver {
namespace {

std::u16string textOf(const uint16_t* units) {
    std::u16string s;
    for (size_t i = 0; i < kMenuTextRoom && units[i]; ++i)
        s.push_back(static_cast<char16_t>(units[i]));
    return s;
}

// The plug-in's localized string table, in the language the plug-in picks.
class StringTable {
  public:
    explicit StringTable(const std::string& bundlePath) {
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8*>(bundlePath.c_str()),
            static_cast<CFIndex>(bundlePath.size()), true);
        if (!url) return;
        bundle_ = CFBundleCreate(nullptr, url);
        CFRelease(url);
    }
    ~StringTable() {
        if (bundle_) CFRelease(bundle_);
    }
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;

    // False when the table lacks the number (the lookup then answers the key).
    bool lookUp(int32_t number, std::u16string* out) const {
        if (!bundle_) return false;
        const std::string key = std::to_string(number);
        CFStringRef k = CFStringCreateWithCString(nullptr, key.c_str(), kCFStringEncodingUTF8);
        if (!k) return false;
        CFStringRef v = CFBundleCopyLocalizedString(bundle_, k, k, nullptr);
        CFRelease(k);
        if (!v) return false;
        std::u16string text(static_cast<size_t>(CFStringGetLength(v)), u'\0');
        CFStringGetCharacters(v, CFRangeMake(0, static_cast<CFIndex>(text.size())),
                              reinterpret_cast<UniChar*>(&text[0]));
        CFRelease(v);
        if (text == std::u16string(key.begin(), key.end())) return false;
        *out = std::move(text);
        return true;
    }

  private:
    CFBundleRef bundle_ = nullptr;
};

} // namespace

int32_t* StartMemory::initValue() {
    value_ = -1;
    return &value_;
}

MenuItemRecord* StartMemory::menuRecord() {
    std::memset(&record_, 0, sizeof record_);
    return &record_;
}

void useStringTable(const std::string& bundlePath) {
    auto table = std::make_shared<StringTable>(bundlePath);
    ui::setStringSource([table](int32_t n, std::u16string* out) { return table->lookUp(n, out); });
}

void attach(const Plugin& plugin) {
    ui::setDialogFolder(plugin.bundlePath() + "/Contents/Resources");
    useStringTable(plugin.bundlePath());
    setResult(Fx::FX_IsMachO, 1);
}

StartUp start(const Plugin& plugin, int maxItems, StartMemory& memory) {
    using EnumerateFn = int16_t (*)(void*, int16_t, MenuItemRecord*);
    auto pluginMain = plugin.function<int (*)(int, char**)>("main");
    auto version = plugin.function<uint32_t (*)(uint32_t)>("ZemloExtensionVersion");
    auto init = plugin.function<int16_t (*)(void*, int32_t*)>("ZemloExtensionInit");
    auto enumerate = plugin.function<EnumerateFn>("ZemloExtensionEnumerate_UTF16");
    auto status = plugin.function<int16_t (*)(int16_t)>("ZemloExtensionGetMenuStatus");
    StartUp s;
    const std::pair<const char*, bool> needed[] = {{"main", pluginMain},
                                                   {"ZemloExtensionVersion", version},
                                                   {"ZemloExtensionInit", init},
                                                   {"ZemloExtensionEnumerate_UTF16", enumerate},
                                                   {"ZemloExtensionGetMenuStatus", status}};
    for (const auto& [name, present] : needed)
        if (!present) s.missing.push_back(name);
    if (!s.missing.empty()) return s;

    char name[] = "zemlo-host";
    char* args[] = {name, nullptr};
    s.bound = pluginMain(1, args);
    s.version = version(0);
    int32_t* value = memory.initValue();
    s.initialised = init(nullptr, value);
    s.initValue = *value;
    memory.afterInit();
    for (int i = 0; i < maxItems; ++i) {
        MenuItemRecord* r = memory.menuRecord();
        const int16_t offered = enumerate(nullptr, static_cast<int16_t>(i), r);
        memory.afterEnumerate(i);
        if (!offered) break;
        MenuItem item{textOf(r->itemText), textOf(r->secondText), textOf(r->undoText), 0};
        item.status = status(static_cast<int16_t>(i));
        s.items.push_back(std::move(item));
    }
    return s;
}

StartUp start(const Plugin& plugin, int maxItems) {
    StartMemory plain;
    return start(plugin, maxItems, plain);
}

} // namespace driver
} // namespace hostsim
