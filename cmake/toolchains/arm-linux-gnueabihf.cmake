# A Cortex-A53 under a 32-bit userland, with NEON, which Debian's compiler leaves out by default.
set(triplet arm-linux-gnueabihf)
set(emulated arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_FLAGS_INIT "-mcpu=cortex-a53 -mfpu=neon-fp-armv8")
set(CMAKE_CXX_FLAGS_INIT "-mcpu=cortex-a53 -mfpu=neon-fp-armv8")
