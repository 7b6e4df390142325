# The target: 64-bit ARM Linux on a Cortex-A53.
set(triplet aarch64-linux-gnu)
set(emulated aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_FLAGS_INIT -mcpu=cortex-a53)
set(CMAKE_CXX_FLAGS_INIT -mcpu=cortex-a53)
