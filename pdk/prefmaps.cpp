// The preference maps and the assembling and splitting of composites.
#include "prefmaps.h"

#include <cstring>

namespace {

// The ten maps, one row per field in the host's order. An element is loaded
// where its map first names it, and every later row naming it is served from
// that one load, so the order of the rows is the order of the host calls.
// pfDP
constexpr PREFERENCE_LOCATION_MAPRECORD EDTDistancePrefs_MAP_ARRAY[36] = {
    {{'2', '1'}, 0, 0, 0, 3, 2, MAPCONV_NONE},
    {{'2', '1'}, 0, 0, 2, 5, 2, MAPCONV_NONE},
    {{'5', '9'}, 0, 0, 4, 3, 2, MAPCONV_NONE},
    {{'5', '9'}, 0, 0, 6, 4, 2, MAPCONV_NONE},
    {{'2', '2'}, 0, 0, 8, 1, 2, MAPCONV_NONE},
    {{'2', '2'}, 0, 0, 10, 2, 2, MAPCONV_NONE},
    {{'2', '2'}, 0, 0, 12, 3, 2, MAPCONV_NONE},
    {{'6', '7'}, 0, 0, 14, 3, 2, MAPCONV_NONE},
    {{'6', '7'}, 0, 0, 16, 4, 2, MAPCONV_NONE},
    {{'6', '8'}, 0, 0, 18, 4, 4, MAPCONV_HIWORD_FIRST},
    {{'2', '0'}, 0, 0, 22, 1, 2, MAPCONV_NONE},
    {{'2', '0'}, 0, 0, 24, 2, 2, MAPCONV_NONE},
    {{'1', '3'}, 0, 0, 26, 3, 2, MAPCONV_NONE},
    {{'1', '9'}, 0, 0, 28, 0, 2, MAPCONV_NONE},
    {{'1', '9'}, 0, 0, 30, 1, 2, MAPCONV_NONE},
    {{'6', '8'}, 0, 0, 32, 0, 2, MAPCONV_NONE},
    {{'2', '1'}, 0, 0, 34, 1, 2, MAPCONV_NONE},
    {{'6', '8'}, 0, 0, 36, 1, 2, MAPCONV_NONE},
    {{'2', '1'}, 0, 0, 38, 0, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 40, 5, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 42, 0, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 44, 2, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 46, 1, 2, MAPCONV_NONE},
    {{'2', '1'}, 0, 0, 48, 4, 2, MAPCONV_NONE},
    {{'3', '9'}, 0, 0, 50, 0, 2, MAPCONV_NONE},
    {{'3', '9'}, 0, 0, 52, 1, 2, MAPCONV_NONE},
    {{'6', '5'}, 0, 0, 54, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '7'}, 0, 0, 58, 1, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 60, 5, 2, MAPCONV_NONE},
    {{'6', '7'}, 0, 0, 62, 0, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 64, 3, 2, MAPCONV_NONE},
    {{'1', '8'}, 0, 0, 66, 4, 2, MAPCONV_NONE},
    {{'1', '4'}, 0, 0, 68, 4, 2, MAPCONV_NONE},
    {{'1', '4'}, 0, 0, 70, 5, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 74, 5, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 4, 72, 0, 2, MAPCONV_NONE},
};

