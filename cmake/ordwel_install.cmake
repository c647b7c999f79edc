# SPDX-License-Identifier: MIT
# Installation: the library (component runtime), what a developer builds against (component dev:
# headers, the link name, the static archive, the CMake package and ordwel.pc). The toolbox installs
# itself as component tools (code/tools/ordwel). The components become the Debian packages of
# cmake/ordwel_package.cmake.
include(CMakePackageConfigHelpers)
set(ORDWEL_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ordwel")

install(TARGETS ordwel EXPORT ordwelTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY code/lib/ordwel/include/ordwel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES "${PROJECT_BINARY_DIR}/include/ordwel/version.h"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ordwel COMPONENT dev)
install(EXPORT ordwelTargets NAMESPACE ordwel:: DESTINATION ${ORDWEL_CMAKE_DIR} COMPONENT dev)

# While the version is 0.x, every minor version may change the binary interface: the SONAME
# carries major.minor (code/lib/ordwel/CMakeLists.txt), and the CMake package accepts only the
# same minor version. From 1.0 on, the major version alone decides.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(l_compatibility SameMinorVersion)
else()
  set(l_compatibility SameMajorVersion)
endif()
configure_package_config_file(cmake/ordwelConfig.cmake.in
  "${PROJECT_BINARY_DIR}/ordwelConfig.cmake"
  INSTALL_DESTINATION ${ORDWEL_CMAKE_DIR})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ordwelConfigVersion.cmake"
  COMPATIBILITY ${l_compatibility})
install(FILES "${PROJECT_BINARY_DIR}/ordwelConfig.cmake" "${PROJECT_BINARY_DIR}/ordwelConfigVersion.cmake"
  DESTINATION ${ORDWEL_CMAKE_DIR} COMPONENT dev)

if(BUILD_SHARED_LIBS)
  set(ORDWEL_PC_CFLAGS "")
  set(ORDWEL_PC_LIBS_PRIVATE "")
else()
  set(ORDWEL_PC_CFLAGS "-DORDWEL_STATIC")
  set(ORDWEL_PC_LIBS_PRIVATE "-pthread")
endif()
# The pkg-config file finds its prefix relative to itself, so an installed tree can be moved.
file(RELATIVE_PATH ORDWEL_PC_PREFIX_FROM_PCDIR "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
configure_file(cmake/ordwel.pc.in "${PROJECT_BINARY_DIR}/ordwel.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ordwel.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
