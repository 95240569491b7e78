# SPDX-License-Identifier: MIT
#
# libFuzzer programs with the library's sources built in, under the address and undefined-behaviour sanitizers.
#
# A fuzz target fuzz_NAME is linked from its own objects, from fuzzing.cpp, and from the archive nuv1math_fuzz with all
# of the library. fuzzing.cpp defines ReportAssertion, so the linker does not take the library's own assertion report
# from the archive. In the same way a changed source replaces the original one: compile it by the command that
# compile_commands.json gives for nuv1math_fuzz_objects, and link its object before the archive:
#   clang++ -fsanitize=fuzzer,address,undefined fuzz_NAME.dir/*.o changed.o libnuv1math_fuzz.a -o changed_target

if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "The fuzz targets need Clang: use the preset fuzz")
endif()

# Callers in other languages pass values outside an enumeration, and the library takes them: -fno-sanitize=enum.
set(nuv_fuzz_options
  -gline-tables-only -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize=enum -fno-sanitize-recover=all)

# Numeric code compares no bytes of an input. To trace the comparisons of its loops would take most of the time of a run.
set(nuv_numeric_fuzz_options ${nuv_fuzz_options} -fno-sanitize-coverage=trace-cmp)

if(NOT TARGET nuv1math_fuzz)
  nuv1math_add_objects(nuv1math_fuzz_objects)
  target_compile_options(nuv1math_fuzz_objects PRIVATE ${nuv_numeric_fuzz_options})
  add_library(nuv1math_fuzz STATIC $<TARGET_OBJECTS:nuv1math_fuzz_objects>)
  target_include_directories(nuv1math_fuzz INTERFACE
    $<TARGET_PROPERTY:nuv1math_fuzz_objects,INTERFACE_INCLUDE_DIRECTORIES>)
  set_target_properties(nuv1math_fuzz PROPERTIES ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
endif()

# nuv_add_fuzz_target(NAME SOURCE...): the program fuzz_NAME, its kept inputs unpacked to fuzz/corpus/NAME of the build,
# and a test that runs each of them once. -runs=0 reads the corpus and stops.
function(nuv_add_fuzz_target name)
  add_executable(fuzz_${name} ${ARGN} ${PROJECT_SOURCE_DIR}/fuzz/fuzzing.cpp)
  set_target_properties(fuzz_${name} PROPERTIES
    CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
  target_compile_options(fuzz_${name} PRIVATE -Wall -Wextra -Wshadow ${nuv_fuzz_options})
  target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz ${PROJECT_SOURCE_DIR}/tests)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(fuzz_${name} PRIVATE nuv1math_fuzz nuv_floating_point)

  set(archive ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name}.tar.xz)
  set(corpus ${PROJECT_BINARY_DIR}/fuzz/corpus/${name})
  add_custom_command(OUTPUT ${corpus}.unpacked
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${corpus}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${corpus}
    COMMAND ${CMAKE_COMMAND} -E chdir ${corpus} ${CMAKE_COMMAND} -E tar xf ${archive}
    COMMAND ${CMAKE_COMMAND} -E touch ${corpus}.unpacked
    DEPENDS ${archive} VERBATIM)
  add_custom_target(fuzz_${name}_corpus ALL DEPENDS ${corpus}.unpacked)
  add_dependencies(fuzz_${name} fuzz_${name}_corpus)
  add_test(NAME fuzz.${name} COMMAND fuzz_${name} -runs=0 -timeout=10 -malloc_limit_mb=64 ${corpus})
  set_tests_properties(fuzz.${name} PROPERTIES LABELS slow)
endfunction()