// pfSI
constexpr PREFERENCE_LOCATION_MAPRECORD EDTSizePrefs_MAP_ARRAY[23] = {
    {{'6', '7'}, 0, 0, 0, 2, 2, MAPCONV_NONE},
    {{'5', '8'}, 0, 0, 2, 4, 2, MAPCONV_NONE},
    {{'6', '8'}, 0, 0, 4, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '2'}, 0, 0, 8, 4, 4, MAPCONV_HIWORD_FIRST},
    {{'0', '3'}, 0, 0, 12, 3, 2, MAPCONV_NONE},
    {{'2', '3'}, 0, 0, 14, 0, 2, MAPCONV_NONE},
    {{'1', '4'}, 0, 0, 16, 2, 2, MAPCONV_NONE},
    {{'6', '4'}, 0, 0, 18, 1, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 20, 3, 2, MAPCONV_NONE},
    {{'5', '8'}, 0, 0, 22, 5, 2, MAPCONV_NONE},
    {{'5', '9'}, 0, 0, 24, 0, 2, MAPCONV_NONE},
    {{'5', '9'}, 0, 0, 26, 1, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 28, 2, 2, MAPCONV_NONE},
    {{'5', '9'}, 0, 0, 30, 2, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 32, 3, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 0, 34, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'2', '0'}, 0, 0, 38, 4, 2, MAPCONV_NONE},
    {{'2', '0'}, 0, 0, 40, 5, 2, MAPCONV_NONE},
    {{'0', '3'}, 0, 0, 42, 2, 2, MAPCONV_NONE},
    {{'2', '1'}, 0, 0, 44, 2, 2, MAPCONV_NONE},
    {{'6', '4'}, 0, 0, 46, 5, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 0, 48, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '9'}, 0, 0, 52, 0, 2, MAPCONV_NONE},
};

// pfMS
constexpr PREFERENCE_LOCATION_MAPRECORD EDTMiscDocPrefs_MAP_ARRAY[49] = {
    {{'3', '6'}, 0, 0, 0, 4, 2, MAPCONV_NONE},
    {{'0', '3'}, 0, 0, 2, 4, 2, MAPCONV_NONE},
    {{'0', '3'}, 0, 0, 4, 5, 2, MAPCONV_NONE},
    {{'0', '9'}, 0, 0, 6, 5, 2, MAPCONV_NONE},
    {{'3', '6'}, 0, 0, 8, 2, 2, MAPCONV_NONE},
    {{'3', '6'}, 0, 0, 10, 3, 2, MAPCONV_NONE},
    {{'3', '6'}, 0, 0, 12, 1, 2, MAPCONV_INVERT},
    {{'4', '1'}, 0, 0, 14, 0, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 0, 16, 1, 2, MAPCONV_NONE},
    {{'2', '0'}, 0, 0, 18, 0, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 20, 1, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 22, 0, 2, MAPCONV_NONE},
    {{'1', '3'}, 0, 0, 24, 2, 2, MAPCONV_NONE},
    {{'1', '5'}, 0, 0, 26, 4, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 28, 0, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 30, 4, 2, MAPCONV_NONE},
    {{'4', '4'}, 0, 0, 32, 4, 2, MAPCONV_NONE},
    {{'2', '7'}, 0, 0, 34, 2, 2, MAPCONV_NONE},
    {{'1', '2'}, 0, 0, 36, 2, 2, MAPCONV_NONE},
    {{'1', '2'}, 0, 0, 38, 3, 2, MAPCONV_NONE},
    {{'1', '2'}, 0, 0, 40, 1, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 2, 42, 1, 2, MAPCONV_NONE},
    {{'2', '3'}, 0, 0, 44, 1, 2, MAPCONV_NONE},
    {{'1', '9'}, 0, 0, 46, 2, 2, MAPCONV_NONE},
    {{'1', '9'}, 0, 0, 48, 3, 2, MAPCONV_NONE},
    {{'3', '1'}, 0, 0, 50, 5, 2, MAPCONV_NONE},
    {{'1', '9'}, 0, 0, 52, 4, 2, MAPCONV_BYTE},
    {{'1', '9'}, 0, 0, 54, 5, 2, MAPCONV_BYTE},
    {{'4', '4'}, 0, 0, 56, 3, 2, MAPCONV_NONE},
    {{'0', '5'}, 0, 0, 58, 4, 2, MAPCONV_NONE},
    {{'0', '5'}, 0, 0, 60, 5, 2, MAPCONV_NONE},
    {{'1', '3'}, 0, 0, 62, 0, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 0, 64, 5, 2, MAPCONV_NONE},
    {{'1', '2'}, 0, 0, 66, 4, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 68, 1, 2, MAPCONV_NONE},
    {{'9', '3'}, 0, 0, 70, 4, 2, MAPCONV_NONE},
    {{'7', '6'}, 0, 0, 72, 4, 2, MAPCONV_NONE},
    {{'9', '3'}, 0, 0, 74, 2, 2, MAPCONV_NONE},
    {{'7', '6'}, 0, 0, 76, 3, 2, MAPCONV_NONE},
    {{'1', '7'}, 0, 0, 78, 5, 2, MAPCONV_NONE},
    {{'2', '3'}, 0, 0, 80, 4, 2, MAPCONV_NONE},
    {{'1', '6'}, 0, 0, 82, 5, 2, MAPCONV_NONE},
    {{'6', '2'}, 0, 0, 84, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '2'}, 0, 0, 88, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'4', '1'}, 0, 2, 92, 0, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 0, 94, 2, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 1, 96, 3, 4, MAPCONV_HIWORD_FIRST},
    {{'7', '6'}, 0, 0, 100, 5, 2, MAPCONV_NONE},
    {{'F', 'I'}, 10, 0, 102, 2, 2, MAPCONV_NONE},
};

