# What the ARM targets share. A target's file sets
#   tarvo_target   its name, which is also its folder below build/toolchains
#   tarvo_triplet  the prefix of Debian's cross tools
get_filename_component(tarvo_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(tarvo_cache ${tarvo_root}/build/toolchains/${tarvo_target})

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER ${tarvo_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${tarvo_triplet}-g++)

# Packages are looked for below these folders alone; -DCMAKE_FIND_ROOT_PATH adds others.
if(tarvo_target MATCHES musl)
  if(NOT EXISTS ${tarvo_cache}/sysroot/musl.specs)
    message(FATAL_ERROR "No musl toolchain yet: scripts/test-arm.sh ${tarvo_target} makes it.")
  endif()
  list(APPEND CMAKE_FIND_ROOT_PATH ${tarvo_cache}/gtest ${tarvo_cache}/sysroot)
  set(CMAKE_C_FLAGS_INIT -specs=${tarvo_cache}/sysroot/musl.specs)
  set(CMAKE_CXX_FLAGS_INIT -specs=${tarvo_cache}/sysroot/musl.specs)
else()
  list(APPEND CMAKE_FIND_ROOT_PATH ${tarvo_cache}/gtest /usr/${tarvo_triplet})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${tarvo_root}/scripts/arm/run-arm ${tarvo_target})
