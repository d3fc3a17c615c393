/*
 * Our stand-in for the part of Core Foundation that the plug-in uses, for
 * platforms that have no Core Foundation. On macOS the framework's own header
 * is found first and this folder is not on the include path.
 *
 * Behaviour follows Apple's: reference-counted objects released with
 * CFRelease, "Create"/"Copy" results owned by the caller, "Get" results not.
 */
#ifndef CAPOCHORDS_PLATFORM_COREFOUNDATION_H
#define CAPOCHORDS_PLATFORM_COREFOUNDATION_H

#include <stdarg.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef signed char SInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint16_t UniChar;
typedef long CFIndex;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFTypeID;
typedef uint32_t CFStringEncoding;
typedef unsigned char* StringPtr;
typedef const unsigned char* ConstStringPtr;

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFBundle* CFBundleRef;
typedef const struct __CFDictionary* CFDictionaryRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex loc, CFIndex len) {
    CFRange r;
    r.location = loc;
    r.length = len;
    return r;
}

typedef enum {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
} CFComparisonResult;

enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingInvalidId = 0xffffffffU
};

enum { kCFURLPOSIXPathStyle = 0 };
typedef CFIndex CFURLPathStyle;

#define kCFAllocatorDefault ((CFAllocatorRef)0)
#define kCFNotFound ((CFIndex)-1)

/* Objects */
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
CFIndex CFGetRetainCount(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFURLGetTypeID(void);
CFTypeID CFBundleGetTypeID(void);

/* Strings */
CFStringRef __CFStringMakeConstantString(const char* cStr);
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")

CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr,
                                      CFStringEncoding encoding);
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars,
                                         CFIndex numChars);
CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                     CFStringRef format, ...);
CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc,
                                                 CFDictionaryRef formatOptions,
                                                 CFStringRef format, va_list arguments);
CFIndex CFStringGetLength(CFStringRef theString);
void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer);
CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex maxBufLen, CFIndex* usedBufLen);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
Boolean CFStringGetPascalString(CFStringRef theString, StringPtr buffer, CFIndex bufferSize,
                                CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);
SInt32 CFStringGetIntValue(CFStringRef str);
CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2,
                                   CFOptionFlags compareOptions);

/* URLs */
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* buffer,
                                                 CFIndex bufLen, Boolean isDirectory);
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase,
                                         UInt8* buffer, CFIndex maxBufLen);
CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle);

/* Bundles */
extern const CFStringRef kCFBundleExecutableKey;
extern const CFStringRef kCFBundleIdentifierKey;
extern const CFStringRef kCFBundleDevelopmentRegionKey;

CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef bundleID);
CFBundleRef CFBundleGetMainBundle(void);
void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);
CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);
CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef resourceName,
                                 CFStringRef resourceType, CFStringRef subDirName);
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName);

#ifdef __cplusplus
}
#endif

#endif
