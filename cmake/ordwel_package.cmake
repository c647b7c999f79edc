# SPDX-License-Identifier: MIT
# Debian packages with `cpack -G DEB` from a build configured with CMAKE_INSTALL_PREFIX=/usr (the
# package preset), split as Debian splits a library:
#   libordwel<soversion>  the shared library (component runtime), named after its SONAME
#   libordwel-dev         headers, the link name, the CMake package and ordwel.pc (component dev)
#   ordwel-tools          the ordwel toolbox (component tools)
# Each carries /usr/share/doc/<package>/copyright; dpkg-shlibdeps works out what the packages need
# of the system, and the packages depend on each other at the exact version.
set(CPACK_PACKAGE_NAME ordwel)
set(CPACK_PACKAGE_VENDOR "ordwel developers")
set(CPACK_PACKAGE_CONTACT "ordwel developers <ordwel@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_GENERATOR DEB)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
if(ORDWEL_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(l_runtime_package "libordwel${ORDWEL_SOVERSION}")
set(l_version_dependency "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# dpkg-shlibdeps looks for the tool's libordwel among the files being packaged.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${l_runtime_package}")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared library)
 The one shared library of ordwel: failure reporting, byte buffers and streams, bit and byte
 cursors, codecs, exact fractions, timestamps and timecode, string, path and URL helpers, locks,
 threads and a call queue, files, child processes, an option parser and a self-test registry.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libordwel-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${l_runtime_package} ${l_version_dependency}")
set(CPACK_DEBIAN_DEV_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)
 Headers, the CMake package (find_package(ordwel)) and the pkg-config file of ordwel.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ordwel-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${l_runtime_package} ${l_version_dependency}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION} (toolbox)
 The ordwel command: the library's self-test, timecode, URL and path helpers, hex dumps.")

# The copyright file of each package, in Debian's machine-readable form.
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" l_license)
string(REGEX REPLACE "\n\n" "\n.\n" l_license_body "${l_license}")
string(REGEX REPLACE "\n" "\n " l_license_body "${l_license_body}")
file(WRITE "${PROJECT_BINARY_DIR}/copyright"
  "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
  "Upstream-Name: ordwel\n\nFiles: *\nCopyright: ordwel developers\nLicense: MIT\n ${l_license_body}\n")
foreach(l_component runtime dev tools)
  string(TOUPPER ${l_component} l_upper)
  if(DEFINED CPACK_DEBIAN_${l_upper}_PACKAGE_NAME)
    set(l_package ${CPACK_DEBIAN_${l_upper}_PACKAGE_NAME})
  else()
    set(l_package ${l_runtime_package})
  endif()
  install(FILES "${PROJECT_BINARY_DIR}/copyright" DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${l_package}
    COMPONENT ${l_component})
endforeach()

include(CPack)
