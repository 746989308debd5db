# Cuts the program out of the README, compiles it against the installed package and runs it.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(READ ${README} readme)
string(REGEX MATCH "```cpp\n(.*)\n```\n" found "${readme}")
if(NOT found)
  message(FATAL_ERROR "the README holds no program")
endif()
file(MAKE_DIRECTORY ${BINARY})
file(WRITE ${BINARY}/hello.cpp "${CMAKE_MATCH_1}\n")
compile_with_pkg_config(${BINARY}/hello.cpp ${BINARY}/hello.bin)
