// The mapping between MusicXML and the host's records: a <harmony> as the
// bytes of a chord record, MusicXML tenths as EVPU, text block texts as
// plain UTF-8.
#ifndef CAPOCHORDS_HOSTSIM_MUSICXML_MAPPING_H
#define CAPOCHORDS_HOSTSIM_MUSICXML_MAPPING_H

#include "hostsim/score.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace hostsim {
namespace musicxml {

// How this host keeps a chord in the bytes of its record that a capo chord
// copies unchanged (4-7, 10-15, 24-29) and in the sibling keys (0, 2, 20).
//   0-1  key1   ordinal among the staff-measure's chords at the same onset
//   2-3  key2   0
//   4    root step (0 C .. 6 B)         5  root alteration (signed semitones)
//   6    bass step + 1 (0: no bass)     7  bass alteration
//   10   kind (index into the kind table)          11-15  0
//   20-23 key3  onset in 960ths of a quarter note
//   24-27 the chord's number among the file's ordinary <harmony> elements,
//         in file order from 1 (capo chords read back are not counted)
//   28-29 0
// A chord and its capo chord share all three keys; chords at different
// onsets differ in key3, chords at one onset in key1.
struct ChordFields {
    int rootStep = 0;
    int rootAlter = 0;
    int bassStep = -1; // -1: none
    int bassAlter = 0;
    int kind = 0;
    int32_t onset = 0;
    uint32_t harmony = 0;
};
constexpr int kOnsetPerQuarter = 960;
constexpr size_t kRootStepByte = 4, kRootAlterByte = 5, kBassStepByte = 6, kBassAlterByte = 7;
constexpr size_t kKindByte = 10, kHarmonyByte = 24;

ChordFields fieldsOf(const score::ChordRecord& c);
void setFields(score::ChordRecord& c, const ChordFields& f);

// MusicXML tenths and EVPU: a staff space is 10 tenths and 24 EVPU.
int16_t evpuOfTenths(double tenths);
std::string tenthsOf(int16_t evpu);

// A text block's raw text without the host's ^font(...)-style commands, as UTF-8.
std::string plainText(const std::u16string& raw);

} // namespace musicxml
} // namespace hostsim

#endif
