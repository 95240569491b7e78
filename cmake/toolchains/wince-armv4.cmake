# SPDX-License-Identifier: MIT
# The compiler of the Windows CE image (see wince/README.md) and of the program that runs the tests against it: Debian's
# for soft-float ARM under Linux. The emulated processor has no floating-point hardware: it ends a program at its
# first floating-point instruction, where the emulator's default one would run it.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -cpu pxa255 -L /usr/arm-linux-gnueabi)
