# SPDX-License-Identifier: MIT
#
# All flags for floating-point code. Every program and library of this project links nuv_floating_point.
#
# Results are a contract: each double operation is rounded once, in the written order, on every platform.
#   -ffp-contract=off        a*b + c stays two operations. Otherwise a processor with FMA rounds them once.
#   /fp:strict               The same for Microsoft's compilers.
#   -msse2 -mfpmath=sse      32-bit x86 computes in double registers instead of the wider ones of the x87.
# Never use -ffast-math, -Ofast or a part of them. nuv/nuv_math/include/floatingpoint.h stops the build when it detects
# them.

add_library(nuv_floating_point INTERFACE)
if(MSVC)
  target_compile_options(nuv_floating_point INTERFACE /fp:strict)
else()
  target_compile_options(nuv_floating_point INTERFACE -ffp-contract=off)
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86)$")
  target_compile_options(nuv_floating_point INTERFACE -msse2 -mfpmath=sse)
endif()
