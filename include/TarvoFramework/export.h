/// @file
/// Symbol visibility for the TarvoFramework shared library.
///
/// The library is built with hidden visibility; only what is marked with
/// TARVO_EXPORT is part of its binary interface.
#ifndef TARVOFRAMEWORK_EXPORT_H_
#define TARVOFRAMEWORK_EXPORT_H_

#if defined(TARVO_BUILDING_LIBRARY)
#define TARVO_EXPORT __attribute__((visibility("default")))
#else
#define TARVO_EXPORT
#endif

#endif  // TARVOFRAMEWORK_EXPORT_H_
