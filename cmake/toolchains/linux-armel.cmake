# SPDX-License-Identifier: MIT
# ARM v5TE without floating-point hardware. The emulated processor, a pxa255, has none either: a program ends at its
# first floating-point instruction. The emulator's default processor would execute it.

set(NUV_TRIPLE arm-linux-gnueabi)
set(NUV_PROCESSOR arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -cpu pxa255 -L /usr/${NUV_TRIPLE})
# No notes about calls between code of this compiler and of one from before 2017.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
