// compiler.h: predefined macros of Microsoft's compilers for the device. GCC includes it before every source.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_WINCE_COMPILER_H
#define NUV_WINCE_COMPILER_H

#define _WIN32 1
#define _WIN32_WCE 0x420 // Windows CE .NET 4.2
#define UNDER_CE 0x420

// The library uses it to export. A symbol that is visible in the ELF file becomes an export of the image.
#define __declspec(a_Attribute) __attribute__((visibility("default")))

#endif // NUV_WINCE_COMPILER_H
