/*
 * Our stand-in for the one Carbon call the plug-in uses.
 */
#ifndef CAPOCHORDS_PLATFORM_CARBON_H
#define CAPOCHORDS_PLATFORM_CARBON_H

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 TextEncoding;

/* The application's 8-bit text encoding: Mac Roman for the western languages. */
TextEncoding GetApplicationTextEncoding(void);

#ifdef __cplusplus
}
#endif

#endif
