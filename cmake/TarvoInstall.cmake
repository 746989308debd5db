# Install tree, CMake package and pkg-config file. Components: Runtime (shared libraries), Development
# (headers, packages, static libraries), Documentation, Tools.
include(CMakePackageConfigHelpers)

set(tarvo_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/TarvoExt)
set(tarvo_libraries TarvoExt)

if(TARVO_BASE STREQUAL "build")
  list(APPEND tarvo_libraries TarvoBase)
else()
  install(FILES cmake/FindTarvoBase.cmake DESTINATION ${tarvo_package_dir} COMPONENT Development)
  # The one header of base/ that is not the board's: ours say by it what their mutexes guard.
  install(FILES base/KorThreadSafety.h DESTINATION ${tarvo_include_dir}/base COMPONENT Development)
  # For the pkg-config file: where the board's base library is, as the board's root sees it.
  get_filename_component(tarvo_base_lib_dir "${TARVO_BASE_LIBRARY}" DIRECTORY)
  string(REGEX REPLACE "^${CMAKE_SYSROOT}/" "/" tarvo_base_lib_dir "${tarvo_base_lib_dir}")
  string(REGEX REPLACE "^${CMAKE_SYSROOT}/" "/" tarvo_base_include_dir "${TARVO_BASE_INCLUDE_DIR}")
  string(REPLACE " " "\\ " tarvo_pc_base_libs "-L${tarvo_base_lib_dir}")
  string(REPLACE " " "\\ " tarvo_pc_base_cflags "-I${tarvo_base_include_dir}")
endif()
install(TARGETS ${tarvo_libraries} EXPORT TarvoExtTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
install(EXPORT TarvoExtTargets NAMESPACE Tarvo:: DESTINATION ${tarvo_package_dir}
  COMPONENT Development)

configure_package_config_file(cmake/TarvoExtConfig.cmake.in TarvoExtConfig.cmake
  INSTALL_DESTINATION ${tarvo_package_dir})
write_basic_package_version_file(TarvoExtConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/TarvoExtConfig.cmake
    ${PROJECT_BINARY_DIR}/TarvoExtConfigVersion.cmake
  DESTINATION ${tarvo_package_dir} COMPONENT Development)

# The package can be moved: the prefix is told from where the file lies.
file(RELATIVE_PATH tarvo_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
if(NOT BUILD_SHARED_LIBS)
  set(tarvo_pc_static "-Wl,--gc-sections -pthread")
endif()
configure_file(cmake/tarvo-ext.pc.in tarvo-ext.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarvo-ext.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT Development)

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT Documentation
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png"
    PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation
  PATTERN CMakeLists.txt EXCLUDE)

if(tarvo_top_level)
  add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR} VERBATIM)
endif()
