// The library's version symbols.
#include "TarvoFramework/version.h"

extern "C" {

const double TarvoFrameworkVersionNumber = 1.0;

const unsigned char TarvoFrameworkVersionString[] =
    "@(#)PROGRAM:TarvoFramework  PROJECT:TarvoFramework-1\n";

}  // extern "C"
