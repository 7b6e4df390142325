# Targets: zel::zel and zel::zel_static, the tracker; zel::host and zel::host_static, the host kit. Without a suffix
# they are the shared ones, if those were built. Hosts write #include <zel/libzel.h>.
include(${CMAKE_CURRENT_LIST_DIR}/zelTargets.cmake)

foreach(zel_kind zel host)
  # C++ inside, but nothing of its runtime: a host in C links the archive, too, as C.
  get_target_property(zel_configurations zel::${zel_kind}_static IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS zel_configurations)
    set_property(TARGET zel::${zel_kind}_static PROPERTY IMPORTED_LINK_INTERFACE_LANGUAGES_${configuration} "")
  endforeach()
  if(NOT TARGET zel::${zel_kind})
    add_library(zel::${zel_kind} INTERFACE IMPORTED)
    set_property(TARGET zel::${zel_kind} PROPERTY INTERFACE_LINK_LIBRARIES zel::${zel_kind}_static)
  endif()
endforeach()
unset(zel_kind)
unset(zel_configurations)
