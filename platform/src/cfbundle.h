// Internal bundle record of the Core Foundation stand-in.
#ifndef CAPOCHORDS_PLATFORM_CFBUNDLE_H
#define CAPOCHORDS_PLATFORM_CFBUNDLE_H

#include "cfobject.h"

#include <mutex>
#include <vector>

struct __CFBundle : cfimpl::Object {
    __CFBundle() : Object(cfimpl::kBundle) {}
    ~__CFBundle() override;
    std::string path;           // the bundle folder, canonical
    std::string resourcesDir;   // where Info.plist's siblings live
    std::string infoPlistPath;
    std::string executablePath; // empty when Info.plist names none
    bool isMain = false;
    cfimpl::InfoDictionary info;
    std::map<std::string, CFStringRef> infoStrings;  // values handed out, owned here
    void* handle = nullptr;     // dlopen handle once the executable is loaded
    std::mutex lock;
    // Localized string tables by table name, read once.
    std::map<std::string, std::map<std::u16string, std::u16string>> tables;
    // The .lproj folder name (without extension) picked at the first lookup,
    // "" when the bundle has none that fits; fixed for the bundle's life.
    std::string localization;
    bool localizationChosen = false;
};

namespace cfimpl {
// The bundle of a folder, made once per canonical path and retained for the caller.
CFBundleRef bundleForPath(const std::string& dir);
bool isDirectory(const std::string& path);
bool isFile(const std::string& path);
}  // namespace cfimpl

#endif
