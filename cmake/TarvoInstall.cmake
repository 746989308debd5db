# Install tree, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

set(tarvo_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/tarvo-ext)
set(tarvo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/TarvoExt)

if(TARVO_BASE STREQUAL "build")
  install(TARGETS TarvoBase EXPORT TarvoExtTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${tarvo_include_dir})
else()
  install(FILES cmake/FindTarvoBase.cmake DESTINATION ${tarvo_package_dir})
  # For the pkg-config file: where the board's base library is, as the board's root sees it.
  cmake_path(GET TARVO_BASE_LIBRARY PARENT_PATH tarvo_base_libs)
  string(REGEX REPLACE "^${CMAKE_SYSROOT}/" "-L/" tarvo_base_libs ${tarvo_base_libs})
  string(REGEX REPLACE "^${CMAKE_SYSROOT}/" "-I/" tarvo_base_cflags ${TARVO_BASE_INCLUDE_DIR})
endif()
install(TARGETS TarvoExt EXPORT TarvoExtTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${tarvo_include_dir})
install(EXPORT TarvoExtTargets NAMESPACE Tarvo:: DESTINATION ${tarvo_package_dir})

configure_package_config_file(cmake/TarvoExtConfig.cmake.in TarvoExtConfig.cmake
  INSTALL_DESTINATION ${tarvo_package_dir})
write_basic_package_version_file(TarvoExtConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/TarvoExtConfig.cmake
    ${PROJECT_BINARY_DIR}/TarvoExtConfigVersion.cmake
  DESTINATION ${tarvo_package_dir})

# The package can be moved: the prefix is told from where the file lies.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE tarvo_pc_to_prefix)
configure_file(cmake/tarvo-ext.pc.in tarvo-ext.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarvo-ext.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs FILES_MATCHING PATTERN "*.md")
