// The application's 8-bit text encoding. Our western localizations all use
// Mac Roman, as the real host does for them.
#include <Carbon/Carbon.h>

extern "C" TextEncoding GetApplicationTextEncoding(void) { return kCFStringEncodingMacRoman; }
