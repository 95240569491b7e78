# SPDX-License-Identifier: MIT
#
# cmake -DLIBRARY_BUILD=... -DSCRATCH=... -DGENERATOR=... -DCOMPILER=... -P build_installed.cmake
# Installs the library of the build LIBRARY_BUILD below SCRATCH, builds the examples alone against it, and runs their
# tests. Fails unless all of that succeeds.

file(REMOVE_RECURSE ${SCRATCH})
set(prefix ${SCRATCH}/prefix)
set(build ${SCRATCH}/build)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${LIBRARY_BUILD} --prefix ${prefix})
run(${CMAKE_COMMAND} -G "${GENERATOR}" -S ${CMAKE_CURRENT_LIST_DIR} -B ${build}
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${build})
run(${CMAKE_CTEST_COMMAND} --test-dir ${build} --output-on-failure --no-tests=error)
