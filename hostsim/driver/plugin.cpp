// Loads a plug-in bundle the way the host does.
#include "hostsim/plugin.h"

#include <CoreFoundation/CoreFoundation.h>

#include <dlfcn.h>
#include <cstdlib>
#include <filesystem>

namespace hostsim {
namespace fs = std::filesystem;

std::string besideProgram(std::initializer_list<const char*> relative) {
    std::error_code ec;
    const fs::path program = fs::read_symlink("/proc/self/exe", ec);
    const fs::path folder = ec ? fs::current_path(ec) : program.parent_path();
    for (const char* r : relative)
        if (fs::exists(folder / r, ec)) return (folder / r).lexically_normal().string();
    return relative.size() ? (folder / *relative.begin()).lexically_normal().string()
                           : folder.string();
}

std::string defaultBundlePath() {
    return besideProgram({"../lib/capochords/CapoChords.bundle", "../CapoChords.bundle"});
}

namespace {

std::string executableOf(const std::string& bundle) {
    std::string path = bundle;
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.c_str()), static_cast<CFIndex>(path.size()),
        true);
    CFBundleRef b = url ? CFBundleCreate(nullptr, url) : nullptr;
    if (url) CFRelease(url);
    if (!b) return "";
    std::string exe;
    auto name =
        static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(b, kCFBundleExecutableKey));
    char buf[1024];
    if (name && CFStringGetCString(name, buf, sizeof buf, kCFStringEncodingUTF8))
        exe = bundle + "/Contents/MacOS/" + buf;
    CFRelease(b);
    return exe;
}

} // namespace

Plugin::Plugin(const std::string& bundlePath, bool freshCopy) : bundle_(bundlePath) {
    if (freshCopy) {
        std::string tmpl = (fs::temp_directory_path() / "zemlo-plugin-XXXXXX").string();
        if (!mkdtemp(tmpl.data())) {
            error_ = "cannot make a temporary folder";
            return;
        }
        tempDir_ = tmpl;
        fs::path target = fs::path(tempDir_) / fs::path(bundlePath).filename();
        std::error_code ec;
        fs::copy(bundlePath, target, fs::copy_options::recursive, ec);
        if (ec) {
            error_ = "cannot copy the bundle: " + ec.message();
            return;
        }
        bundle_ = target.string();
    }
    image_ = executableOf(bundle_);
    if (image_.empty()) {
        error_ = "no bundle with an executable at " + bundle_;
        return;
    }
    handle_ = dlopen(image_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) error_ = dlerror();
}

Plugin::~Plugin() {
    // The image stays loaded, as with the real host, which never unloads a
    // plug-in: what it keeps for the process (bundles, strings) stays
    // reachable. A fresh copy's files may go; its mapping stays valid.
    if (!tempDir_.empty()) {
        std::error_code ec;
        fs::remove_all(tempDir_, ec);
    }
}

void* Plugin::symbol(const char* name) const {
    return handle_ ? dlsym(handle_, name) : nullptr;
}

} // namespace hostsim
