// Reference counting and type identification.
#include "cfobject.h"

using cfimpl::obj;

extern "C" CFTypeRef CFRetain(CFTypeRef cf) {
    if (cf && !obj(cf)->immortal) obj(cf)->refs.fetch_add(1, std::memory_order_relaxed);
    return cf;
}

extern "C" void CFRelease(CFTypeRef cf) {
    if (!cf || obj(cf)->immortal) return;
    if (obj(cf)->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete obj(cf);
}

extern "C" CFIndex CFGetRetainCount(CFTypeRef cf) {
    return cf ? obj(cf)->refs.load(std::memory_order_relaxed) : 0;
}

extern "C" CFTypeID CFGetTypeID(CFTypeRef cf) { return cf ? obj(cf)->type : 0; }
extern "C" CFTypeID CFStringGetTypeID(void) { return cfimpl::kString; }
extern "C" CFTypeID CFURLGetTypeID(void) { return cfimpl::kURL; }
extern "C" CFTypeID CFBundleGetTypeID(void) { return cfimpl::kBundle; }
