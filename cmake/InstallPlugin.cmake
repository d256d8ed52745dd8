# Installs the plugin, and what the author of a host builds against: find_package(vek5m) gives vek5m::interface,
# vek5m::portmanager and the plugin's file. docs/packages.md tells which folder holds what.
include(CMakePackageConfigHelpers)

set(PLUGIN_FOLDER ${CMAKE_INSTALL_LIBDIR}/vek5m/plugin)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vek5m)
set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/vek5m)
set(doc_folder ${CMAKE_INSTALL_DATADIR}/doc/vek5m-10-30k-plugin)

install(TARGETS plugin LIBRARY DESTINATION ${PLUGIN_FOLDER} COMPONENT plugin)
install(FILES docs/host-integration.md docs/serial.ini.sample DESTINATION ${doc_folder} COMPONENT plugin)
install(DIRECTORY docs/udev DESTINATION ${doc_folder} COMPONENT plugin)
install(DIRECTORY packaging/example/ DESTINATION ${doc_folder}/examples/host COMPONENT plugin)

set_target_properties(comm PROPERTIES EXPORT_NAME portmanager)
install(TARGETS interface comm EXPORT vek5m
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/vek5m COMPONENT development
  INCLUDES DESTINATION ${header_folder})
install(FILES
  client/interface/collectthread.h client/interface/collectview.h comm/portmanage.h comm/driverapi/porthandle.h
  DESTINATION ${header_folder} COMPONENT development)
install(EXPORT vek5m NAMESPACE vek5m:: FILE vek5m-targets.cmake DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/vek5m-config.cmake.in vek5m-config.cmake
  INSTALL_DESTINATION ${package_folder} PATH_VARS PLUGIN_FOLDER NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# The interface is an agreement between binaries: only its own version keeps it.
write_basic_package_version_file(vek5m-config-version.cmake COMPATIBILITY ExactVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/vek5m-config.cmake ${PROJECT_BINARY_DIR}/vek5m-config-version.cmake comm/hidapi.cmake
  DESTINATION ${package_folder} COMPONENT development)
