# SPDX-License-Identifier: MIT
#
# cmake -DEMULATOR=... -DEXPORTED=... [-DINTERNAL=...] -DEXPECTED=... -DSEEN=... [-DUPDATE=ON] -P digest.cmake
# Runs the tests of the exact tables in the programs EXPORTED and INTERNAL and collects the digest of every table.
# Fails if a test fails, or if the digests are not those of the file EXPECTED; with UPDATE writes that file instead.
# Without INTERNAL only the tables of exported functions are compared. SEEN gets what this platform has.
# The parts of EMULATOR are separated by |.

string(REPLACE "|" ";" EMULATOR "${EMULATOR}")

# Sets <name> to the lines "TABLE DIGEST" of the tables that a program checks.
function(read_digests name program)
  execute_process(COMMAND ${EMULATOR} ${program} --gtest_filter=*Vectors*.*
    RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
  if(NOT result STREQUAL "0")
    message(FATAL_ERROR "exit code ${result}\n${printed}")
  endif()
  string(REGEX MATCHALL "digest [^a-z0-9] *[0-9a-f]+ [A-Za-z0-9_]+\r?\n" found "${printed}")
  if(NOT found)
    message(FATAL_ERROR "no table was checked by ${program}")
  endif()
  list(TRANSFORM found REPLACE "digest [^a-z0-9] *([0-9a-f]+) ([A-Za-z0-9_]+)\r?\n" "\\2 \\1")
  list(SORT found)
  set(${name} ${found} PARENT_SCOPE)
endfunction()

# Appends to seen the lines and one digest over all lines of the tables so far.
function(add_digest title)
  list(APPEND tables ${ARGN})
  list(JOIN tables "\n" text)
  string(SHA256 digest "${text}")
  string(SUBSTRING ${digest} 0 16 digest)
  list(LENGTH tables count)
  list(JOIN ARGN "\n" lines)
  set(line "${title}: ${digest} of ${count} tables")
  message("${line}")
  set(seen "${seen}${lines}\n${line}\n" PARENT_SCOPE)
  set(tables ${tables} PARENT_SCOPE)
endfunction()

set(seen "# Digests of all exact results, table by table and in one, the same on every platform.
# Made by: cmake --build --preset default --target update_digest
")
read_digests(lines ${EXPORTED})
add_digest("digest of exported functions" ${lines})
if(INTERNAL)
  read_digests(lines ${INTERNAL})
  add_digest("digest" ${lines})
endif()
file(WRITE ${SEEN} "${seen}")

if(UPDATE)
  file(WRITE ${EXPECTED} "${seen}")
  return()
endif()
file(READ ${EXPECTED} expected)
string(FIND "${expected}" "${seen}" at)
if(NOT at EQUAL 0 OR (INTERNAL AND NOT expected STREQUAL seen))
  message(FATAL_ERROR "expected:\n${expected}seen:\n${seen}")
endif()
