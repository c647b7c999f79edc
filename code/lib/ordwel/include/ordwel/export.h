// SPDX-License-Identifier: MIT
#ifndef ORDWEL_EXPORT_H
#define ORDWEL_EXPORT_H

/// \file
/// The export macro of the library.

/// \def ORDWEL_API
/// Marks what the library exports; everything else is hidden (-fvisibility=hidden). A static
/// build defines ORDWEL_STATIC for its users as well.
#if defined(ORDWEL_STATIC)
#define ORDWEL_API
#elif defined(_WIN32) || defined(__CYGWIN__)
#if defined(ORDWEL_BUILDING)
#define ORDWEL_API __declspec(dllexport)
#else
#define ORDWEL_API __declspec(dllimport)
#endif
#else
#define ORDWEL_API __attribute__((visibility("default")))
#endif

#endif
