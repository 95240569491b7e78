# SPDX-License-Identifier: MIT
# mingw-w64's compilers. The including file sets NUV_TRIPLE and NUV_PROCESSOR.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${NUV_PROCESSOR})
# GoogleTest needs std::mutex, which only the variant with POSIX threads has.
set(CMAKE_C_COMPILER ${NUV_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${NUV_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${NUV_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${NUV_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Link the compiler's run-time library into programs and the library.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static-libgcc)
