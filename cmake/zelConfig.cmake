# Targets: zel::host (shared) and zel::host_static, the host kit; zel::zel (shared) and zel::zel_static, the tracker. Hosts write #include <zel/libzel.h>.
include(${CMAKE_CURRENT_LIST_DIR}/zelTargets.cmake)

# C++ inside, but nothing of its runtime: a host in C links the archive, too, as C.
foreach(zel_archive zel::zel_static zel::host_static)
  get_target_property(zel_configurations ${zel_archive} IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS zel_configurations)
    set_property(TARGET ${zel_archive} PROPERTY IMPORTED_LINK_INTERFACE_LANGUAGES_${configuration} "")
  endforeach()
endforeach()
unset(zel_archive)
unset(zel_configurations)
