# SPDX-License-Identifier: MIT
#
# The library's sources, and how every build of them is compiled.

set(NUV1MATH_SOURCE_DIR ${PROJECT_SOURCE_DIR}/nuv/nuv1math/src)

set(NUV1MATH_SOURCES TRIG.cpp affine.cpp affinefit.cpp affineparams.cpp assertion.cpp cholesky.cpp
  fast/arithmetic.cpp fast/choleskyfast.cpp omographic.cpp poly.cpp random.cpp)
list(TRANSFORM NUV1MATH_SOURCES PREPEND ${NUV1MATH_SOURCE_DIR}/)
set(NUV1MATH_MODULE ${NUV1MATH_SOURCE_DIR}/module.cpp) # the entry of a DLL
set(NUV1MATH_PLATFORM ${NUV1MATH_SOURCE_DIR}/platform_posix.cpp)
if(WIN32)
  set(NUV1MATH_PLATFORM ${NUV1MATH_SOURCE_DIR}/platform_windows.cpp)
elseif(CMAKE_SYSTEM_NAME STREQUAL "WASI")
  set(NUV1MATH_PLATFORM ${NUV1MATH_SOURCE_DIR}/platform_wasm.cpp)
endif()

# Without floating-point hardware little time is spent between the operations, which are calls. These sources are a tenth
# smaller and no slower when they are optimised for size. The others are slower.
set(NUV1MATH_SMALL_SOURCES TRIG.cpp affine.cpp affinefit.cpp affineparams.cpp cholesky.cpp
  fast/arithmetic.cpp omographic.cpp)
list(TRANSFORM NUV1MATH_SMALL_SOURCES PREPEND ${NUV1MATH_SOURCE_DIR}/)

# GCC 12 at -O2 joins doubles into vectors. A vector of fields that were just stored one by one waits for the stores, and
# sums over different arrays need shuffles. Without it the inverse of a record that was just computed takes half the time,
# the conformal fit of ten points is 9 % faster, and the roots of degree 4 are 3 % faster. The other sources gain from it.
set(NUV1MATH_UNJOINED_SOURCES affine.cpp affinefit.cpp poly.cpp)
list(TRANSFORM NUV1MATH_UNJOINED_SOURCES PREPEND ${NUV1MATH_SOURCE_DIR}/)

# The factorisation by tiles has its vectors already. With more of them, its kernel in pairs spills sums to memory, and the
# factorisation of 500 unknowns takes 20 % longer. The kernel is a short loop, which must be aligned to a cache line.
set(NUV1MATH_KERNEL_SOURCES ${NUV1MATH_SOURCE_DIR}/fast/choleskyfast.cpp)

# Functions that begin at a cache line, and the short loops of the plain factorisation at half of one, are as fast
# wherever the linker puts them. In another place the factorisation of 12 to 27 unknowns takes up to 25 % longer, and the
# roots take 2 % longer.
set(NUV1MATH_PLAIN_KERNEL_SOURCES ${NUV1MATH_SOURCE_DIR}/cholesky.cpp)

# Compiles the sources as objects of the given name, as every use of them is compiled.
function(nuv1math_compile name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PUBLIC ${NUV1MATH_INCLUDE_DIR} ${NUV1MATH_SOURCE_DIR})
  string(REPLACE "\\" "\\\\" source_root "${NUV1MATH_SOURCE_ROOT}")
  target_compile_definitions(${name} PRIVATE NUV1MATH_BUILD "NUV_SOURCE_ROOT=\"${source_root}\"")
  if(MSVC)
    target_compile_options(${name} PRIVATE /W3 /GR-)
  else()
    target_compile_options(${name} PRIVATE -pedantic -Wall -Wextra -Wshadow -Wconversion -fno-exceptions -fno-rtti)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "arm" AND NOT MSVC)
    set_source_files_properties(${NUV1MATH_SMALL_SOURCES} PROPERTIES COMPILE_OPTIONS $<$<NOT:$<CONFIG:Debug>>:-Os>)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE -falign-functions=64)
    set_source_files_properties(${NUV1MATH_UNJOINED_SOURCES} PROPERTIES COMPILE_OPTIONS -fno-tree-slp-vectorize)
    set_source_files_properties(${NUV1MATH_PLAIN_KERNEL_SOURCES} PROPERTIES COMPILE_OPTIONS -falign-loops=32)
    set_source_files_properties(${NUV1MATH_KERNEL_SOURCES} PROPERTIES
      COMPILE_OPTIONS "-fno-tree-slp-vectorize;-falign-loops=64")
  endif()
  target_link_libraries(${name} PRIVATE nuv_floating_point)
  set_target_properties(${name} PROPERTIES
    CXX_STANDARD ${NUV1MATH_CXX_STANDARD} CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON POSITION_INDEPENDENT_CODE ON)
  if(NUV1MATH_COVERAGE)
    target_compile_options(${name} PRIVATE
      --coverage -fprofile-update=atomic -include ${PROJECT_SOURCE_DIR}/cmake/coverage.h)
  endif()
endfunction()

# The whole library as objects of the given name, for a shared library or, after STATIC, for a static one.
function(nuv1math_add_objects name)
  set(platform ${NUV1MATH_PLATFORM})
  if(NUV1MATH_WINCE_IMAGE) # an image for Windows CE is compiled by a compiler for Linux
    set(platform ${NUV1MATH_SOURCE_DIR}/platform_windows.cpp ${NUV1MATH_MODULE})
  elseif(WIN32 AND NOT "STATIC" IN_LIST ARGN)
    list(APPEND platform ${NUV1MATH_MODULE})
  endif()
  nuv1math_compile(${name} ${NUV1MATH_SOURCES} ${platform})
  if("STATIC" IN_LIST ARGN)
    target_compile_definitions(${name} PUBLIC NUV1MATH_STATIC)
  endif()
endfunction()

# The static library nuv1math_<form>: the functions in namespace nuv_<form>, so that a test program can link it beside the
# library itself. nuv/nuv1math/src/fast/forms.h tells which definition selects which form.
function(nuv1math_add_form form)
  nuv1math_compile(nuv1math_${form}_objects ${NUV1MATH_SOURCES} ${NUV1MATH_PLATFORM})
  target_compile_definitions(nuv1math_${form}_objects PRIVATE NUV1MATH_STATIC nuv=nuv_${form} ${ARGN})
  add_library(nuv1math_${form} STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:nuv1math_${form}_objects>)
  target_include_directories(nuv1math_${form} PUBLIC ${NUV1MATH_INCLUDE_DIR} ${NUV1MATH_SOURCE_DIR})
  target_compile_definitions(nuv1math_${form} INTERFACE NUV1MATH_STATIC)
endfunction()
