# abi.cmake: compares the binary interface of the built LIBRARY with the one KEPT, or with UPDATE keeps it anew.
# SPDX-License-Identifier: MIT
#
# By libabigail's ABIDW and ABIDIFF, from the debugging information. What is kept names no directory: it is the same wherever
# the library was compiled.

if(UPDATE)
  execute_process(COMMAND ${ABIDW} --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path
      --no-elf-needed --no-parameter-names --drop-undefined-syms --type-id-style hash ${LIBRARY}
    OUTPUT_VARIABLE xml COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE " path='[^']*/" " path='" xml "${xml}")
  file(WRITE ${KEPT} "${xml}<!-- SPDX-License-Identifier: MIT -->\n") # at the end: the reader knows the file by its head
  return()
endif()

execute_process(COMMAND ${ABIDIFF} --harmless ${KEPT} ${LIBRARY}
  OUTPUT_VARIABLE difference ERROR_VARIABLE difference RESULT_VARIABLE result)
if(NOT result STREQUAL 0)
  message(FATAL_ERROR "The binary interface is not the one of ${KEPT}:\n${difference}"
    "If it is meant to change, raise the major version in nuv1math.h, unless it only adds, and build the target ${TARGET}.")
endif()
