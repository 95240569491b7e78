# SPDX-License-Identifier: MIT
#
# Checks of files: the built library, its binary interface, the sources, the tables and the documents.

set(run_check ${CMAKE_COMMAND} -E env NUV1MATH_PROCESSOR=${CMAKE_SYSTEM_PROCESSOR} NUV1MATH_CXX=${CMAKE_CXX_COMPILER}
  NUV1MATH_LIBRARY=$<TARGET_FILE:nuv1math> NUV1MATH_BUILD=${PROJECT_BINARY_DIR})

# nuv_add_check(<name> <label> [<variable>=<value>...]): runs <name>_test.py.
function(nuv_add_check name label)
  nuv_add_test(${name} ${label} ${run_check} ${ARGN} ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/${name}_test.py)
endfunction()

if(NUV1MATH_SANITIZED) # the sanitizers add symbols, calls and stack
  return()
endif()

# What the library exports, imports and contains. Natively the instructions are those of the library for a processor
# with FMA.
if(CMAKE_CROSSCOMPILING)
  set(inspected_objects $<TARGET_OBJECTS:nuv1math_objects>)
elseif(NUV1MATH_CAN_COMPILE_FMA)
  set(inspected_objects $<TARGET_OBJECTS:nuv1math_fma_objects>)
endif()
nuv_add_check(library_file quick "NUV1MATH_OBJECTS=$<JOIN:${inspected_objects},:>")

# Stack and code size, from the call graphs that GCC writes beside the objects. A compiler cache does not restore them.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND (CMAKE_SYSTEM_PROCESSOR STREQUAL "arm"
    OR (CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" AND CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")))
  target_compile_options(nuv1math_objects PRIVATE -fcallgraph-info=su)
  set_target_properties(nuv1math_objects PROPERTIES CXX_COMPILER_LAUNCHER "")
  nuv_add_check(footprint quick "NUV1MATH_OBJECTS=$<JOIN:$<TARGET_OBJECTS:nuv1math_objects>,:>")
endif()

if(CMAKE_CROSSCOMPILING)
  return()
endif()

nuv_add_check(sources slow) # how the sources compile
nuv_add_check(links quick)  # what the documents name exists
nuv_add_check(languages quick) # the pages of the bindings show the programs that the tests run
if(TARGET site)
  nuv_add_check(site quick) # the pages for a browser
endif()

# The exports of the DLL for programs of Microsoft's compiler are what the header gives.
nuv_add_test(windows_exports quick Python3::Interpreter
  ${PROJECT_SOURCE_DIR}/cmake/windows/make_exports.py --check)

nuv_add_abi_test(abi nuv1math ${CMAKE_CURRENT_SOURCE_DIR}/abi.xml)

# The tables are what their generators make, and the exact arithmetic of the generators is that of the machine.
if(NUV1MATH_CHECK_TABLES)
  set(tools_dir ${CMAKE_CURRENT_SOURCE_DIR}/tools)
  nuv_add_test(exact_arithmetic tables Python3::Interpreter ${tools_dir}/exactdouble.py --self-check)
  nuv_add_test(tables tables Python3::Interpreter ${tools_dir}/make_vectors.py --check)
  nuv_add_test(random_sequences tables Python3::Interpreter ${tools_dir}/make_random_sequences.py --check)
  execute_process(COMMAND ${Python3_EXECUTABLE} -c "import mpmath" RESULT_VARIABLE no_mpmath ERROR_QUIET)
  if(NOT no_mpmath)
    nuv_add_test(ulp_tables tables Python3::Interpreter ${tools_dir}/make_ulp_vectors.py --check)
  endif()
  find_program(NUV1MATH_GAPPA gappa) # it proves the bounds of the integer division and square root
  if(NUV1MATH_GAPPA)
    nuv_add_check(arithmetic_proof tables NUV1MATH_GAPPA=${NUV1MATH_GAPPA})
  endif()
endif()
