# 64-bit RISC-V Linux.
set(triplet riscv64-linux-gnu)
set(emulated riscv64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
set(CMAKE_SYSTEM_PROCESSOR riscv64)
