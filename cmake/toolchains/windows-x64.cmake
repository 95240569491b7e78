# SPDX-License-Identifier: MIT
# 64-bit Windows. wine runs its programs.

set(NUV_TRIPLE x86_64-w64-mingw32)
set(NUV_PROCESSOR AMD64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-session)