// pfRP
constexpr PREFERENCE_LOCATION_MAPRECORD EDTRepeatPrefs_MAP_ARRAY[20] = {
    {{'7', '0'}, 0, 0, 0, 0, 2, MAPCONV_NONE},
    {{'7', '0'}, 0, 0, 2, 1, 2, MAPCONV_NONE},
    {{'7', '0'}, 0, 0, 4, 2, 2, MAPCONV_NONE},
    {{'7', '0'}, 0, 0, 6, 3, 2, MAPCONV_NONE},
    {{'7', '0'}, 0, 0, 8, 4, 2, MAPCONV_NONE},
    {{'7', '0'}, 0, 0, 10, 5, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 12, 0, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 14, 1, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 16, 2, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 18, 3, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 20, 4, 2, MAPCONV_NONE},
    {{'7', '1'}, 0, 0, 22, 5, 2, MAPCONV_NONE},
    {{'0', '5'}, 0, 0, 24, 3, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 26, 0, 2, MAPCONV_NONE},
    {{'7', '6'}, 0, 0, 28, 2, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 30, 1, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 32, 2, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 34, 3, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 36, 4, 2, MAPCONV_NONE},
    {{'7', '2'}, 0, 0, 38, 5, 2, MAPCONV_NONE},
};

// pfPB
constexpr PREFERENCE_LOCATION_MAPRECORD EDTPianoBracePrefs_MAP_ARRAY[11] = {
    {{'6', '5'}, 0, 0, 0, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '0'}, 0, 0, 4, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '5'}, 0, 0, 8, 4, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '0'}, 0, 0, 12, 4, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '1'}, 0, 0, 16, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '1'}, 0, 0, 20, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '1'}, 0, 0, 24, 4, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '0'}, 0, 0, 28, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'6', '4'}, 0, 0, 32, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'4', '5'}, 0, 0, 36, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'4', '5'}, 0, 0, 40, 4, 4, MAPCONV_HIWORD_FIRST},
};

