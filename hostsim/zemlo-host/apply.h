// zemlo-host apply: the command on a MusicXML lead sheet, written back out.
#ifndef CAPOCHORDS_HOSTSIM_ZEMLO_HOST_APPLY_H
#define CAPOCHORDS_HOSTSIM_ZEMLO_HOST_APPLY_H

#include "hostsim/driver.h"

#include <string>

namespace zemlo {

struct ApplyOptions {
    hostsim::driver::Answers answers;
    std::string score;                       // empty: the bundled sample lead sheet
    std::string output;                      // empty: <score's name>.capo.musicxml here
    std::string firstNumber, lastNumber;     // --measures, as the score prints them; empty: all
    int firstPosition = 0, lastPosition = 0; // --positions, from 1; 0: all
    int firstStaff = 0, lastStaff = 0;
    bool records = false;  // print every record before and after
    bool autoCapo = false; // --capo auto: the fret the advisor ranks best of 1 to 7
    bool diagrams = false; // a diagram for every capo chord in an open shape
};

// Reads the option at argv[*i] (moving *i past its value). False when it is
// none of apply's or is wrong; *error then says why when it was one.
bool parseApplyOption(int argc, char** argv, int* i, ApplyOptions* a, std::string* error);
// Reads the lead sheet, runs the command once on it and writes the result;
// nothing is written unless the run went through. 0 on success.
int applyCommand(hostsim::driver::InvokeFn invoke, const ApplyOptions& a);

// zemlo-host suggest SCORE: no capo and frets 1 to 7, best first, with the
// key of the shapes and how many chords become open shapes. 0 on success.
int suggestCommand(int argc, char** argv);

} // namespace zemlo

#endif
