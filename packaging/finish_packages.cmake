# SPDX-License-Identifier: MIT
#
# CPack runs this script when the packages are made. It takes the scripts that call ldconfig out of the packages
# of the libraries: the trigger does that, and CPack of Debian 12 cannot be told so.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  get_filename_component(name ${package} NAME)
  if(name MATCHES "^libnuv1math(-c)?[0-9]")
    set(contents ${CPACK_TEMPORARY_DIRECTORY}/repacked)
    file(REMOVE_RECURSE ${contents})
    foreach(command IN ITEMS "dpkg-deb;-R;${package};${contents}"
        "rm;${contents}/DEBIAN/postinst;${contents}/DEBIAN/postrm"
        "dpkg-deb;--root-owner-group;-Zgzip;-b;${contents};${package}")
      execute_process(COMMAND ${command} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
  endif()
endforeach()