// pfSS
constexpr PREFERENCE_LOCATION_MAPRECORD EDTSmartShapePrefs_MAP_ARRAY[43] = {
    {{'9', '2'}, 0, 0, 0, 0, 2, MAPCONV_NONE},
    {{'9', '2'}, 0, 0, 2, 1, 2, MAPCONV_NONE},
    {{'9', '2'}, 0, 0, 4, 2, 2, MAPCONV_NONE},
    {{'9', '2'}, 0, 0, 6, 3, 2, MAPCONV_NONE},
    {{'F', 'I'}, 11, 0, 8, 0, 2, MAPCONV_NONE},
    {{'F', 'I'}, 11, 0, 10, 1, 2, MAPCONV_NONE},
    {{'F', 'I'}, 12, 0, 12, 4, 2, MAPCONV_NONE},
    {{'F', 'I'}, 11, 0, 14, 4, 2, MAPCONV_NONE},
    {{'F', 'I'}, 12, 0, 16, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'F', 'I'}, 12, 0, 20, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'F', 'I'}, 11, 0, 24, 2, 2, MAPCONV_NONE},
    {{'F', 'I'}, 11, 0, 26, 5, 2, MAPCONV_NONE},
    {{'1', '2'}, 0, 0, 28, 5, 2, MAPCONV_BYTE},
    {{'1', '1'}, 0, 0, 32, 5, 2, MAPCONV_BYTE},
    {{'6', '9'}, 0, 0, 36, 4, 2, MAPCONV_BYTE},
    {{'6', '9'}, 0, 0, 40, 5, 2, MAPCONV_BYTE},
    {{'6', '9'}, 0, 0, 44, 2, 2, MAPCONV_BYTE},
    {{'6', '9'}, 0, 0, 48, 3, 2, MAPCONV_BYTE},
    {{'5', '1'}, 0, 0, 52, 5, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 0, 54, 5, 2, MAPCONV_NONE},
    {{'5', '1'}, 0, 0, 56, 4, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 0, 58, 4, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 60, 4, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 1, 62, 0, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 1, 64, 1, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 1, 66, 2, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 1, 68, 3, 2, MAPCONV_NONE},
    {{'5', '1'}, 0, 0, 70, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'5', '1'}, 0, 0, 74, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'5', '3'}, 0, 0, 78, 2, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 0, 80, 0, 2, MAPCONV_NONE},
    {{'5', '3'}, 0, 0, 82, 1, 2, MAPCONV_NONE},
    {{'9', '3'}, 0, 0, 84, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'5', '3'}, 0, 0, 88, 3, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 90, 5, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 92, 0, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 94, 1, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 96, 2, 2, MAPCONV_NONE},
    {{'5', '0'}, 0, 0, 98, 3, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 1, 100, 0, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 1, 102, 1, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 1, 104, 2, 2, MAPCONV_NONE},
    {{'9', '7'}, 0, 1, 106, 3, 2, MAPCONV_NONE},
};

// pfPL
constexpr PREFERENCE_LOCATION_MAPRECORD EDTPlaybackPrefs_MAP_ARRAY[7] = {
    {{'1', '3'}, 0, 0, 0, 1, 2, MAPCONV_NONE},
    {{'3', '9'}, 0, 0, 2, 3, 2, MAPCONV_NONE},
    {{'3', '6'}, 0, 0, 4, 0, 2, MAPCONV_NONE},
    {{'3', '6'}, 0, 0, 6, 5, 2, MAPCONV_NONE},
    {{'3', '7'}, 0, 0, 8, 0, 2, MAPCONV_NONE},
    {{'3', '7'}, 0, 0, 10, 1, 2, MAPCONV_NONE},
    {{'3', '7'}, 0, 0, 12, 2, 2, MAPCONV_NONE},
};

// pfEX
constexpr PREFERENCE_LOCATION_MAPRECORD EDTExtractPrefs_MAP_ARRAY[25] = {
    {{'7', '7'}, 0, 4, 0, 1, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 4, 2, 2, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 4, 4, 3, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 4, 6, 4, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 4, 8, 5, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 10, 0, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 12, 1, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 14, 2, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 16, 3, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 18, 4, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 5, 20, 5, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 22, 0, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 24, 1, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 26, 2, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 28, 3, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 30, 4, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 6, 32, 5, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 34, 0, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 36, 1, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 38, 2, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 40, 3, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 46, 4, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 7, 48, 5, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 8, 42, 0, 2, MAPCONV_NONE},
    {{'7', '7'}, 0, 8, 44, 1, 2, MAPCONV_NONE},
};

