# SPDX-License-Identifier: MIT
#
# Reading, fitting, reporting and exports: the sources of fitpoints that need no operating system. The page of
# apps/georeference consists of them, too.

set(FITPOINTS_CORE text.cpp text_input.cpp rows.cpp columns.cpp points.cpp support.cpp frames.cpp warnings.cpp fit.cpp
  report_text.cpp report_json.cpp report_common.cpp pixels.cpp exports.cpp world_file.cpp)
list(TRANSFORM FITPOINTS_CORE PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
