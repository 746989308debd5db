# ARMv7 with hard float and musl, made by scripts/test-arm.sh.
set(tarvo_target musl-armhf)
set(tarvo_triplet arm-linux-gnueabihf)
include(${CMAKE_CURRENT_LIST_DIR}/debian-arm.cmake)
