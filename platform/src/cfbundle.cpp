// Bundles: a folder with an Info.plist, its executable image and its resources.
#include "cfbundle.h"

#include <dlfcn.h>
#include <link.h>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace cfimpl {
namespace {

std::mutex gRegistryLock;
// Bundles made so far, by canonical folder. Entries leave when released.
std::map<std::string, __CFBundle*>& registry() {
    static auto* r = new std::map<std::string, __CFBundle*>();
    return *r;
}

std::string canonical(const std::string& p) {
    char buf[PATH_MAX];
    if (realpath(p.c_str(), buf)) return buf;
    return p;
}

std::string parentOf(const std::string& p) {
    auto slash = p.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return p.substr(0, slash);
}

bool endsWith(const std::string& s, const char* tail) {
    size_t n = strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

void describe(__CFBundle* b) {
    if (isDirectory(b->path + "/Contents")) {
        b->infoPlistPath = b->path + "/Contents/Info.plist";
        b->resourcesDir = b->path + "/Contents/Resources";
    } else if (isDirectory(b->path + "/Resources")) {
        b->infoPlistPath = b->path + "/Resources/Info.plist";
        b->resourcesDir = b->path + "/Resources";
    } else {
        b->infoPlistPath = b->path + "/Info.plist";
        b->resourcesDir = b->path;
    }
    b->info = readInfoPlist(b->infoPlistPath);
    auto exe = b->info.find("CFBundleExecutable");
    if (exe != b->info.end() && !exe->second.empty()) {
        b->executablePath = isDirectory(b->path + "/Contents")
                                ? b->path + "/Contents/MacOS/" + exe->second
                                : b->path + "/" + exe->second;
    }
}

// The folder of the bundle that holds a loaded image, or "" when it sits in none.
std::string enclosingBundle(const std::string& imagePath) {
    std::string dir = parentOf(imagePath);
    if (endsWith(dir, "/Contents/MacOS")) return parentOf(parentOf(dir));
    if (isFile(dir + "/Info.plist")) {
        InfoDictionary d = readInfoPlist(dir + "/Info.plist");
        auto exe = d.find("CFBundleExecutable");
        if (exe != d.end() && exe->second == imagePath.substr(imagePath.find_last_of('/') + 1))
            return dir;
    }
    return "";
}

int collectImage(dl_phdr_info* info, size_t, void* data) {
    if (info->dlpi_name && info->dlpi_name[0])
        static_cast<std::vector<std::string>*>(data)->push_back(info->dlpi_name);
    return 0;
}

std::string executableOfProcess() {
    char buf[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) return "";
    buf[n] = 0;
    return buf;
}

}  // namespace

bool isDirectory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool isFile(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

CFBundleRef bundleForPath(const std::string& dir) {
    if (!isDirectory(dir)) return nullptr;
    std::string key = canonical(dir);
    std::lock_guard<std::mutex> hold(gRegistryLock);
    auto it = registry().find(key);
    if (it != registry().end()) {
        CFRetain(it->second);
        return it->second;
    }
    auto* b = new __CFBundle();
    b->path = key;
    describe(b);
    registry()[key] = b;
    return b;
}

}  // namespace cfimpl

__CFBundle::~__CFBundle() {
    {
        std::lock_guard<std::mutex> hold(cfimpl::gRegistryLock);
        auto it = cfimpl::registry().find(path);
        if (it != cfimpl::registry().end() && it->second == this) cfimpl::registry().erase(it);
    }
    for (auto& kv : infoStrings) CFRelease(kv.second);
    // The loaded image stays: code from it may still be in use, as on macOS.
}

const CFStringRef kCFBundleExecutableKey = CFSTR("CFBundleExecutable");
const CFStringRef kCFBundleIdentifierKey = CFSTR("CFBundleIdentifier");
const CFStringRef kCFBundleDevelopmentRegionKey = CFSTR("CFBundleDevelopmentRegion");

extern "C" CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
    if (!url) return nullptr;
    return cfimpl::bundleForPath(url->path);
}

