# ARMv5 with soft float and glibc: Debian's package g++-arm-linux-gnueabi.
set(tarvo_target armel)
set(tarvo_triplet arm-linux-gnueabi)
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
