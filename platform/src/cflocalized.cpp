// Localized resources of a bundle: the language it speaks, where a resource
// file lies, and its string tables.
#include "cfbundle.h"

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace cfimpl {
namespace {

const char kLproj[] = ".lproj";

// The .lproj folders of the resources folder, by name without the extension.
std::vector<std::string> localizations(const std::string& resourcesDir) {
    std::vector<std::string> names;
    DIR* d = opendir(resourcesDir.c_str());
    if (!d) return names;
    while (dirent* e = readdir(d)) {
        std::string n = e->d_name;
        size_t ext = sizeof kLproj - 1;
        if (n.size() > ext && n.compare(n.size() - ext, ext, kLproj) == 0 &&
            isDirectory(resourcesDir + "/" + n))
            names.push_back(n.substr(0, n.size() - ext));
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

bool sameName(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// Folder names that may hold a language: "de_DE.UTF-8@euro" gives de_DE,
// de-DE, de and the old name German.
std::vector<std::string> candidates(std::string code) {
    code = code.substr(0, code.find_first_of(".@"));
    std::replace(code.begin(), code.end(), '-', '_');
    std::vector<std::string> out;
    if (code.empty() || code == "C" || code == "POSIX") return out;
    out.push_back(code);
    std::string language = code.substr(0, code.find('_'));
    if (language != code) {
        out.push_back(language + "-" + code.substr(language.size() + 1));
        out.push_back(language);
    }
    static const char* const kOldNames[][2] = {
        {"en", "English"}, {"de", "German"}, {"fr", "French"}, {"es", "Spanish"},
        {"it", "Italian"}, {"nl", "Dutch"},  {"ja", "Japanese"}};
    for (const auto& o : kOldNames)
        if (sameName(language, o[0])) out.push_back(o[1]);
    return out;
}

// The first candidate that names one of the folders, or "".
std::string pick(const std::vector<std::string>& wanted, const std::vector<std::string>& have) {
    for (const std::string& w : wanted)
        for (const std::string& h : have)
            if (sameName(w, h)) return h;
    return "";
}

// The user's language, as the process locale gives it (LC_ALL, then
// LC_MESSAGES, then LANG: the first one set decides).
std::string preferredLanguage() {
    for (const char* var : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* v = std::getenv(var);
        if (v && *v) return v;
    }
    return "";
}

std::string developmentRegion(const __CFBundle* b) {
    auto it = b->info.find("CFBundleDevelopmentRegion");
    return it != b->info.end() && !it->second.empty() ? it->second : "en";
}

std::string chosenLocalization(__CFBundle* b, const std::vector<std::string>& have);

// The language the application itself speaks, when it has localizations:
// a plug-in then follows it.
std::string hostLocalization(const __CFBundle* self) {
    CFBundleRef main = CFBundleGetMainBundle();
    if (!main || main == self) return "";
    std::vector<std::string> have = localizations(main->resourcesDir);
    return have.empty() ? "" : chosenLocalization(main, have);
}

// Chosen once per bundle: the host application's language, else the user's,
// among the bundle's folders; else its development region, else English,
// else the first it has.
std::string chosenLocalization(__CFBundle* b, const std::vector<std::string>& have) {
    {
        std::lock_guard<std::mutex> hold(b->lock);
        if (b->localizationChosen) return b->localization;
    }
    std::string host = hostLocalization(b);  // outside our lock: it takes the host's
    std::lock_guard<std::mutex> hold(b->lock);
    if (!b->localizationChosen) {
        std::string l = host.empty() ? "" : pick(candidates(host), have);
        if (l.empty()) l = pick(candidates(preferredLanguage()), have);
        if (l.empty()) l = pick(candidates(developmentRegion(b)), have);
        if (l.empty()) l = pick(candidates("en"), have);
        // Still nothing: the first language it has, as macOS does.
        for (size_t i = 0; l.empty() && i < have.size(); ++i)
            if (have[i] != "Base") l = have[i];
        b->localization = l;
        b->localizationChosen = true;
    }
    return b->localization;
}

// Where a resource file is looked for, in order: the resources folder itself,
// the chosen language, Base, the other languages, the development region last.
std::vector<std::string> searchFolders(__CFBundle* b, const std::string& subDir) {
    std::vector<std::string> have = localizations(b->resourcesDir);
    std::string chosen = chosenLocalization(b, have);
    std::string development = pick(candidates(developmentRegion(b)), have);
    std::string sub = subDir.empty() ? "" : "/" + subDir;
    std::vector<std::string> dirs{b->resourcesDir + sub};
    auto lproj = [&](const std::string& l) { return b->resourcesDir + "/" + l + kLproj + sub; };
    if (!chosen.empty()) dirs.push_back(lproj(chosen));
    for (const std::string& l : have)
        if (l == "Base" && l != chosen) dirs.push_back(lproj(l));
    for (const std::string& l : have)
        if (l != chosen && l != "Base" && l != development) dirs.push_back(lproj(l));
    if (!development.empty() && development != chosen && development != "Base")
        dirs.push_back(lproj(development));
    return dirs;
}

std::string resourcePath(__CFBundle* b, CFStringRef name, CFStringRef type, CFStringRef subDir) {
    std::string file = utf8(name);
    if (type && CFStringGetLength(type) > 0) file += "." + utf8(type);
    if (file.empty()) return "";
    for (const std::string& dir : searchFolders(b, subDir ? utf8(subDir) : ""))
        if (isFile(dir + "/" + file)) return dir + "/" + file;
    return "";
}

StringsTable readTable(const std::string& path) {
    StringsTable t;
    std::ifstream in(path, std::ios::binary);
    if (!in) return t;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    parseStringsTable(bytes.str(), t);  // a table that does not parse is empty
    return t;
}

}  // namespace
}  // namespace cfimpl

extern "C" CFURLRef CFBundleCopyResourceURL(CFBundleRef b, CFStringRef resourceName,
                                            CFStringRef resourceType, CFStringRef subDirName) {
    if (!b || !resourceName) return nullptr;
    std::string path = cfimpl::resourcePath(b, resourceName, resourceType, subDirName);
    if (path.empty()) return nullptr;
    return CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.c_str()), static_cast<CFIndex>(path.size()), false);
}

extern "C" CFStringRef CFBundleCopyLocalizedString(CFBundleRef b, CFStringRef key, CFStringRef value,
                                                   CFStringRef tableName) {
    if (!key) return static_cast<CFStringRef>(CFRetain(value ? value : CFSTR("")));
    if (!b) return nullptr;
    std::string table = tableName && CFStringGetLength(tableName) > 0 ? cfimpl::utf8(tableName)
                                                                      : "Localizable";
    bool cached;
    {
        std::lock_guard<std::mutex> hold(b->lock);
        cached = b->tables.count(table) != 0;
    }
    if (!cached) {
        // Exactly one file serves: the one the resource search finds first.
        CFStringRef name = CFStringCreateWithCString(nullptr, table.c_str(), kCFStringEncodingUTF8);
        std::string path = name ? cfimpl::resourcePath(b, name, CFSTR("strings"), nullptr) : "";
        if (name) CFRelease(name);
        cfimpl::StringsTable read = path.empty() ? cfimpl::StringsTable() : cfimpl::readTable(path);
        std::lock_guard<std::mutex> hold(b->lock);
        b->tables.emplace(table, std::move(read));
    }
    {
        std::lock_guard<std::mutex> hold(b->lock);
        const cfimpl::StringsTable& t = b->tables[table];
        auto found = t.find(cfimpl::units(key));
        if (found != t.end()) return cfimpl::makeString(found->second);
    }
    CFStringRef fallback = value && CFStringGetLength(value) > 0 ? value : key;
    return static_cast<CFStringRef>(CFRetain(fallback));
}
