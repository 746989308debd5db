# The library on a board's own base library instead of ours: built, installed, found, linked, run.

set(board ${CMAKE_CURRENT_BINARY_DIR}/board)

tarvo_add_package_test(BoardBase.CarriesTheLibrary BoardBase.cmake
  TARVO=${PROJECT_SOURCE_DIR} BINARY=${board}/build "PREFIX=${board}/a prefix")
set_tests_properties(BoardBase.CarriesTheLibrary PROPERTIES FIXTURES_SETUP board)

tarvo_add_package_test(BoardBase.IsFoundByCMake by-cmake.cmake
  SOURCE=${outside} BINARY=${board}/by-cmake "PREFIX=${board}/a prefix")
tarvo_add_package_test(BoardBase.IsFoundByPkgConfig by-pkg-config.cmake
  SOURCE=${outside} BINARY=${board}/by-pkg-config "PREFIX=${board}/a prefix" LIBDIR=lib)
set_tests_properties(BoardBase.IsFoundByCMake BoardBase.IsFoundByPkgConfig
  PROPERTIES FIXTURES_REQUIRED board)
