# The library as static archives: built, installed and uninstalled, found, linked, run.

set(static ${CMAKE_CURRENT_BINARY_DIR}/static)

tarvo_add_package_test(Static.InstallsAndUninstalls static.cmake
  TARVO=${PROJECT_SOURCE_DIR} BINARY=${static}/build "PREFIX=${static}/a prefix" LIBDIR=lib)
set_tests_properties(Static.InstallsAndUninstalls PROPERTIES FIXTURES_SETUP static)

tarvo_add_package_test(Static.IsFoundByCMake by-cmake.cmake
  SOURCE=${outside} BINARY=${static}/by-cmake "PREFIX=${static}/a prefix")
tarvo_add_package_test(Static.IsFoundByPkgConfig by-pkg-config.cmake
  SOURCE=${outside} BINARY=${static}/by-pkg-config "PREFIX=${static}/a prefix" LIBDIR=lib)
tarvo_add_package_test(Static.IsAnImportedTargetOfPkgConfig by-cmake.cmake
  SOURCE=${outside}-pkg-config BINARY=${static}/by-imported-target
  "PREFIX=${static}/a prefix" LIBDIR=lib)
set_tests_properties(
  Static.IsFoundByCMake Static.IsFoundByPkgConfig Static.IsAnImportedTargetOfPkgConfig
  PROPERTIES FIXTURES_REQUIRED static)

tarvo_add_package_test(Static.BuildsAsASubproject subproject.cmake
  SOURCE=${CMAKE_CURRENT_SOURCE_DIR}/subproject TARVO=${PROJECT_SOURCE_DIR}
  BINARY=${static}/as-subproject SHARED=OFF)
