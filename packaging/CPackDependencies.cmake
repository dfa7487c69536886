# Read by cpack as it makes the Debian package: Depends and Recommends, worked out from the
# binaries by dpkg-shlibdeps, the tool Debian's own packages use. CPack's built-in run would put
# every binary's libraries into Depends, GTK's with them; here the dialog module's libraries go to
# Recommends, so that Kestrail installs and runs without GTK.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
if(NOT DPKG_SHLIBDEPS)
  message(FATAL_ERROR "dpkg-shlibdeps (package dpkg-dev) is needed to work out the dependencies")
endif()

# dpkg-shlibdeps wants a source package's control file in its working folder; an empty one does.
set(work "${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps")
file(MAKE_DIRECTORY "${work}/debian")
file(WRITE "${work}/debian/control" "")
set(recommended)
if(CPACK_KESTRAIL_MODULES)
  set(recommended -dRecommends ${CPACK_KESTRAIL_MODULES})
endif()
execute_process(
  COMMAND ${DPKG_SHLIBDEPS} -O ${CPACK_KESTRAIL_EXECUTABLES} ${recommended}
  WORKING_DIRECTORY "${work}"
  OUTPUT_VARIABLE substitutions
  ERROR_VARIABLE errors
  RESULT_VARIABLE status)
file(REMOVE_RECURSE "${work}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "dpkg-shlibdeps failed: ${errors}")
endif()

# Its output is one "shlibs:Field=value" line per field; a library in Depends is left out of
# Recommends already.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "${CPACK_KESTRAIL_RECOMMENDS}")
string(REPLACE "\n" ";" lines "${substitutions}")
foreach(line IN LISTS lines)
  if(line MATCHES "^shlibs:Depends=(.*)$")
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "${CMAKE_MATCH_1}")
  elseif(line MATCHES "^shlibs:Recommends=(.*)$")
    set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "${CMAKE_MATCH_1}, ${CPACK_KESTRAIL_RECOMMENDS}")
  endif()
endforeach()