// pfPF
constexpr PREFERENCE_LOCATION_MAPRECORD EDTPageFormatPrefsScore_MAP_ARRAY[22] = {
    {{'1', '4'}, 0, 0, 0, 0, 4, MAPCONV_HIWORD_FIRST},
    {{'1', '5'}, 0, 0, 4, 2, 4, MAPCONV_HIWORD_FIRST},
    {{'3', '9'}, 0, 0, 8, 2, 2, MAPCONV_NONE},
    {{'1', '6'}, 0, 0, 10, 0, 2, MAPCONV_NONE},
    {{'1', '6'}, 0, 0, 12, 1, 2, MAPCONV_NONE},
    {{'1', '6'}, 0, 0, 14, 2, 2, MAPCONV_NONE},
    {{'1', '6'}, 0, 0, 16, 3, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 18, 0, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 20, 1, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 22, 2, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 24, 3, 2, MAPCONV_NONE},
    {{'1', '7'}, 0, 0, 26, 0, 2, MAPCONV_NONE},
    {{'1', '7'}, 0, 0, 28, 1, 2, MAPCONV_NONE},
    {{'1', '7'}, 0, 0, 30, 3, 2, MAPCONV_NONE},
    {{'1', '7'}, 0, 0, 32, 2, 2, MAPCONV_NONE},
    {{'0', '1'}, 0, 0, 34, 4, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 36, 4, 2, MAPCONV_NONE},
    {{'1', '3'}, 0, 0, 38, 5, 2, MAPCONV_NONE},
    {{'1', '3'}, 0, 0, 40, 4, 2, MAPCONV_NONE},
    {{'0', '2'}, 0, 0, 42, 5, 2, MAPCONV_NONE},
    {{'0', '3'}, 0, 0, 44, 0, 2, MAPCONV_NONE},
    {{'0', '3'}, 0, 0, 46, 1, 2, MAPCONV_NONE},
};

// pf05
constexpr PREFERENCE_LOCATION_MAPRECORD EDT2005Prefs_MAP_ARRAY[11] = {
    {{'6', '9'}, 0, 0, 0, 1, 2, MAPCONV_NONE},
    {{'2', '0'}, 0, 0, 2, 3, 2, MAPCONV_NONE},
    {{'3', '9'}, 0, 0, 4, 5, 2, MAPCONV_NONE},
    {{'3', '8'}, 0, 0, 6, 5, 2, MAPCONV_NONE},
    {{'3', '9'}, 0, 0, 8, 4, 2, MAPCONV_NONE},
    {{'2', '3'}, 0, 0, 10, 5, 2, MAPCONV_NONE},
    {{'5', '6'}, 0, 0, 12, 4, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 2, 14, 2, 2, MAPCONV_NONE},
    {{'4', '1'}, 0, 2, 16, 3, 2, MAPCONV_NONE},
    {{'9', '4'}, 0, 0, 18, 4, 2, MAPCONV_NONE},
    {{'9', '4'}, 0, 2, 20, 2, 2, MAPCONV_NONE},
};

constexpr int32_t extentOf(const PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows) {
    int32_t end = 0;
    for (int16_t i = 0; i < rows; ++i) {
        const int32_t e = map[i].offset + (map[i].size == 4 ? 4 : 2);
        if (e > end) end = e;
    }
    return end;
}

#define ROWS(m) static_cast<int16_t>(sizeof(m) / sizeof((m)[0]))
#define COMPOSITE(tag, number, m) {tag, number, m, ROWS(m), extentOf(m, ROWS(m))}

const PREF_COMPOSITE kComposites[] = {
    COMPOSITE(0x70663035, -1, EDT2005Prefs_MAP_ARRAY),
    COMPOSITE(0x70664450, -1, EDTDistancePrefs_MAP_ARRAY),
    COMPOSITE(0x70664558, -1, EDTExtractPrefs_MAP_ARRAY),
    COMPOSITE(0x70664D53, -1, EDTMiscDocPrefs_MAP_ARRAY),
    COMPOSITE(0x70665042, -1, EDTPianoBracePrefs_MAP_ARRAY),
    COMPOSITE(0x70665046, 0, EDTPageFormatPrefsScore_MAP_ARRAY),
    COMPOSITE(0x7066504C, -1, EDTPlaybackPrefs_MAP_ARRAY),
    COMPOSITE(0x70665250, -1, EDTRepeatPrefs_MAP_ARRAY),
    COMPOSITE(0x70665349, -1, EDTSizePrefs_MAP_ARRAY),
    COMPOSITE(0x70665353, -1, EDTSmartShapePrefs_MAP_ARRAY),
};

