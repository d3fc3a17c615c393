// zemlo-host validate: runs every check of the validator against a plug-in
// bundle, each in a child process under a watchdog, and reports them.
#ifndef CAPOCHORDS_VALIDATE_VALIDATE_H
#define CAPOCHORDS_VALIDATE_VALIDATE_H

#include "check.h"

#include <string>

namespace validate {

struct Options {
    Plan plan;
    std::string only;  // a regular expression over check names; empty: all
    std::string json;  // where to write the report as JSON; empty: nowhere
    bool list = false; // name the checks only
};

// Reads the options after `validate`. False with *error set when they do not parse.
bool parseOptions(int argc, char** argv, int first, Options* options, std::string* error);
// Runs the checks and prints the report; the process's exit status.
int run(const Options& options);

}  // namespace validate

#endif
