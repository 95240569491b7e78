# SPDX-License-Identifier: MIT
# Clang for the machine itself.

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