// The smart-shape map's fields reach byte 108, twelve bytes beyond the sum of
// its field sizes: six of its 16-bit fields sit four bytes apart. Its size
// query answers how far the fields reach, so that a buffer sized by the query
// holds every field.
static_assert(extentOf(EDTSmartShapePrefs_MAP_ARRAY, ROWS(EDTSmartShapePrefs_MAP_ARRAY)) == 108,
              "smart-shape fields reach byte 108");
static_assert(ROWS(EDTMiscDocPrefs_MAP_ARRAY) <= kMaxMapRows, "marks hold the longest map");

const PREF_ARRAY kArrays[] = {
    {0x70664744, 0x6F743739, 1, false, 0, 0},   // pfGD: ot79
    {0x70664747, 0x6F743838, 11, false, 0, 0},  // pfGG: ot88
    {0x70664762, 0x6F743938, 1, true, 1, 4},    // pfGb: ot98
    {0x70664764, 0x6F743830, 1, false, 0, 0},   // pfGd: ot80
    {0x70664773, 0x6F743931, 1, true, 1, 1},    // pfGs: ot91, number 1 only, element 0
    {0x70664D4D, 0x6F743235, 2, false, 0, 0},   // pfMM: ot25
    {0x70664E44, 0x6F743034, 1, false, 0, 0},   // pfND: ot04
    {0x70664E64, 0x6F743636, 1, false, 0, 0},   // pfNd: ot66
    {0x70665046, 0x6F743737, 4, true, 1, 1},    // pfPF: ot77, number 1 only (0 is the composite)
    {0x70665343, 0x6F743532, 2, false, 0, 0},   // pfSC: ot52
    {0x7066534E, 0x6F743430, 1, true, 1, 128},  // pfSN: ot40
    {0x70665350, 0x6F743934, 3, false, 0, 0},   // pfSP: ot94
    {0x7066536C, 0x6F743236, 1, true, 1, 15},   // pfSl: ot26
    {0x70665443, 0x6F743836, 5, false, 0, 0},   // pfTC: ot86
    {0x70665449, 0x6F743834, 4, false, 0, 0},   // pfTI: ot84
    {0x70665458, 0x6F743738, 9, false, 0, 0},   // pfTX: ot78
    {0x70665470, 0x6F743835, 4, false, 0, 0},   // pfTp: ot85
    {0x70665473, 0x6F743930, 1, true, 1, 9},    // pfTs: ot90
};

uint16_t loadU16(const void* p, size_t at) {
    uint16_t v;
    std::memcpy(&v, static_cast<const uint8_t*>(p) + at, sizeof v);
    return v;
}
uint32_t loadU32(const void* p, size_t at) {
    uint32_t v;
    std::memcpy(&v, static_cast<const uint8_t*>(p) + at, sizeof v);
    return v;
}
void storeU16(void* p, size_t at, uint16_t v) {
    std::memcpy(static_cast<uint8_t*>(p) + at, &v, sizeof v);
}
void storeU32(void* p, size_t at, uint32_t v) {
    std::memcpy(static_cast<uint8_t*>(p) + at, &v, sizeof v);
}

int32_t fieldBytes(const PREFERENCE_LOCATION_MAPRECORD& r) { return r.size == 4 ? 4 : 2; }

bool sameElement(const PREFERENCE_LOCATION_MAPRECORD& a, const PREFERENCE_LOCATION_MAPRECORD& b) {
    return a.elementTag[0] == b.elementTag[0] && a.elementTag[1] == b.elementTag[1] &&
           a.number1 == b.number1 && a.number2 == b.number2;
}

