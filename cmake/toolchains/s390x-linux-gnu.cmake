# Linux on a machine with the other byte order. Nobody is known to track there; it finds what depends on the order.
set(triplet s390x-linux-gnu)
set(emulated s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_SYSTEM_PROCESSOR s390x)
