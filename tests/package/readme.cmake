# Cuts the program out of the README, compiles it against the installed package and runs it.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(READ ${README} readme)
if(NOT readme MATCHES "```cpp\n(.*\n)```\n")
  message(FATAL_ERROR "the README holds no program")
endif()
file(MAKE_DIRECTORY ${BINARY})
file(WRITE ${BINARY}/hello.cpp "${CMAKE_MATCH_1}")
compile_with_pkg_config(${BINARY}/hello.cpp ${BINARY}/hello)
set(date "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9].[0-9]+")
expect_output("^${date} [-+][0-9]+ info: Hello board\n$" ${BINARY}/hello --name board)
expect_output("^${date} [-+][0-9]+ info: Hello world\n$" ${BINARY}/hello)
