# SPDX-License-Identifier: MIT
#
# cmake -DPROGRAM=... -DEXPECTED=... -P compare_output.cmake
# Fails unless the program ends with exit code 0 and its output is the text of the file EXPECTED.

execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE printed)
string(REPLACE "\r\n" "\n" printed "${printed}") # line ends of Windows
file(READ ${EXPECTED} expected)
if(NOT result STREQUAL "0")
  message(FATAL_ERROR "exit code ${result}\n${printed}")
endif()
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "printed:\n${printed}\nexpected:\n${expected}")
endif()
