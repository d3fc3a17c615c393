// A binding whose lookup can be told to throw, linked with the forwarders
// alone: shows that a lookup ending by an exception is tried again.
#include "zemlopdk.h"

#include <dlfcn.h>
#include <stdexcept>

namespace {
int gThrows = 0;
}

FXPROCPTR GetFXProc(const char* name) {
    if (gThrows > 0) {
        --gThrows;
        throw std::runtime_error("lookup failed");
    }
    return dlsym(RTLD_DEFAULT, name);
}

extern "C" FX_EXPORT void throwing_binding_throw_next(int n) { gThrows = n; }
extern "C" FX_EXPORT int16_t throwing_binding_window_count(uint32_t ver) {
    return FX_GetWindowCount(ver);
}
