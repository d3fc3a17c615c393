// File URLs, as far as bundles need them: a path and whether it names a folder.
#include "cfobject.h"

#include <cstring>

extern "C" CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* buffer,
                                                            CFIndex bufLen, Boolean isDirectory) {
    if (!buffer || bufLen < 0) return nullptr;
    auto* url = new __CFURL();
    url->path.assign(reinterpret_cast<const char*>(buffer), static_cast<size_t>(bufLen));
    auto nul = url->path.find('\0');
    if (nul != std::string::npos) url->path.resize(nul);
    while (url->path.size() > 1 && url->path.back() == '/') url->path.pop_back();
    url->directory = isDirectory != 0;
    return url;
}

extern "C" Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean, UInt8* buffer,
                                                    CFIndex maxBufLen) {
    if (!url || !buffer || maxBufLen <= 0) return false;
    if (static_cast<CFIndex>(url->path.size()) >= maxBufLen) return false;
    std::memcpy(buffer, url->path.c_str(), url->path.size() + 1);
    return true;
}

extern "C" CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
    if (!url) return nullptr;
    return CFStringCreateWithCString(nullptr, url->path.c_str(), kCFStringEncodingUTF8);
}
