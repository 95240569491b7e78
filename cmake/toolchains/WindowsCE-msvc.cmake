# SPDX-License-Identifier: MIT
# Microsoft's compilers for Windows CE on ARM, through CMake's own support of the system. UNTESTED: none of these
# compilers was at hand; wince/README.md tells what was built and run instead.
#
# With Visual Studio 2012 or later and an SDK of Windows Embedded Compact 2013, whose name the generator needs:
#   cmake -G "Visual Studio 12 2013" -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/WindowsCE-msvc.cmake
#         -DNUV1MATH_CE_SDK=<name of the SDK> -DNUV1MATH_BUILD_TESTS=OFF -DNUV1MATH_BUILD_EXAMPLES=OFF
# With an older SDK, in a shell whose PATH, INCLUDE and LIB are those of its compiler for ARM:
#   cmake -G "NMake Makefiles" -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/WindowsCE-msvc.cmake
#         -DNUV1MATH_CE_VERSION=5.0 ...

set(NUV1MATH_CE_VERSION 8.0 CACHE STRING "Version of Windows CE")
set(NUV1MATH_CE_SDK "" CACHE STRING "Name of the SDK, for the generators of Visual Studio")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES NUV1MATH_CE_VERSION NUV1MATH_CE_SDK)

set(CMAKE_SYSTEM_NAME WindowsCE)
set(CMAKE_SYSTEM_VERSION ${NUV1MATH_CE_VERSION})
set(CMAKE_SYSTEM_PROCESSOR arm)
if(CMAKE_GENERATOR MATCHES "Visual Studio")
  set(CMAKE_GENERATOR_TOOLSET CE800)
  set(CMAKE_GENERATOR_PLATFORM "${NUV1MATH_CE_SDK}")
endif()
