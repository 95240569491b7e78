# SPDX-License-Identifier: MIT
#
# The one place for how floating-point code is compiled. Results are a contract: every double operation is rounded
# once, in the written order, on every platform.
#   -ffp-contract=off        a*b + c is two operations; processors with FMA would otherwise round once
#   /fp:strict               the same for Microsoft's compilers
#   -msse2 -mfpmath=sse      32-bit x86 computes in double registers, not in the wider ones of the x87
# Never -ffast-math, -Ofast or a part of them. nuv/nuv_math/include/floatingpoint.h refuses what it can recognise.

add_library(nuv_floating_point INTERFACE)
if(MSVC)
  target_compile_options(nuv_floating_point INTERFACE /fp:strict)
else()
  target_compile_options(nuv_floating_point INTERFACE -ffp-contract=off)
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86)$")
  target_compile_options(nuv_floating_point INTERFACE -msse2 -mfpmath=sse)
endif()
