# SPDX-License-Identifier: MIT
#
# cmake -DEMULATOR=... -DPROGRAMS=... -DEXPECTED=... -DSEEN=... [-DUPDATE=ON] -P digest.cmake
# Runs the tests of the exact tables in all PROGRAMS and collects the digest of every table. Fails if a test fails, or
# if the digests are not those of the file EXPECTED; with UPDATE writes that file instead. SEEN gets what this platform
# has.
# The parts of EMULATOR and PROGRAMS are separated by |.

string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
string(REPLACE "|" ";" PROGRAMS "${PROGRAMS}")
set(lines)
foreach(program IN LISTS PROGRAMS)
  execute_process(COMMAND ${EMULATOR} ${program} --gtest_filter=*Vectors*.*
    RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
  if(NOT result STREQUAL "0")
    message(FATAL_ERROR "exit code ${result}\n${printed}")
  endif()
  string(REGEX MATCHALL "digest [^a-z0-9] *[0-9a-f]+ [A-Za-z0-9_]+\r?\n" found "${printed}")
  foreach(line IN LISTS found)
    string(REGEX REPLACE "digest [^a-z0-9] *([0-9a-f]+) ([A-Za-z0-9_]+)\r?\n" "\\2 \\1" line "${line}")
    list(APPEND lines ${line})
  endforeach()
endforeach()
if(NOT lines)
  message(FATAL_ERROR "no table was checked")
endif()

list(SORT lines)
list(LENGTH lines count)
list(JOIN lines "\n" text)
string(SHA256 digest "${text}")
string(SUBSTRING ${digest} 0 16 digest)
set(seen "${text}\ndigest: ${digest} of ${count} tables\n")
file(WRITE ${SEEN} "${seen}")
message("digest: ${digest} of ${count} tables")

set(head "# Digests of all exact results, table by table and in one, the same on every platform.
# Made by: cmake --build --preset default --target update_digest
")
if(UPDATE)
  file(WRITE ${EXPECTED} "${head}${seen}")
else()
  file(READ ${EXPECTED} expected)
  if(NOT expected STREQUAL "${head}${seen}")
    message(FATAL_ERROR "expected:\n${expected}seen:\n${seen}")
  endif()
endif()
