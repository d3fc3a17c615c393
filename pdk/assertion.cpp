// Programming faults: say where and what, then stop.
#include "zemlopdk.h"

#include <cstdio>
#include <cstdlib>

void zemlo_assert_failed(const char* function, const char* file, const char* expression) {
    std::fprintf(stderr, "Assertion failed: %s, function %s, file %s.\n", expression, function,
                 file);
    std::abort();
}
