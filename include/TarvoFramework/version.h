/// @file
/// The library's version symbols.
///
/// Both have C linkage, so `nm -D libTarvoFramework.so` lists them by name and
/// tools that scan binaries for "@(#)" find the version string.
#ifndef TARVOFRAMEWORK_VERSION_H_
#define TARVOFRAMEWORK_VERSION_H_

#include "TarvoFramework/export.h"

extern "C" {

/// The library's version as a number: exactly 1.0. Constant; readable from
/// any thread.
TARVO_EXPORT extern const double TarvoFrameworkVersionNumber;

/// "@(#)PROGRAM:TarvoFramework  PROJECT:TarvoFramework-1" followed by one
/// newline and the terminating NUL (two blanks stand before "PROJECT").
/// Constant, owned by the library; readable from any thread.
TARVO_EXPORT extern const unsigned char TarvoFrameworkVersionString[];

}  // extern "C"

#endif  // TARVOFRAMEWORK_VERSION_H_
