# SPDX-License-Identifier: MIT
#
# What a library is on Windows alone: its name, its version resource, and what programs of Microsoft's compiler link.

enable_language(RC)

# nuv1math_dll(<target> <exports>): makes the library <target>.dll. The linker of mingw-w64 takes more names of the
# exported functions from the file <exports>, and llvm-dlltool makes the import library for Microsoft's linker from it.
# Without that tool the DLL is complete, but there is no such import library.
function(nuv1math_dll target exports)
  set(dll ${target}.dll)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/nuv1math.rc.in ${PROJECT_BINARY_DIR}/${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${PROJECT_BINARY_DIR}/${target}.rc)
  set_target_properties(${target} PROPERTIES PREFIX "") # as Windows names libraries
  if(MSVC)
    return()
  endif()

  # The linker would store the time. Without it two builds are the same bytes.
  target_link_options(${target} PRIVATE LINKER:--no-insert-timestamp)
  target_sources(${target} PRIVATE ${exports})
  set(machine i386:x86-64)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(machine i386)
  endif()
  find_program(NUV1MATH_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(NUV1MATH_DLLTOOL)
    set(library ${PROJECT_BINARY_DIR}/${target}.lib)
    add_custom_command(OUTPUT ${library}
      COMMAND ${NUV1MATH_DLLTOOL} -m ${machine} -d ${exports} -l ${library} -D ${dll} DEPENDS ${exports} VERBATIM)
    add_custom_target(${target}_msvc_library ALL DEPENDS ${library})
    set_property(GLOBAL APPEND PROPERTY NUV1MATH_MSVC_LIBRARIES ${library})
  endif()
endfunction()
