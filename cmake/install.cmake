# What `cmake --install` installs for authors of tools, libraries and rigs: find_package(velq) gives the target
# velq::velq, pkg-config the module velq. Programs, pages and completions are installed where they are built.

include(CMakePackageConfigHelpers)

set(VELQ_CMAKE_DIR ${CMAKE_INSTALL_DATADIR}/cmake/velq)
set_target_properties(velq_headers PROPERTIES EXPORT_NAME velq)
install(TARGETS velq_headers EXPORT velq)
install(EXPORT velq NAMESPACE velq:: FILE velqConfig.cmake DESTINATION ${VELQ_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/velqConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
configure_file(cmake/velq.pc.in velq.pc @ONLY)
install(DIRECTORY include/velq DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_BINARY_DIR}/velqConfigVersion.cmake DESTINATION ${VELQ_CMAKE_DIR})
install(FILES ${CMAKE_BINARY_DIR}/velq.pc DESTINATION ${CMAKE_INSTALL_DATADIR}/pkgconfig)
install(FILES docs/library.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvelq-dev)
install(DIRECTORY examples/minimal-library DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvelq-dev/examples)

# Laid out as in the sources, so that links and commands of the pages hold.
set(QUTIL_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/qutil)
install(FILES LICENSE DESTINATION ${QUTIL_DOC_DIR})
install(FILES docs/operating.md docs/fleet.md docs/limits.md DESTINATION ${QUTIL_DOC_DIR}/docs)
install(DIRECTORY examples/fleet DESTINATION ${QUTIL_DOC_DIR}/examples)
install(FILES docs/simulator.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velq-sim/docs)

install(FILES src/simulator/rig/builtin_rig.json DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/velq-sim/examples)
install(FILES src/simulator/rig/rig.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/velq-sim)
