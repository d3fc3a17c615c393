// Shared by the command's suites: the host's unit preference and the label
// of a settings record.
#ifndef CAPOCHORDS_TESTS_COMMAND_H
#define CAPOCHORDS_TESTS_COMMAND_H

#include "hostsim/document.h"
#include "settings.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace testing_support {

constexpr uint32_t kUnitPreference = 0x70666770;  // pfgp, number 0

// The unit preference as the host keeps it: 66 bytes, the unit at byte 30.
inline void putUnitPreference(int16_t unit) {
    std::vector<uint8_t> record(66, 0xEE);
    std::memcpy(record.data() + 30, &unit, sizeof unit);
    hostsim::doc::put(kUnitPreference, {0, 0, 0}, record);
}

inline void setLabel(CapoSettings& s, const std::u16string& text) {
    std::memset(s.label, 0, sizeof s.label);
    std::memcpy(s.label, text.data(), std::min<size_t>(text.size(), 255) * 2);
}

inline std::u16string labelOf(const CapoSettings& s) {
    return std::u16string(reinterpret_cast<const char16_t*>(s.label));
}

}  // namespace testing_support

#endif
