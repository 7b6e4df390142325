# What `cmake --install` lays down, in the three parts that become Debian packages: the shared library, what a developer
# needs, and the command.
include(CMakePackageConfigHelpers)
set(ZEL_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zel)

get_property(libraries GLOBAL PROPERTY ZEL_LIBRARIES)
install(TARGETS ${libraries} EXPORT zelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT zel_runtime NAMELINK_COMPONENT zel_development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT zel_development)
# With the headers the filter's source, for hosts that need its fields.
install(FILES src/libzel.h src/_libzel.h src/zel_kalman.cpp host/host.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zel COMPONENT zel_development)

# The package of CMake. It stays where the library is, so that a tree may be moved.
install(EXPORT zelTargets NAMESPACE zel:: DESTINATION ${ZEL_CONFIG_DIR} COMPONENT zel_development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/zelConfig.cmake ${PROJECT_BINARY_DIR}/zelConfigVersion.cmake
  DESTINATION ${ZEL_CONFIG_DIR} COMPONENT zel_development)

# That of pkg-config, which finds the tree from its own place.
file(RELATIVE_PATH ZEL_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" ZEL_PC_PREFIX ${ZEL_PC_PREFIX})
foreach(name zel zelhost)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/zel.pc ${PROJECT_BINARY_DIR}/zelhost.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT zel_development)

if(ZEL_BUILD_TOOLS)
  install(TARGETS zeltrack DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT zel_tools)
  install(FILES docs/zeltrack.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT zel_tools)
  install(FILES tools/zeltrack.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME zeltrack COMPONENT zel_tools)
endif()

# Where GStreamer looks for plugins, if the prefix is the one it was built for; else GST_PLUGIN_PATH says so.
if(TARGET gstzel)
  install(TARGETS gstzel DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT zel_gstreamer)
endif()

# Where Debian's Python looks; for another prefix, that place goes into PYTHONPATH.
if(ZEL_BUILD_PYTHON)
  install(DIRECTORY python/zel DESTINATION lib/python3/dist-packages COMPONENT zel_python PATTERN __pycache__ EXCLUDE)
endif()

if(TARGET zel)  # the Debian packages are made around it
  include(ZelPackages)
endif()
