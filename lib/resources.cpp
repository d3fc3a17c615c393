// The plug-in's localized string table, in its own bundle.
#include "resources.h"

#include "zemlopdk.h"

#include <Carbon/Carbon.h>

#include <dlfcn.h>
#include <libgen.h>

#include <cstring>
#include <string>

namespace {

// The plug-in's bundle; set by the first discovery that succeeds, never released.
CFBundleRef bundleRef = NULL;

// dladdr needs an address inside our own image: this text is one.
const char kSelfText[] = "dlbundle";

// Key texts: "20005"; "128,3" for index 3 of list 128. Both halves are signed.
CFStringRef copyKeyText(int number) {
    auto list = static_cast<int16_t>(static_cast<uint32_t>(number) >> 16);
    auto low = static_cast<int16_t>(static_cast<uint32_t>(number) & 0xFFFF);
    if (list == 0) return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%d"), low);
    return CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%d,%d"), list, low);
}

void alertMissingTable() {
    static char text[] = "Missing Localizable.strings";
    FX_AlertMessage(nullptr, 0, 0, text, FXT_VERSION);
}

}  // namespace

CFBundleRef dlbundle(CFStringRef key) {
    if (!key) key = kCFBundleExecutableKey;
    Dl_info info;
    if (dladdr(static_cast<const void*>(kSelfText), &info) == 0 || !info.dli_fname) return nullptr;
    std::string path = info.dli_fname;  // dirname writes into its argument
    std::string dir = dirname(&path[0]);
    for (;;) {
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(dir.c_str()),
            static_cast<CFIndex>(strlen(dir.c_str())), true);
        CFBundleRef bundle = url ? CFBundleCreate(kCFAllocatorDefault, url) : nullptr;
        if (url) CFRelease(url);
        if (bundle) {
            if (CFBundleGetValueForInfoDictionaryKey(bundle, key)) return bundle;
            CFRelease(bundle);
        }
        // Up one folder; "." ends a relative walk, the root an absolute one.
        std::string up = dirname(&dir[0]);
        if (up == "." || up == dir) return nullptr;
        dir = up;
    }
}

CFBundleRef GetPluginBundle() {
    if (!bundleRef) bundleRef = dlbundle(nullptr);
    return bundleRef;
}

CFStringRef CopyPlugInStringResource(int number) {
    GetPluginBundle();
    ZEMLO_ASSERT(bundleRef != NULL, "CopyPlugInStringResource", "portable");
    if (!bundleRef) return nullptr;
    CFStringRef key = copyKeyText(number);
    if (!key) return nullptr;
    // The key doubles as the answer for a missing entry: the caller then shows the number.
    CFStringRef text = CFBundleCopyLocalizedString(bundleRef, key, key, nullptr);
    bool found = text && CFStringCompare(text, key, 0) != kCFCompareEqualTo;
    CFRelease(key);
    if (!found) {
        CFURLRef table = CFBundleCopyResourceURL(bundleRef, CFSTR("Localizable"), CFSTR("strings"), nullptr);
        if (table) CFRelease(table);
        else alertMissingTable();
    }
    return text;
}

unsigned short* PlugIn_GetStringResource(int number, unsigned short* buffer, short capacity) {
    if (capacity <= 0) return nullptr;
    buffer[0] = 0;
    if (CFStringRef text = CopyPlugInStringResource(number)) {
        CFIndex n = CFStringGetLength(text);
        if (n > capacity - 1) n = capacity - 1;
        if (n > 0) CFStringGetCharacters(text, CFRangeMake(0, n), buffer);
        buffer[n] = 0;
        CFRelease(text);
    }
    buffer[capacity - 1] = 0;
    return buffer;
}

unsigned char* HardGetPString(int number, unsigned char* buffer) {
    buffer[0] = 0;
    if (CFStringRef text = CopyPlugInStringResource(number)) {
        // A failed conversion leaves the length at 0: an empty text.
        CFStringGetPascalString(text, buffer, 256, GetApplicationTextEncoding());
        CFRelease(text);
    }
    return buffer;
}

short ptocs(unsigned char* buffer) {
    unsigned char n = buffer[0];
    std::memmove(buffer, buffer + 1, n);
    buffer[n] = 0;
    return n;
}

char* PlugIn_GetStringResource(int number, char* buffer, short capacity) {
    if (capacity <= 0) return nullptr;
    buffer[0] = 0;
    unsigned char text[256];
    HardGetPString(number, text);
    ptocs(text);
    std::strncpy(buffer, reinterpret_cast<const char*>(text), static_cast<size_t>(capacity));
    buffer[capacity - 1] = 0;
    return buffer;
}

short LoadIndString(short list, short index, char* buffer, short capacity) {
    int number = static_cast<int>(static_cast<uint32_t>(static_cast<uint16_t>(list)) << 16 |
                                  static_cast<uint16_t>(index));
    if (!PlugIn_GetStringResource(number, buffer, capacity)) return 0;
    return static_cast<short>(std::strlen(buffer));
}
