// Internal object model of the Core Foundation stand-in.
#ifndef CAPOCHORDS_PLATFORM_CFOBJECT_H
#define CAPOCHORDS_PLATFORM_CFOBJECT_H

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>

namespace cfimpl {

enum TypeId : CFTypeID { kString = 7, kURL = 29, kBundle = 31, kDictionary = 18 };

struct Object {
    explicit Object(CFTypeID t) : type(t) {}
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    const CFTypeID type;
    std::atomic<long> refs{1};
    bool immortal = false;  // constant strings and the main bundle
};

inline Object* obj(CFTypeRef cf) { return const_cast<Object*>(static_cast<const Object*>(cf)); }

}  // namespace cfimpl

struct __CFString : cfimpl::Object {
    __CFString() : Object(cfimpl::kString) {}
    explicit __CFString(std::u16string u) : Object(cfimpl::kString), units(std::move(u)) {}
    std::u16string units;
};

struct __CFURL : cfimpl::Object {
    __CFURL() : Object(cfimpl::kURL) {}
    std::string path;  // absolute or as given, without a trailing slash (but "/")
    bool directory = false;
};

namespace cfimpl {

// Text codecs shared by the string functions.
// Decoding answers false for text that is invalid in the encoding.
bool decodeMacRoman(const char* bytes, size_t n, std::u16string& out);
bool decodeUtf8(const char* bytes, size_t n, std::u16string& out);
// Encoding a single code point in Mac Roman: the byte, or -1 when it has none.
int macRomanByteFor(char32_t cp);
// UTF-16 to UTF-8, replacing nothing: false on an unpaired surrogate.
bool encodeUtf8(const std::u16string& units, std::string& out);

CFStringRef makeString(std::u16string units);
const std::u16string& units(CFStringRef s);
std::string utf8(CFStringRef s);  // lossy only for unpaired surrogates ('?')

// Core Foundation's formatting (cfformat.cpp): null for a format it refuses.
CFStringRef formatString(CFStringRef format, va_list arguments);

// A plist dictionary flattened to its string-valued top-level keys.
using InfoDictionary = std::map<std::string, std::string>;
// Reads the XML property list form; an unreadable file gives an empty dictionary.
InfoDictionary readInfoPlist(const std::string& path);
// The same from text already in memory.
InfoDictionary parseInfoPlist(const std::string& text);
// False, with `out` empty, when the text is no well-formed property list.
bool parseInfoPlist(const std::string& text, InfoDictionary& out);

// A localized string table: key text to text.
using StringsTable = std::map<std::u16string, std::u16string>;
// Reads a table file's bytes (stringstable.cpp). False, with `out` empty, for
// a table that does not parse: it then serves as an empty table.
bool parseStringsTable(const std::string& bytes, StringsTable& out);

}  // namespace cfimpl

#endif
