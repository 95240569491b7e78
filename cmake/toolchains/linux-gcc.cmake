# SPDX-License-Identifier: MIT
# GCC for the machine itself.

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
