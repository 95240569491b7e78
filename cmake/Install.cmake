# SPDX-License-Identifier: MIT
#
# Installs the library, its public header, what finds them (CMake's find_package, pkg-config), and the documents. The
# components are those of the Debian packages: runtime, devel, tools and doc.

include(CMakePackageConfigHelpers)

# ---- Library and header ----

install(TARGETS nuv1math EXPORT nuv1math-targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
install(FILES ${NUV1MATH_INCLUDE_DIR}/nuv1math.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT devel)
if(NUV1MATH_MSVC_LIBRARY)
  install(FILES ${NUV1MATH_MSVC_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
endif()

# ---- find_package(nuv1math) ----

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nuv1math)
install(EXPORT nuv1math-targets NAMESPACE nuv:: DESTINATION ${config_dir} COMPONENT devel)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math-config.cmake.in
  ${PROJECT_BINARY_DIR}/nuv1math-config.cmake INSTALL_DESTINATION ${config_dir} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nuv1math-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nuv1math-config.cmake ${PROJECT_BINARY_DIR}/nuv1math-config-version.cmake
  DESTINATION ${config_dir} COMPONENT devel)

# ---- pkg-config ----

# The file finds the installation from its own place, so the installation can be moved. A static library needs the
# mathematical library, and on Windows a definition. A directory outside the prefix stays as it is.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH to_prefix /prefix/${pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
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
if(NOT WIN32)
  set(pc_private "Libs.private: -lm")
endif()
if(NOT shared)
  string(REPLACE "Libs.private:" "" pc_libs "${pc_private}")
  set(pc_private "Libs.private:")
  set(pc_cflags " -DNUV1MATH_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math.pc.in ${PROJECT_BINARY_DIR}/nuv1math.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nuv1math.pc DESTINATION ${pkgconfig_dir} COMPONENT devel)

# ---- Documents ----

install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
if(NOT NUV1MATH_DEBIAN_PACKAGES) # a Debian package states its licence in its own file
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
