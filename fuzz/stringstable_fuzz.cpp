// Any bytes as a string table file: the reader answers a table or refuses the
// whole file, and never reads out of bounds or recurses without end.
#include "cfobject.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    cfimpl::StringsTable t;
    bool ok = cfimpl::parseStringsTable(std::string(reinterpret_cast<const char*>(data), size), t);
    if (!ok && !t.empty()) __builtin_trap();  // a refused table must serve as empty
    cfimpl::parseInfoPlist(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