// A word index the 12-byte element holds, for a 32-bit field the pair's.
bool wordsFit(const PREFERENCE_LOCATION_MAPRECORD& r) {
    return r.word >= 0 && r.word + (r.size == 4 ? 1 : 0) < kPrefElementWords;
}

// Loads a row's element into words (cleared first, so a missing element reads
// as zeros); true when the host had it.
bool loadElement(const PREFERENCE_LOCATION_MAPRECORD& r, uint16_t (&words)[kPrefElementWords]) {
    EDataID id{static_cast<int16_t>(r.number1 ? r.number1 : kPrefElementFirst), r.number2, 0};
    std::memset(words, 0, sizeof words);
    int32_t size = kPrefElementBytes;
    return FX_LoadEData(static_cast<int32_t>(prefElementTag(r)), &id, words, &size, FXT_VERSION) != 0;
}

void serveLoad(const PREFERENCE_LOCATION_MAPRECORD& r, const uint16_t (&words)[kPrefElementWords],
               void* buffer, int32_t capacity) {
    if (!wordsFit(r) || r.offset < 0 || r.offset + fieldBytes(r) > capacity) return;
    if (r.size == 4)
        storeU32(buffer, static_cast<size_t>(r.offset),
                 makePrefsFourbyte(words[r.word], words[r.word + 1], r.conversion));
    else
        storeU16(buffer, static_cast<size_t>(r.offset), prefLoadWord(words[r.word], r.conversion));
}

// Puts a row's field into words; true when a word changed.
bool serveSave(const PREFERENCE_LOCATION_MAPRECORD& r, uint16_t (&words)[kPrefElementWords],
               const void* buffer, int32_t size) {
    if (!wordsFit(r) || r.offset < 0 || r.offset + fieldBytes(r) > size) return false;
    if (r.size == 4) {
        const uint32_t value = loadU32(buffer, static_cast<size_t>(r.offset));
        if (value == makePrefsFourbyte(words[r.word], words[r.word + 1], r.conversion)) return false;
        const uint16_t before[2] = {words[r.word], words[r.word + 1]};
        makePrefsTwobytes(value, &words[r.word], &words[r.word + 1], r.conversion);
        return before[0] != words[r.word] || before[1] != words[r.word + 1];
    }
    const uint16_t w = prefSaveWord(loadU16(buffer, static_cast<size_t>(r.offset)), r.conversion);
    if (w == words[r.word]) return false;
    words[r.word] = w;
    return true;
}

}  // namespace

const PREF_COMPOSITE* prefComposites(size_t* count) {
    *count = sizeof kComposites / sizeof kComposites[0];
    return kComposites;
}

const PREF_ARRAY* prefArrays(size_t* count) {
    *count = sizeof kArrays / sizeof kArrays[0];
    return kArrays;
}

namespace {

// Every composite and array preference has a p f tag: chord records, texts
// and the rest, which reach load and save far more often, pass by the tables
// without a look.
bool mayBeMapped(uint32_t tag) { return (tag >> 16) == 0x7066; }

}  // namespace

bool mapPrefStruct(uint32_t tag, int16_t number, const PREFERENCE_LOCATION_MAPRECORD** map,
                   int16_t* rows) {
    if (mayBeMapped(tag)) {
        for (const PREF_COMPOSITE& c : kComposites) {
            if (c.tag != tag) continue;
            if (c.number >= 0 && c.number != number) return false;  // outputs as they were
            *map = c.map;
            *rows = c.rows;
            return true;
        }
    }
    *map = nullptr;
    *rows = 0;
    return false;
}

bool mapPrefTag(uint32_t tag, int16_t number, uint32_t* elementTag, int16_t* count,
                int16_t* start) {
    *elementTag = 0;
    *count = 0;
    *start = 0;
    if (!mayBeMapped(tag)) return true;
    for (const PREF_ARRAY& a : kArrays) {
        if (a.tag != tag) continue;
        if (a.numbered && (number < a.low || number > a.high)) return false;
        *elementTag = a.elementTag;
        *count = a.count;
        *start = a.numbered ? static_cast<int16_t>(number - 1) : 0;
        return true;
    }
    return true;
}

