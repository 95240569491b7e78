# SPDX-License-Identifier: MIT
# CMake 3.25 does not know this system. It has no shared libraries.

set_property(GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS FALSE)
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
