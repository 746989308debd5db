# The build, install and package files use nothing that CMake 3.16 lacks.
set(newer "cmake_path|FILE_SET|PROJECT_IS_TOP_LEVEL|cmake_language|COMMAND_ERROR_IS_FATAL|\
list\\((POP_FRONT|POP_BACK|PREPEND)[ \n]+CMAKE_MODULE_PATH|cmake_policy\\(VERSION 3\\.(1[7-9]|2)|\
block\\(|GENEX_EVAL:|PATH:|IN ZIP_LISTS|file\\((REAL_PATH|ARCHIVE|CONFIGURE|CHMOD|COPY_FILE)|\
string\\((JSON|HEX)")
file(GLOB_RECURSE files ${TARVO}/CMakeLists.txt ${TARVO}/*/CMakeLists.txt ${TARVO}/cmake/*.cmake
  ${TARVO}/cmake/*.in ${PREFIX}/*.cmake)
list(FILTER files EXCLUDE REGEX "/(tests|bench|build|examples)/")
list(LENGTH files count)
if(count LESS 15)
  message(FATAL_ERROR "only ${count} files were looked at")
endif()
foreach(file IN LISTS files)
  file(READ ${file} text)
  if(text MATCHES "${newer}")
    message(FATAL_ERROR "${file} uses ${CMAKE_MATCH_0}, which CMake 3.16 does not know")
  endif()
endforeach()
