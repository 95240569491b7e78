# SPDX-License-Identifier: MIT
# 64-bit ARM. Its processors have fused multiply-add, which compilers use unless told otherwise.

set(NUV_TRIPLE aarch64-linux-gnu)
set(NUV_PROCESSOR aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/${NUV_TRIPLE})
