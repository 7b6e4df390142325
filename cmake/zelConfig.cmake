# Targets: zel::zel (shared) and zel::zel_static. Hosts write #include <zel/libzel.h>.
include(${CMAKE_CURRENT_LIST_DIR}/zelTargets.cmake)

# C++ inside, but nothing of its runtime: a host in C links the archive, too, as C.
get_target_property(zel_configurations zel::zel_static IMPORTED_CONFIGURATIONS)
foreach(configuration IN LISTS zel_configurations)
  set_property(TARGET zel::zel_static PROPERTY IMPORTED_LINK_INTERFACE_LANGUAGES_${configuration} "")
endforeach()
unset(zel_configurations)
