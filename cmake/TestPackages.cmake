# SPDX-License-Identifier: MIT
#
# Finds the packages of the tests: GoogleTest, Eigen and RapidCheck. Debian has no GoogleTest and no RapidCheck for its
# cross compilers. There GoogleTest is built from its source package, and the property tests are left out.

if(CMAKE_CROSSCOMPILING)
  set(NUV1MATH_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "The sources of GoogleTest")
  set(INSTALL_GTEST OFF CACHE BOOL "Install GoogleTest" FORCE)
  if(NOT TARGET GTest::gmock_main)
    add_subdirectory(${NUV1MATH_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  endif()
  set(NUV1MATH_HAVE_RAPIDCHECK OFF)
else()
  find_package(GTest REQUIRED)
  find_package(rapidcheck REQUIRED)
  set(NUV1MATH_HAVE_RAPIDCHECK ON)
endif()
find_package(Eigen3 REQUIRED NO_MODULE)
include(GoogleTest)
