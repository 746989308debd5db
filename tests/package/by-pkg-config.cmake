include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(MAKE_DIRECTORY ${BINARY})
compile_with_pkg_config(${SOURCE}/main.cpp ${BINARY}/outside.bin)
expect_output("${EXPECTED}" ${BINARY}/outside.bin)
