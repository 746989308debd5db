# ARMv5 with soft float and musl, made by scripts/test-arm.sh.
set(tarvo_target musl-armel)
set(tarvo_triplet arm-linux-gnueabi)
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
