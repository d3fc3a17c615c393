/*
 * portable.h: the text and resources library of the plug-in: 8-bit and UTF-16
 * string routines, the UTF-16 string class, and the localized string table.
 */
#ifndef CAPOCHORDS_LIB_PORTABLE_H
#define CAPOCHORDS_LIB_PORTABLE_H

#include "strings16.h"
#include "eu16string.h"
#include "resources.h"

#endif
