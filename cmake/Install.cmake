# SPDX-License-Identifier: MIT
#
# Installs the library, its public header and a CMake package: find_package(nuv1math) gives the target nuv::nuv1math.

include(CMakePackageConfigHelpers)
set(NUV1MATH_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/nuv1math)

install(TARGETS nuv1math EXPORT nuv1math-config)
install(FILES nuv/nuv_math/include/nuv1math.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT nuv1math-config NAMESPACE nuv:: DESTINATION ${NUV1MATH_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/nuv1math-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/nuv1math-config-version.cmake DESTINATION ${NUV1MATH_CMAKE_DIR})
