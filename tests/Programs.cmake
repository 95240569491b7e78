# SPDX-License-Identifier: MIT
#
# Programs that make measured tables and pictures of the documents.

find_library(NUV1MATH_GMP gmp)
find_library(NUV1MATH_GMPXX gmpxx)
find_library(NUV1MATH_MPFR mpfr)
find_path(NUV1MATH_BOOST boost/multiprecision/mpfr.hpp)

# The table of docs/roots.md, for which real roots are counted exactly. The test compares it with that in the page.
if(NUV1MATH_BUILD_APPS AND NUV1MATH_GMP AND NUV1MATH_GMPXX AND NOT NUV1MATH_SANITIZED)
  add_executable(roots_survey tools/roots_survey.cpp)
  target_compile_options(roots_survey PRIVATE -Wall -Wextra)
  target_link_libraries(roots_survey PRIVATE nuv1math_static nuv_floating_point ${NUV1MATH_GMPXX} ${NUV1MATH_GMP})
  nuv_add_test(roots_survey slow
    Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/pages/roots.py --check $<TARGET_FILE:roots_survey>)
endif()

# The tables of docs/accuracy.md against arithmetic of 120 digits. The test compares them with those in the page.
if(NUV1MATH_BUILD_APPS AND NUV1MATH_MPFR AND NUV1MATH_GMP AND NUV1MATH_BOOST AND NOT NUV1MATH_SANITIZED)
  add_executable(accuracy tools/accuracy.cpp tools/accuracy_roots.cpp)
  target_include_directories(accuracy PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_options(accuracy PRIVATE -Wall -Wextra)
  target_link_libraries(accuracy PRIVATE nuv::nuv1math nuv_floating_point Eigen3::Eigen
    ${NUV1MATH_MPFR} ${NUV1MATH_GMP})
  nuv_add_test(accuracy slow
    Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/pages/accuracy.py --check $<TARGET_FILE:accuracy>)
endif()

# What docs/figures show. The test compares the figures with what would be drawn now.
if(NOT NUV1MATH_SANITIZED AND NOT CMAKE_CROSSCOMPILING)
  add_executable(figure_geometry tools/figure_geometry.cpp)
  target_compile_options(figure_geometry PRIVATE -Wall -Wextra)
  target_link_libraries(figure_geometry PRIVATE nuv::nuv1math)
  nuv_add_test(figures quick
    Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/pages/figures.py --check $<TARGET_FILE:figure_geometry>)
endif()

# docs/message-box.png: the assertion report on a desktop that wine shows. Needs xvfb, xauth and imagemagick.
if(WIN32 AND CMAKE_CROSSCOMPILING_EMULATOR)
  set(show "$0 explorer /desktop=nuv1math,480x240 $1 --gtest_filter=ReportAsMessageBox.RetryEndsTheProcess >/dev/null")
  add_custom_target(message_box_picture VERBATIM COMMAND ${CMAKE_COMMAND} -E env NUV_MESSAGE_BOX_HOLD=6000
    NUV_WINE_SESSION=${PROJECT_BINARY_DIR}/wine xvfb-run -a -s "-screen 0 480x240x24"
    sh -c "${show} & sleep 5; import -window root $2 && wait"
    ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:public_tests> ${PROJECT_SOURCE_DIR}/docs/message-box.png)
  add_dependencies(message_box_picture public_tests)
endif()
