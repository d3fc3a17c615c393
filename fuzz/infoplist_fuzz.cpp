// Any bytes as an Info.plist. The reader answers a dictionary or refuses the
// whole text (an empty dictionary), both forms agree, and what it keeps
// survives being written back out: the dictionary's own plist, with every
// special character escaped, reads as the same dictionary.
#include "cfobject.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void check(bool ok) {
    if (!ok) __builtin_trap();
}

std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
    }
    return out;
}

std::string written(const cfimpl::InfoDictionary& d) {
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
    for (const auto& [key, value] : d)
        out += "<key>" + escaped(key) + "</key>\n<string>" + escaped(value) + "</string>\n";
    return out + "</dict>\n</plist>\n";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    cfimpl::InfoDictionary d{{"stale", "entry"}};
    const bool ok = cfimpl::parseInfoPlist(text, d);
    if (!ok) check(d.empty());
    check(cfimpl::parseInfoPlist(text) == d);

    cfimpl::InfoDictionary again;
    check(cfimpl::parseInfoPlist(written(d), again));
    check(again == d);
    return 0;
}
