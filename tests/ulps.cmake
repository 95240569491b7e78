# SPDX-License-Identifier: MIT
#
# cmake -DEMULATOR=... -DPROGRAM=... -DSEEN=... -P ulps.cmake
# Runs the tests against the tables to 50 digits and writes to SEEN what errors they saw, one line for each routine:
# "ulps: NAME GREATEST of LIMIT". Fails if a test fails. The parts of EMULATOR are separated by |.

string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
execute_process(COMMAND ${EMULATOR} ${PROGRAM} --gtest_filter=Ulps.*
  RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
string(REGEX MATCHALL "\\[ ulps \\] [^\r\n]+" found "${printed}")
if(NOT result STREQUAL "0" OR NOT found)
  message(FATAL_ERROR "exit code ${result}\n${printed}")
endif()
list(SORT found)
list(JOIN found "\n" seen)
string(REPLACE "[ ulps ]" "ulps:" seen "${seen}\n")
file(WRITE ${SEEN} "${seen}")
message("${seen}")
