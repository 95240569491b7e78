# SPDX-License-Identifier: MIT
#
# Installs the library, its C interface, their headers, what finds them (CMake's find_package, pkg-config), and the
# documents. The components are those of the Debian packages: runtime, runtime_c, devel, python, tools and doc.

include(CMakePackageConfigHelpers)

# ---- Libraries and headers ----

# nuv1math_install_library(<target> <component> <header>): the component gets what programs need to run.
function(nuv1math_install_library target component header)
  install(TARGETS ${target} EXPORT nuv1math-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT devel
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
endfunction()

nuv1math_install_library(nuv1math runtime ${NUV1MATH_INCLUDE_DIR}/nuv1math.h)
if(TARGET nuv1math_c)
  nuv1math_install_library(nuv1math_c runtime_c ${PROJECT_SOURCE_DIR}/bindings/c/nuv1math_c.h)
endif()
get_property(msvc_libraries GLOBAL PROPERTY NUV1MATH_MSVC_LIBRARIES)
install(FILES ${msvc_libraries} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)

# ---- find_package(nuv1math) ----

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nuv1math)
install(EXPORT nuv1math-targets NAMESPACE nuv:: DESTINATION ${config_dir} COMPONENT devel)
export(EXPORT nuv1math-targets NAMESPACE nuv::) # for find_package in the directory of the build
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math-config.cmake.in
  ${PROJECT_BINARY_DIR}/nuv1math-config.cmake INSTALL_DESTINATION ${config_dir} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nuv1math-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nuv1math-config.cmake ${PROJECT_BINARY_DIR}/nuv1math-config-version.cmake
  DESTINATION ${config_dir} COMPONENT devel)

# ---- pkg-config ----

# The file finds the installation from its own place, so the installation can be moved, unless its place is absolute. A
# static library needs the mathematical library, and on Windows a definition.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH to_prefix /prefix/${pkgconfig_dir} /prefix)
  string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
  set(pc_prefix "\${pcfiledir}/${to_prefix}")
endif()
foreach(kind IN ITEMS LIB INCLUDE)
  string(TOLOWER pc_${kind}dir variable)
  set(${variable} "\${prefix}/${CMAKE_INSTALL_${kind}DIR}")
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}DIR}")
    set(${variable} "${CMAKE_INSTALL_${kind}DIR}")
  endif()
endforeach()
set(pc_libs "")
set(pc_cflags "")
set(pc_private "Libs.private:")
set(pc_c_cflags "")
set(pc_c_requires "Requires:")
if(NOT WIN32)
  set(pc_private "Libs.private: -lm")
endif()
if(NOT shared)
  string(REPLACE "Libs.private:" "" pc_libs "${pc_private}")
  set(pc_private "Libs.private:")
  set(pc_cflags " -DNUV1MATH_STATIC")
  set(pc_c_cflags " -DNUV1MATH_C_STATIC")
  set(pc_c_requires "Requires: nuv1math")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math.pc.in ${PROJECT_BINARY_DIR}/nuv1math.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nuv1math.pc DESTINATION ${pkgconfig_dir} COMPONENT devel)
if(TARGET nuv1math_c)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math_c.pc.in ${PROJECT_BINARY_DIR}/nuv1math_c.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/nuv1math_c.pc DESTINATION ${pkgconfig_dir} COMPONENT devel)
endif()

# ---- Documents ----

install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
if(NOT NUV1MATH_DEBIAN_PACKAGES) # a Debian package states its licence in its own file
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
if(TARGET nuv1math_c)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/bindings/c/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/languages
    COMPONENT doc)
endif()
