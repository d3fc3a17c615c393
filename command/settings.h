// The command's settings record, and the copy remembered between runs.
#ifndef CAPOCHORDS_COMMAND_SETTINGS_H
#define CAPOCHORDS_COMMAND_SETTINGS_H

#include <cstdint>

struct CapoSettings {
    uint16_t confirmed = 0;        // the dialog was closed with OK
    int16_t capoFret = 1;
    int16_t vertOffset = 64;       // EVPU
    char vertOffsetText[256] = {}; // the distance as last shown or typed, 8-bit
    int16_t showLabel = 1;
    unsigned short label[256] = {};  // UTF-16, zero-terminated
    int16_t setChordFlag = 0;
    uint16_t removeMode = 0;
};

// The last confirmed settings, for as long as the host runs. Only the
// invocation writes it.
extern CapoSettings stickySettings;

#endif
