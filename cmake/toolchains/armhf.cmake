# ARMv7 with hard float and glibc: Debian's package g++-arm-linux-gnueabihf.
set(tarvo_target armhf)
set(tarvo_triplet arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
