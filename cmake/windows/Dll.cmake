# SPDX-License-Identifier: MIT
#
# What the library is on Windows alone: its name, its version resource, and its exports for programs of Microsoft's
# compiler.

enable_language(RC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/nuv1math.rc.in ${PROJECT_BINARY_DIR}/nuv1math.rc @ONLY)
target_sources(nuv1math PRIVATE ${PROJECT_BINARY_DIR}/nuv1math.rc)
set_target_properties(nuv1math PROPERTIES PREFIX "") # nuv1math.dll, as Windows names libraries
if(MSVC)
  return()
endif()

# The linker would store the time. Without it two builds are the same bytes.
target_link_options(nuv1math PRIVATE LINKER:--no-insert-timestamp)

# Each function is exported under its GCC name, as the header says, and under its Microsoft name. llvm-dlltool makes the
# import library of the latter. Without that tool the DLL is complete, but no import library for Microsoft's linker is
# made.
set(machine x64)
set(llvm_machine i386:x86-64)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(machine x86)
  set(llvm_machine i386)
endif()
set(exports ${CMAKE_CURRENT_LIST_DIR}/exports-${machine}.def)
target_sources(nuv1math PRIVATE ${exports})

find_program(NUV1MATH_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(NUV1MATH_DLLTOOL)
  set(NUV1MATH_MSVC_LIBRARY ${PROJECT_BINARY_DIR}/nuv1math.lib)
  add_custom_command(OUTPUT ${NUV1MATH_MSVC_LIBRARY}
    COMMAND ${NUV1MATH_DLLTOOL} -m ${llvm_machine} -d ${exports} -l ${NUV1MATH_MSVC_LIBRARY} -D nuv1math.dll
    DEPENDS ${exports} VERBATIM)
  add_custom_target(nuv1math_msvc_library ALL DEPENDS ${NUV1MATH_MSVC_LIBRARY})
  set(NUV1MATH_MSVC_LIBRARY ${NUV1MATH_MSVC_LIBRARY} PARENT_SCOPE)
endif()
