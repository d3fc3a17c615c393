// What the host knows of the plug-in's side of the boundary, each fact once:
// the menu item record it hands out, the controls of the settings dialog, the
// kinds of alert, the rooms it gives the plug-in's texts.
//
// Written from the host's side only, never from the plug-in's headers: a
// plug-in that puts a field at the wrong offset must meet a host that
// disagrees, not one that shares its mistake.
#ifndef CAPOCHORDS_HOSTSIM_BOUNDARY_H
#define CAPOCHORDS_HOSTSIM_BOUNDARY_H

#include <cstddef>
#include <cstdint>

namespace hostsim {

// Texts the host gives room for, in UTF-16 units with the terminator.
constexpr size_t kMenuTextRoom = 128;   // each text of the menu item record
constexpr size_t kUnitCaptionRoom = 64; // the caption naming the distance's unit
constexpr size_t kTextRoom = 256;       // alerts, labels, unit names

// The host's menu item record. The plug-in fills the first 772 bytes; the
// host's record is longer, and the rest must come back as it went in.
struct MenuItemRecord {
    uint16_t itemText[kMenuTextRoom];
    uint16_t secondText[kMenuTextRoom];
    uint16_t undoText[kMenuTextRoom];
    uint16_t word1;
    uint16_t word2;
    uint8_t hostOnly[252];
};
constexpr size_t kMenuItemFilled = 772; // bytes the plug-in may write
static_assert(sizeof(MenuItemRecord) == 1024, "the host's record");
static_assert(offsetof(MenuItemRecord, hostOnly) == kMenuItemFilled, "the host's part");

// The settings dialog's controls by number, as its description lays them out.
namespace control {
constexpr int16_t kOk = 1;
constexpr int16_t kCancel = 2;
constexpr int16_t kFret = 4;
constexpr int16_t kDistance = 6;
constexpr int16_t kUnitCaption = 7;
constexpr int16_t kChordFlag = 8;
constexpr int16_t kShowLabel = 9;
constexpr int16_t kLabel = 10;
constexpr int16_t kRemove = 11;
} // namespace control

// Kinds of alert (message-box styles) the plug-in shows.
namespace alert {
constexpr uint16_t kQuestion = 0x21; // OK and Cancel
constexpr uint16_t kWarning = 0x30;
constexpr uint16_t kNotice = 0x40;
} // namespace alert

} // namespace hostsim

#endif
