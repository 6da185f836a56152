# What `cmake --install` installs beside the programs, and the Debian packages, one a component:
#
#   qutil        qutil            the tool
#   simulator    velq-sim         the simulator and the probe in their private folder, and velq-sim
#   compliance   velq-compliance  the checker
#   development  libvelq-dev      the headers, for authors of tools and libraries; the same for every architecture
#
# Programs, pages and completions are installed where they are built. From the build tree of the preset "release": cpack.

include(CMakePackageConfigHelpers)

# The development package: find_package(velq) gives the target velq::velq, pkg-config the module velq.
set(VELQ_CMAKE_DIR ${CMAKE_INSTALL_DATADIR}/cmake/velq)
set_target_properties(velq_headers PROPERTIES EXPORT_NAME velq)
install(TARGETS velq_headers EXPORT velq)
install(EXPORT velq NAMESPACE velq:: FILE velqConfig.cmake DESTINATION ${VELQ_CMAKE_DIR} COMPONENT development)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/velqConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
configure_file(cmake/velq.pc.in velq.pc @ONLY)
install(DIRECTORY include/velq DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/velqConfigVersion.cmake DESTINATION ${VELQ_CMAKE_DIR} COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/velq.pc DESTINATION ${CMAKE_INSTALL_DATADIR}/pkgconfig COMPONENT development)
install(FILES docs/library.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvelq-dev COMPONENT development)
install(DIRECTORY examples/minimal-library DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvelq-dev/examples
  COMPONENT development)

install(FILES src/simulator/builtin_rig.json DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velq-sim/examples
  COMPONENT simulator)

# The changelog's first line says which release of which version is packaged.
file(STRINGS cmake/changelog.Debian CHANGELOG_HEAD LIMIT_COUNT 1)
if(NOT CHANGELOG_HEAD MATCHES "^qutil \\(${PROJECT_VERSION}-([0-9]+)\\) ")
  message(FATAL_ERROR "cmake/changelog.Debian begins with \"${CHANGELOG_HEAD}\", not with version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})

# The licence as a paragraph of a Debian copyright file: indented, with a dot on each empty line.
file(READ LICENSE LICENSE_PARAGRAPHS)
string(REGEX REPLACE "^[^\n]*\n\n" "" LICENSE_PARAGRAPHS "${LICENSE_PARAGRAPHS}")
string(STRIP "${LICENSE_PARAGRAPHS}" LICENSE_PARAGRAPHS)
string(REGEX REPLACE "\n" "\n " LICENSE_PARAGRAPHS " ${LICENSE_PARAGRAPHS}")
string(REPLACE "\n \n" "\n .\n" LICENSE_PARAGRAPHS "${LICENSE_PARAGRAPHS}")
configure_file(cmake/copyright.in debian/copyright @ONLY)
execute_process(COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/cmake/changelog.Debian
  OUTPUT_FILE ${CMAKE_BINARY_DIR}/debian/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)

# Describes the package of a component. Arguments: component, package, section, and then what stands in its Description
# field, the synopsis on the first line.
function(add_debian_package component package section description)
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION ${description} PARENT_SCOPE)
  # Left out of `cmake --install`: these are for packages only.
  install(FILES ${CMAKE_BINARY_DIR}/debian/copyright ${CMAKE_BINARY_DIR}/debian/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES cmake/lintian/${package} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
endfunction()

add_debian_package(qutil qutil utils
"console tool for Quellis data-acquisition boards
qutil lists the data-acquisition boards of a computer, reports their details,
renames and renumbers them, overwrites their firmware, calibrates them, and
combines boards to fusion devices.
.
It reaches the boards through the vendor's device library, libvelq.so, which
comes with the vendor's driver and is no Debian package: install that too.
To try qutil without boards, install velq-sim.")

add_debian_package(simulator velq-sim utils
"simulator of Quellis data-acquisition boards
velq-sim runs a command, such as qutil, on simulated boards, which are
described in a file and keep what commands change. On request it traces the
calls of the device library, or has calls fail on purpose.
.
The simulated device library lies in a private folder, where nothing but
velq-sim looks for it: it never stands in for real boards by accident.")

add_debian_package(compliance velq-compliance devel
"checker for Quellis device libraries
velq-compliance loads a device library, libvelq.so, and checks what tools such
as qutil rely on: the one exported entry, complete tables, texts within their
capacity, stable arrays, statuses and nulls as promised, and that a read
changes nothing. Checks that change boards run on request, and put everything
back.")

add_debian_package(development libvelq-dev libdevel
"development files for Quellis device libraries and their tools
These C++20 headers are the boundary between tools such as qutil and the
device library libvelq.so. They serve authors of either side.
.
There are a CMake package, a pkg-config file, a guide for authors of a device
library, and a minimal library to start from.")

# libvelq.so is no package's, so qutil's dependencies cannot name it; the package's description does. The simulator is only
# suggested: a computer with boards has no need of it, and qutil does not find it on its own.
set(CPACK_DEBIAN_QUTIL_PACKAGE_SUGGESTS velq-sim)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_RECOMMENDS qutil)
# Loaded with its first use, so the dependency does not show in the library.
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_DEPENDS libsqlite3-0)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_SUGGESTS velq-compliance)
set(CPACK_DEBIAN_COMPLIANCE_PACKAGE_SUGGESTS libvelq-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "velq-compliance, velq-sim")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_ARCHITECTURE all)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE qutil)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "qutil maintainers <maintainers@example.org>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/${SIMULATOR_DIR})
include(CPack)
