# SPDX-License-Identifier: MIT
# 32-bit Windows. Its programs are built but not run.

set(NUV_TRIPLE i686-w64-mingw32)
set(NUV_PROCESSOR x86)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
