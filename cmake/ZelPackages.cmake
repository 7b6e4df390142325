# `cpack -G DEB`: libzel1, libzel-dev and zel-tools. Configure with -DCMAKE_INSTALL_PREFIX=/usr, so that the libraries go
# where Debian has them. A cross build gives the packages of its target.
set(CPACK_PACKAGE_NAME libzel)
set(CPACK_PACKAGE_VENDOR "The libzel authors")
set(CPACK_PACKAGE_CONTACT "The libzel authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL zel_runtime zel_development)
if(ZEL_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL zel_tools)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_SOURCE_GENERATOR "")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(about "Numbered tracks out of the boxes that an object detector finds, frame by frame.")

set(CPACK_DEBIAN_ZEL_RUNTIME_PACKAGE_NAME libzel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_ZEL_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_ZEL_RUNTIME_DESCRIPTION "Multi-object tracking, shared library\n${about}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_ZEL_DEVELOPMENT_PACKAGE_NAME libzel-dev)
set(CPACK_DEBIAN_ZEL_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_ZEL_DEVELOPMENT_PACKAGE_DEPENDS "libzel${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_ZEL_DEVELOPMENT_DESCRIPTION "Multi-object tracking, headers and static library\n${about}")

set(CPACK_DEBIAN_ZEL_TOOLS_PACKAGE_NAME zel-tools)
set(CPACK_DEBIAN_ZEL_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_ZEL_TOOLS_DESCRIPTION "Multi-object tracking, command\n${about}")

# The dependencies are read from the files; those of another architecture, which cannot be, are those of Debian 12.
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_ZEL_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.36)")
  set(CPACK_DEBIAN_ZEL_TOOLS_PACKAGE_DEPENDS "libc6 (>= 2.36), libstdc++6 (>= 12), libgcc-s1 (>= 12)")
  string(REPLACE aarch64 arm64 CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

# The licence goes where Debian looks for it, but only into the packages.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    RENAME copyright COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
include(CPack)
