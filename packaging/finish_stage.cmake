# SPDX-License-Identifier: MIT
#
# CPack runs this script when the files of all packages are in place. It compresses the manual pages. CPack itself gives
# every file the time SOURCE_DATE_EPOCH.

file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*.1)
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9n ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
