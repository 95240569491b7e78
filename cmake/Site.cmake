# SPDX-License-Identifier: MIT
#
# The pages of the library as a site of HTML files. The target `site` makes it in the directory site/html of the build.
# It needs doxygen, nodejs and katex; without them there is no target. The component `doc` installs it if it was made.
# Packages have the site without the page apps/georeference, because that takes the compiler for WebAssembly.

set(NUV1MATH_SITE_PAGE "" CACHE FILEPATH "The built page apps/georeference, which the site takes; scripts/docs site builds it")

find_package(Python3 COMPONENTS Interpreter)
find_program(NUV1MATH_DOXYGEN doxygen)
find_program(NUV1MATH_NODE node)
mark_as_advanced(NUV1MATH_DOXYGEN NUV1MATH_NODE)
set(no_katex TRUE)
if(NUV1MATH_NODE)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env NODE_PATH=/usr/share/nodejs ${NUV1MATH_NODE} -e "require('katex')"
    RESULT_VARIABLE no_katex OUTPUT_QUIET ERROR_QUIET)
endif()

if(NOT Python3_Interpreter_FOUND OR NOT NUV1MATH_DOXYGEN OR no_katex)
  if(NUV1MATH_BUILD_SITE)
    message(FATAL_ERROR "The site needs Python 3, doxygen, nodejs and katex")
  endif()
  return()
endif()

set(in_all "")
if(NUV1MATH_BUILD_SITE)
  set(in_all ALL)
endif()

file(GLOB site_inputs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.* ${PROJECT_SOURCE_DIR}/docs/*/*.*
  ${PROJECT_SOURCE_DIR}/examples/*.cpp ${PROJECT_SOURCE_DIR}/examples/expected/*.txt
  ${PROJECT_SOURCE_DIR}/apps/fitpoints/*.png ${PROJECT_SOURCE_DIR}/apps/fitpoints/*.svg
  ${PROJECT_SOURCE_DIR}/apps/fitpoints/README.md ${PROJECT_SOURCE_DIR}/apps/fitpoints/judgement/README.md
  ${PROJECT_SOURCE_DIR}/bindings/README.md ${PROJECT_SOURCE_DIR}/bindings/*/README.md
  ${PROJECT_SOURCE_DIR}/scripts/pages/*.py ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/tests/consumers/*/*)
if(NUV1MATH_SITE_PAGE AND NOT EXISTS ${NUV1MATH_SITE_PAGE})
  message(FATAL_ERROR "There is no ${NUV1MATH_SITE_PAGE}: `scripts/docs site` builds it first")
endif()
set(site_index ${PROJECT_BINARY_DIR}/site/html/index.html)
add_custom_command(OUTPUT ${site_index} VERBATIM
  COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/scripts/pages/build_site.py ${PROJECT_BINARY_DIR}/site ${NUV1MATH_SITE_PAGE}
  DEPENDS ${site_inputs} ${NUV1MATH_SITE_PAGE} ${NUV1MATH_INCLUDE_DIR}/nuv1math.h
  COMMENT "Making the site of the library's pages")
add_custom_target(site ${in_all} DEPENDS ${site_index})

install(DIRECTORY ${PROJECT_BINARY_DIR}/site/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc OPTIONAL)
