# SPDX-License-Identifier: MIT
#
# The library's sources, and how every build of them is compiled.

set(NUV1MATH_SOURCES
  src/TRIG.cpp src/affine.cpp src/assertion.cpp src/cholesky.cpp src/module.cpp src/omographic.cpp src/poly.cpp
  src/random.cpp)
if(WIN32 OR NUV1MATH_WINCE_IMAGE)
  list(APPEND NUV1MATH_SOURCES src/platform_windows.cpp)
else()
  list(APPEND NUV1MATH_SOURCES src/platform_posix.cpp)
endif()
list(TRANSFORM NUV1MATH_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/nuv/nuv1math/)
set(NUV1MATH_INCLUDE_DIR ${PROJECT_SOURCE_DIR}/nuv/nuv_math/include)

# Where every floating-point operation is a call there is little to gain between the calls: these sources are a tenth
# smaller and no slower when they are optimised for size. The other ones are slower.
set(NUV1MATH_SMALL_SOURCES src/TRIG.cpp src/affine.cpp src/omographic.cpp)
list(TRANSFORM NUV1MATH_SMALL_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/nuv/nuv1math/)

# GCC joins doubles into vectors where they are stored, and the next function that reads one of them has to wait for the
# store: without that the affine fit of four points is a fifth faster.
set(NUV1MATH_SCALAR_SOURCES src/TRIG.cpp src/affine.cpp)
list(TRANSFORM NUV1MATH_SCALAR_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/nuv/nuv1math/)

# Compiles the library's sources as objects of the given name, the same way for every use of them.
function(nuv1math_add_objects name)
  add_library(${name} OBJECT ${NUV1MATH_SOURCES})
  target_include_directories(${name} PUBLIC ${NUV1MATH_INCLUDE_DIR} ${PROJECT_SOURCE_DIR}/nuv/nuv1math/src)
  string(REPLACE "\\" "\\\\" source_root "${NUV1MATH_SOURCE_ROOT}")
  target_compile_definitions(${name} PRIVATE NUV1MATH_BUILD "NUV_SOURCE_ROOT=\"${source_root}\"")
  if(MSVC)
    target_compile_options(${name} PRIVATE /W3 /GR-)
  else()
    target_compile_options(${name} PRIVATE -pedantic -Wall -Wextra -Wshadow -Wconversion -fno-exceptions -fno-rtti)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "arm" AND NOT MSVC)
    set_source_files_properties(${NUV1MATH_SMALL_SOURCES} PROPERTIES COMPILE_OPTIONS $<$<NOT:$<CONFIG:Debug>>:-Os>)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_property(SOURCE ${NUV1MATH_SCALAR_SOURCES} APPEND PROPERTY COMPILE_OPTIONS -fno-tree-slp-vectorize)
  endif()
  target_link_libraries(${name} PRIVATE nuv_floating_point)
  set_target_properties(${name} PROPERTIES
    CXX_STANDARD ${NUV1MATH_CXX_STANDARD} CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON POSITION_INDEPENDENT_CODE ON)
  if(NUV1MATH_COVERAGE)
    target_compile_options(${name} PRIVATE --coverage -fprofile-update=atomic -include ${PROJECT_SOURCE_DIR}/cmake/coverage.h)
  endif()
endfunction()