extern "C" CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef b, CFStringRef key) {
    if (!b || !key) return nullptr;
    std::string k = cfimpl::utf8(key);
    std::lock_guard<std::mutex> hold(b->lock);
    auto v = b->info.find(k);
    if (v == b->info.end()) return nullptr;
    auto cached = b->infoStrings.find(k);
    if (cached != b->infoStrings.end()) return cached->second;
    CFStringRef s = CFStringCreateWithCString(nullptr, v->second.c_str(), kCFStringEncodingUTF8);
    if (s) b->infoStrings[k] = s;
    return s;
}

extern "C" CFStringRef CFBundleGetIdentifier(CFBundleRef b) {
    return static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(b, kCFBundleIdentifierKey));
}

extern "C" CFURLRef CFBundleCopyBundleURL(CFBundleRef b) {
    if (!b) return nullptr;
    return CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(b->path.c_str()),
        static_cast<CFIndex>(b->path.size()), true);
}

extern "C" CFBundleRef CFBundleGetMainBundle(void) {
    static CFBundleRef main = [] {
        std::string exe = cfimpl::executableOfProcess();
        std::string dir = cfimpl::parentOf(exe);
        std::string folder = cfimpl::endsWith(dir, "/Contents/MacOS")
                                 ? cfimpl::parentOf(cfimpl::parentOf(dir))
                                 : dir;
        CFBundleRef b = cfimpl::bundleForPath(folder);
        if (b) {
            b->immortal = true;
            b->isMain = true;
            if (b->executablePath.empty()) b->executablePath = exe;
        }
        return b;
    }();
    return main;
}

extern "C" CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef bundleID) {
    if (!bundleID) return nullptr;
    std::string want = cfimpl::utf8(bundleID);
    auto matches = [&](CFBundleRef b) {
        auto it = b->info.find("CFBundleIdentifier");
        return it != b->info.end() && it->second == want;
    };
    if (CFBundleRef main = CFBundleGetMainBundle(); main && matches(main)) return main;
    {
        std::lock_guard<std::mutex> hold(cfimpl::gRegistryLock);
        for (auto& kv : cfimpl::registry()) {
            if (!matches(kv.second)) continue;
            // A "Get" result outlives its creator's release, as on macOS.
            kv.second->immortal = true;
            return kv.second;
        }
    }
    std::vector<std::string> images;
    dl_iterate_phdr(cfimpl::collectImage, &images);
    for (const std::string& image : images) {
        std::string folder = cfimpl::enclosingBundle(image);
        if (folder.empty()) continue;
        CFBundleRef b = cfimpl::bundleForPath(folder);
        if (!b) continue;
        if (matches(b)) {
            b->immortal = true;  // a "Get" result: the process keeps it
            return b;
        }
        CFRelease(b);
    }
    return nullptr;
}

extern "C" void* CFBundleGetFunctionPointerForName(CFBundleRef b, CFStringRef functionName) {
    if (!b || !functionName) return nullptr;
    std::string name = cfimpl::utf8(functionName);
    if (b->isMain) return dlsym(RTLD_DEFAULT, name.c_str());
    void* handle;
    {
        std::lock_guard<std::mutex> hold(b->lock);
        if (!b->handle && !b->executablePath.empty())
            b->handle = dlopen(b->executablePath.c_str(), RTLD_NOW | RTLD_LOCAL);
        handle = b->handle;
    }
    if (!handle) return nullptr;
    void* sym = dlsym(handle, name.c_str());
    if (!sym) return nullptr;
    // dlsym also searches the image's dependencies; a bundle answers for itself only.
    link_map* lm = nullptr;
    Dl_info where;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &lm) != 0 || !lm || dladdr(sym, &where) == 0) return nullptr;
    Dl_info self;
    if (dladdr(reinterpret_cast<void*>(lm->l_ld), &self) == 0) return nullptr;
    return where.dli_fbase == self.dli_fbase ? sym : nullptr;
}
