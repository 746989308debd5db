# The library on a board's own base library instead of ours: built, installed, found, linked, run.

set(board ${CMAKE_CURRENT_BINARY_DIR}/board)

add_test(NAME BoardBase.CarriesTheLibrary
  COMMAND ${CMAKE_COMMAND}
    -D TARVO=${PROJECT_SOURCE_DIR} -D BINARY=${board}/build -D PREFIX=${board}/prefix
    -D TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE} -D "FLAGS=${CMAKE_CXX_FLAGS}"
    -P ${CMAKE_CURRENT_SOURCE_DIR}/BoardBase.cmake)
set_tests_properties(BoardBase.CarriesTheLibrary PROPERTIES FIXTURES_SETUP board)

add_test(NAME BoardBase.IsFoundByCMake
  COMMAND ${CMAKE_COMMAND}
    -D SOURCE=${outside} -D BINARY=${board}/by-cmake -D PREFIX=${board}/prefix
    -D TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE} -D "EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
    -D "FLAGS=${CMAKE_CXX_FLAGS}"
    -P ${CMAKE_CURRENT_SOURCE_DIR}/by-cmake.cmake)
add_test(NAME BoardBase.IsFoundByPkgConfig
  COMMAND ${CMAKE_COMMAND}
    -D SOURCE=${outside} -D BINARY=${board}/by-pkg-config -D PREFIX=${board}/prefix
    -D LIBDIR=lib -D COMPILER=${CMAKE_CXX_COMPILER}
    -D "EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}" -D "FLAGS=${CMAKE_CXX_FLAGS}"
    -P ${CMAKE_CURRENT_SOURCE_DIR}/by-pkg-config.cmake)
set_tests_properties(BoardBase.IsFoundByCMake BoardBase.IsFoundByPkgConfig
  PROPERTIES FIXTURES_REQUIRED board)
