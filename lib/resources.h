/*
 * resources.h: the plug-in's localized string table. Texts are fetched by
 * string number from the "Localizable" table of the plug-in's own bundle,
 * which is found on disk at the first request. A number missing from the
 * table comes back as its key text (its number in decimal).
 */
#ifndef CAPOCHORDS_LIB_RESOURCES_H
#define CAPOCHORDS_LIB_RESOURCES_H

#include <CoreFoundation/CoreFoundation.h>

/* UTF-16 text of a string number into `buffer`, cut to `capacity` - 1 units
   and terminated; the last unit of the room is zeroed too. Null, with the
   buffer untouched, when the capacity is 0 (or less). */
unsigned short* PlugIn_GetStringResource(int number, unsigned short* buffer, short capacity);
/* The same as zero-terminated 8-bit text in the application's text encoding;
   a text the encoding cannot hold whole comes back empty. The rest of the
   room is filled with zero bytes. */
char* PlugIn_GetStringResource(int number, char* buffer, short capacity);
/* 8-bit text of index `index` (taken without sign) of list `list`; answers its
   length. */
short LoadIndString(short list, short index, char* buffer, short capacity);
/* The text of a string number, which the caller releases; the key text when
   the table lacks it (and "Missing Localizable.strings" shown when the bundle
   has no table at all). */
CFStringRef CopyPlugInStringResource(int number);
/* Length-prefixed 8-bit text of a string number into a 256-byte buffer. */
unsigned char* HardGetPString(int number, unsigned char* buffer);
/* Turns length-prefixed text into zero-terminated text in place; answers the length. */
short ptocs(unsigned char* buffer);
/* The plug-in's bundle, found once and kept; null while it cannot be found. */
CFBundleRef GetPluginBundle();
/* A new reference to the nearest folder above the plug-in's image that is a
   bundle with a value for `key` (the executable key when null), or null. */
CFBundleRef dlbundle(CFStringRef key);

#endif
