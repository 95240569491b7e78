# SPDX-License-Identifier: MIT
#
# The Debian packages, which `cpack -G DEB` makes from the components of Install.cmake: libnuv1math1 (runtime),
# libnuv1math-c1 (runtime_c), libnuv1math-dev (devel), python3-nuv1math (python), nuv1math-tools (tools) and
# nuv1math-doc (doc). Build with the preset package-deb: the prefix must be /usr. scripts/package does all of it.

set(packaging ${PROJECT_SOURCE_DIR}/packaging)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nuv1math)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${packaging}/finish_stage.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${packaging}/finish_packages.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime runtime_c devel python tools doc)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The field Maintainer must have an address. The project has none yet; in the domain `example` nobody can have one. Whoever
# gives packages away sets his own.
set(NUV1MATH_MAINTAINER "nuv1math maintainers <maintainers@nuv1math.example>" CACHE STRING
  "Name and address of the maintainer of Debian packages")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${NUV1MATH_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SOURCE nuv1math)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/nuv/nuv1math ${PROJECT_BINARY_DIR}/bindings/c)

# CPack of Debian 12 has no setting for the field Multi-Arch. It writes the section as it stands, so the field follows in
# a line of its own.
function(package_section component section multi_arch)
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multi_arch}" PARENT_SCOPE)
endfunction()

# describe(COMPONENT summary text): the first line of a description, and its last paragraph.
function(describe component summary text)
  set(CPACK_DEBIAN_${component}_DESCRIPTION "planar coordinate transformations - ${summary}
nuv1math computes conformal, affine and projective transformations between
plane coordinate systems from control points, by least squares, with the same
bits on every platform.

${text}" PARENT_SCOPE)
endfunction()

# package_library(COMPONENT package): the package of a shared library. `symbols` and `shlibs` tell other packages on what
# they depend; CPack's own would demand this very version.
function(package_library component package)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION "libs\nMulti-Arch: same" PARENT_SCOPE)
  set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA
    ${packaging}/triggers ${packaging}/${package}/symbols ${packaging}/${package}/shlibs PARENT_SCOPE)
endfunction()

package_library(RUNTIME libnuv1math${PROJECT_VERSION_MAJOR})
describe(RUNTIME "library" "This package has the shared library.")

package_library(RUNTIME_C libnuv1math-c${PROJECT_VERSION_MAJOR})
describe(RUNTIME_C "C interface" "This package has the shared library of the C interface, which every language
that can call C can use.")
set(CPACK_COMPONENT_RUNTIME_C_DEPENDS runtime)

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME libnuv1math-dev)
describe(DEVEL "development files" "This package has the headers for C++ and C, and the files for pkg-config and
CMake.")
set(CPACK_COMPONENT_DEVEL_DEPENDS runtime runtime_c)
package_section(DEVEL libdevel same)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-nuv1math)
describe(PYTHON "for Python" "This package has the module nuv1math, over arrays of numpy.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3-cffi-backend, python3-numpy")
set(CPACK_COMPONENT_PYTHON_DEPENDS runtime_c)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${packaging}/python3-nuv1math/postinst ${packaging}/python3-nuv1math/prerm)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nuv1math-tools)
describe(TOOLS "program fitpoints" "This package has fitpoints. It fits a transformation to the control points of
a file.")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
package_section(TOOLS science foreign)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS gnuplot-nox)

set(CPACK_DEBIAN_DOC_PACKAGE_NAME nuv1math-doc)
describe(DOC "documentation" "This package has the pages for a browser, and the example programs.")
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SUGGESTS fonts-dejavu-extra) # for the formulas
package_section(DOC doc foreign)
set(CPACK_DEBIAN_DOC_PACKAGE_SHLIBDEPS OFF)

# Programs that list the documents of a system find the pages.
install(FILES ${packaging}/nuv1math-doc/doc-base
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc-base RENAME nuv1math-doc.nuv1math COMPONENT doc)

# Each package has the licence and a changelog. The date is that of SOURCE_DATE_EPOCH if it is set.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${packaging}/changelog.in ${PROJECT_BINARY_DIR}/changelog @ONLY)
execute_process(COMMAND gzip -9nc ${PROJECT_BINARY_DIR}/changelog
  OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${packaging}/copyright ${PROJECT_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  if(EXISTS ${packaging}/${package}.lintian-overrides)
    install(FILES ${packaging}/${package}.lintian-overrides
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package} COMPONENT ${component})
  endif()
endforeach()

include(CPack)
