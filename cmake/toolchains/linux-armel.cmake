# SPDX-License-Identifier: MIT
# ARM v5TE without floating-point hardware. The emulated processor, an XScale, has none either: it ends a program at
# its first floating-point instruction, where the emulator's default one would run it.

set(NUV_TRIPLE arm-linux-gnueabi)
set(NUV_PROCESSOR arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -cpu pxa255 -L /usr/${NUV_TRIPLE})
# Calls between code of this compiler and of one from before 2017 do not occur.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
