// Bundle folders made at test time: temporary folders, copies of built
// bundles with their string tables replaced, and small made-up bundles.
#ifndef CAPOCHORDS_TESTS_BUNDLES_H
#define CAPOCHORDS_TESTS_BUNDLES_H

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace testing_support {

namespace fs = std::filesystem;

// A new folder under the system's temporary folder, removed with its content.
class TempDir {
  public:
    TempDir() {
        std::string tmpl = (fs::temp_directory_path() / "capochords-test-XXXXXX").string();
        if (mkdtemp(tmpl.data())) path_ = tmpl;
        EXPECT_FALSE(path_.empty()) << "no temporary folder";
    }
    ~TempDir() {
        std::error_code ec;
        if (!path_.empty()) fs::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

inline void writeFile(const std::string& path, const std::string& bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(out.good()) << path;
}

// An Info.plist in the XML form Apple writes.
inline std::string infoPlist(const std::map<std::string, std::string>& values) {
    std::string s =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n<dict>\n";
    for (const auto& kv : values)
        s += "\t<key>" + kv.first + "</key>\n\t<string>" + kv.second + "</string>\n";
    return s + "</dict>\n</plist>\n";
}

// Copies a built bundle into `parent` and removes its string tables; answers
// the copy's folder. Tables are then put back with `putTable`.
inline std::string copyBundleWithoutTables(const std::string& bundle, const std::string& parent) {
    fs::path target = fs::path(parent) / fs::path(bundle).filename();
    std::error_code ec;
    fs::create_directories(parent, ec);
    fs::copy(bundle, target, fs::copy_options::recursive, ec);
    EXPECT_FALSE(ec) << ec.message();
    for (const auto& e : fs::directory_iterator(target / "Contents" / "Resources", ec))
        if (e.path().extension() == ".lproj") fs::remove(e.path() / "Localizable.strings", ec);
    return target.string();
}

inline void putTable(const std::string& bundle, const std::string& language, const std::string& bytes) {
    writeFile(bundle + "/Contents/Resources/" + language + ".lproj/Localizable.strings", bytes);
}

// A table entry in the old-style form: "key" = "value";
inline std::string entry(const std::string& key, const std::string& value) {
    return "\"" + key + "\" = \"" + value + "\";\n";
}

// Sets one locale variable for the test's lifetime and clears the others.
class Locale {
  public:
    Locale(const char* lcAll, const char* lcMessages = nullptr, const char* lang = nullptr) {
        set("LC_ALL", lcAll);
        set("LC_MESSAGES", lcMessages);
        set("LANG", lang);
    }
    ~Locale() {
        for (const char* v : {"LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(v);
    }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

  private:
    static void set(const char* var, const char* value) {
        if (value) setenv(var, value, 1);
        else unsetenv(var);
    }
};

// A bundle object for a folder (null when the platform makes none).
inline CFBundleRef bundleAt(const std::string& dir) {
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(dir.c_str()), static_cast<CFIndex>(dir.size()), true);
    CFBundleRef b = CFBundleCreate(nullptr, url);
    CFRelease(url);
    return b;
}

inline CFStringRef str(const char* s) {
    return CFStringCreateWithCString(nullptr, s, kCFStringEncodingUTF8);
}

// The text of a Core Foundation string as UTF-16.
inline std::u16string units(CFStringRef s) {
    std::u16string u(static_cast<size_t>(CFStringGetLength(s)), u'\0');
    if (!u.empty())
        CFStringGetCharacters(s, CFRangeMake(0, CFStringGetLength(s)), reinterpret_cast<UniChar*>(&u[0]));
    return u;
}

}  // namespace testing_support

#endif
