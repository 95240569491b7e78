# SPDX-License-Identifier: MIT
#
# Adds tests. Every test has exactly one label:
#   quick   everything that is fast: the loop for a small change is `ctest -L quick`
#   tables  comparison with the tables of exact results, and checks of the tables themselves
#   slow    the rest

# The suites of all exported functions, which also test the image for Windows CE.
set(NUV_EXPORTED_SUITES
  affine_test.cpp affine_fit_test.cpp conformal_test.cpp conformal_fit_test.cpp contraction_test.cpp
  dense_cholesky_test.cpp linear_system_test.cpp linear_trig_test.cpp normal_equations_test.cpp omographic_test.cpp
  packed_cholesky_test.cpp quadratic_trig_test.cpp random_test.cpp roots_test.cpp selection_test.cpp ulp_test.cpp
  vectors_test.cpp)

# nuv_add_test(<name> <label> <command>...)
function(nuv_add_test name label)
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES LABELS ${label})
endfunction()

# nuv_discover_tests(<target> PREFIX <prefix> [WITHOUT_SLOW] PROPERTIES <properties>...)
# Adds every test of a GoogleTest program. The library's assertion report ends a process with code 0, which CTest would
# take for a success.
function(nuv_discover_tests target)
  cmake_parse_arguments(ARG "WITHOUT_SLOW" "PREFIX" "PROPERTIES" ${ARGN})
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR) # nothing can run the program
    return()
  endif()
  set(tables "*Vectors*.*:Ulps.*") # suites with these names
  set(slow "*Slow.*")
  set(quick "-${tables}:${slow}")
  set(labels quick tables slow)
  if(ARG_WITHOUT_SLOW)
    list(REMOVE_ITEM labels slow)
  endif()
  foreach(label IN LISTS labels)
    gtest_discover_tests(${target} TEST_PREFIX "${ARG_PREFIX}" TEST_FILTER "${${label}}"
      TEST_LIST "${target}_${ARG_PREFIX}${label}" DISCOVERY_TIMEOUT 600 PROPERTIES
      TIMEOUT 900 FAIL_REGULAR_EXPRESSION "assertion failure:" LABELS ${label} ${ARG_PROPERTIES})
  endforeach()
endfunction()

# nuv_add_suite(<name> [BUILD_ONLY] [LIBRARY <library>] [PREFIX <prefix>] [ENVIRONMENT <variable>=<value>]
#   SOURCES <source>... [PACKAGES <target>...])
# A GoogleTest program against one form of the library.
function(nuv_add_suite name)
  cmake_parse_arguments(ARG "BUILD_ONLY" "LIBRARY;PREFIX;ENVIRONMENT" "SOURCES;PACKAGES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
  target_compile_options(${name} PRIVATE -Wall -Wextra -g1) # -g1 keeps line numbers, and compiles a quarter faster
  if(NUV1MATH_SANITIZED)
    # The library is checked for undefined behaviour. Without the check the tests compile a third faster.
    target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
  endif()
  target_compile_definitions(${name} PRIVATE NUV_TEST_DATA="${CMAKE_CURRENT_FUNCTION_LIST_DIR}/data"
    $<$<BOOL:${WIN32}>:_USE_MATH_DEFINES> # for M_PI, which strict standards leave out there
    $<$<AND:$<BOOL:${CMAKE_CROSSCOMPILING}>,$<NOT:$<BOOL:${WIN32}>>>:NUV_EMULATED>)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARY} nuv_floating_point ${ARG_PACKAGES} GTest::gmock_main)
  if(NOT ARG_BUILD_ONLY)
    nuv_discover_tests(${name} PREFIX "${ARG_PREFIX}" PROPERTIES ENVIRONMENT "${ARG_ENVIRONMENT}")
  endif()
endfunction()

# nuv_add_result_tests(<program of the exported functions> [INTERNAL <program>])
# `digest`: one digest over all exact results, the same on every platform. The tables show that each result is right;
# the digest shows that every platform checks the same results. `ulps`: the greatest errors, in units in the last place,
# of the results that depend on the platform's elementary functions.
function(nuv_add_result_tests exported)
  cmake_parse_arguments(ARG "" "INTERNAL" "" ${ARGN})
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "|" emulator)
  set(data ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/data)
  set(digest ${CMAKE_COMMAND} "-DEMULATOR=${emulator}" -DEXPORTED=$<TARGET_FILE:${exported}>
    -DEXPECTED=${data}/digest.txt -DSEEN=${PROJECT_BINARY_DIR}/digest.txt)
  if(ARG_INTERNAL)
    list(APPEND digest -DINTERNAL=$<TARGET_FILE:${ARG_INTERNAL}>)
    add_custom_target(update_digest VERBATIM
      COMMAND ${digest} -DUPDATE=ON -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/digest.cmake)
    add_dependencies(update_digest ${exported} ${ARG_INTERNAL})
  endif()
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
  endif()
  nuv_add_test(digest tables ${digest} -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/digest.cmake)
  nuv_add_test(ulps tables ${CMAKE_COMMAND} "-DEMULATOR=${emulator}" -DPROGRAM=$<TARGET_FILE:${exported}>
    -DSEEN=${PROJECT_BINARY_DIR}/ulps.txt -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/ulps.cmake)
endfunction()

# nuv_add_abi_test(<name> <library> <kept>): the binary interface of a library is that of the file <kept>, which the target
# update_<name> writes. It is read from debugging information, and what is kept is that of x86-64.
function(nuv_add_abi_test name library kept)
  if(NOT (CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" AND CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo"))
    return()
  endif()
  find_program(NUV1MATH_ABIDW abidw REQUIRED)
  find_program(NUV1MATH_ABIDIFF abidiff REQUIRED)
  set(compare ${CMAKE_COMMAND} -DABIDW=${NUV1MATH_ABIDW} -DABIDIFF=${NUV1MATH_ABIDIFF}
    -DLIBRARY=$<TARGET_FILE:${library}> -DKEPT=${kept} -DTARGET=update_${name})
  set(script ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/abi.cmake)
  nuv_add_test(${name} quick ${compare} -P ${script})
  add_custom_target(update_${name} VERBATIM COMMAND ${compare} -DUPDATE=ON -P ${script})
  add_dependencies(update_${name} ${library})
endfunction()