uint32_t makePrefsFourbyte(uint16_t first, uint16_t second, MAP_ARRAY_CONVERSION conversion) {
    switch (conversion) {
    case MAPCONV_HIWORD_FIRST: return (static_cast<uint32_t>(first) << 16) | second;
    case MAPCONV_LOWORD_FIRST: return (static_cast<uint32_t>(second) << 16) | first;
    default: return 0;
    }
}

void makePrefsTwobytes(uint32_t value, uint16_t* first, uint16_t* second,
                       MAP_ARRAY_CONVERSION conversion) {
    const uint16_t high = static_cast<uint16_t>(value >> 16);
    const uint16_t low = static_cast<uint16_t>(value & 0xFFFF);
    switch (conversion) {
    case MAPCONV_HIWORD_FIRST:
        *first = high;
        *second = low;
        break;
    case MAPCONV_LOWORD_FIRST:
        *first = low;
        *second = high;
        break;
    default:
        break;
    }
}

uint16_t prefLoadWord(uint16_t word, MAP_ARRAY_CONVERSION conversion) {
    switch (conversion) {
    case MAPCONV_INVERT: return word == 0 ? 1 : 0;
    case MAPCONV_BYTE: return word & 0xFF;
    default: return word;
    }
}

uint16_t prefSaveWord(uint16_t field, MAP_ARRAY_CONVERSION conversion) {
    switch (conversion) {
    case MAPCONV_INVERT: return field == 0 ? 1 : 0;
    case MAPCONV_BYTE: return static_cast<uint16_t>(static_cast<int16_t>(static_cast<int8_t>(field & 0xFF)));
    default: return field;
    }
}

int32_t fragmentStructExtent(const PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows) {
    return extentOf(map, rows);
}

int16_t fragmentStructLoad(void* buffer, int32_t* size, const PREFERENCE_LOCATION_MAPRECORD* map,
                           int16_t rows) {
    if (!size) return 0;
    const int32_t capacity = *size;
    *size = fragmentStructExtent(map, rows);
    if (!buffer) return 1;  // a size query
    if (rows > kMaxMapRows) rows = kMaxMapRows;
    bool handled[kMaxMapRows] = {};
    for (int16_t i = 0; i < rows; ++i) {
        if (handled[i]) continue;
        uint16_t words[kPrefElementWords];
        loadElement(map[i], words);
        for (int16_t j = i; j < rows; ++j) {
            if (handled[j] || !sameElement(map[i], map[j])) continue;
            serveLoad(map[j], words, buffer, capacity);
            handled[j] = true;
        }
    }
    return 1;
}

int16_t fragmentStructSave(const void* buffer, int32_t size,
                           const PREFERENCE_LOCATION_MAPRECORD* map, int16_t rows) {
    if (!buffer || size < 2 * rows) return 0;
    if (rows > kMaxMapRows) rows = kMaxMapRows;
    bool handled[kMaxMapRows] = {};
    for (int16_t i = 0; i < rows; ++i) {
        if (handled[i]) continue;
        uint16_t words[kPrefElementWords];
        const bool loaded = loadElement(map[i], words);
        bool changed = false;
        for (int16_t j = i; j < rows; ++j) {
            if (handled[j] || !sameElement(map[i], map[j])) continue;
            changed = serveSave(map[j], words, buffer, size) || changed;
            handled[j] = true;
        }
        // Never write back an element we could not read: its other words are
        // not ours to zero.
        if (changed && loaded) {
            EDataID id{static_cast<int16_t>(map[i].number1 ? map[i].number1 : kPrefElementFirst),
                        map[i].number2, 0};
            FX_SaveEData(static_cast<int32_t>(prefElementTag(map[i])), &id, words,
                         kPrefElementBytes, FXT_VERSION);
        }
    }
    return 1;
}
