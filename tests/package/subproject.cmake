# What the tree leaves alone in a project that it is a part of: the parent's tests, the parent's
# choice between shared and static libraries, the parent's installation.
include(${CMAKE_CURRENT_LIST_DIR}/by-cmake.cmake)

file(STRINGS ${BINARY}/CMakeCache.txt foreign REGEX "^(BUILD_TESTING|BUILD_SHARED_LIBS):")
if(foreign AND NOT DEFINED SHARED)
  message(FATAL_ERROR "put into the parent's cache: ${foreign}")
endif()
run(${CMAKE_COMMAND} --install ${BINARY} --prefix ${BINARY}/installed)
expect_files(${BINARY}/installed "")
file(GLOB_RECURSE shared_objects ${BINARY}/*.so)
if(DEFINED SHARED AND shared_objects)
  message(FATAL_ERROR "shared where static libraries were asked for: ${shared_objects}")
endif()
