# Finds the base library that a board brings itself, libTarvoRelease.so and base/KorThread.h, in
# the sysroot or along CMAKE_PREFIX_PATH, and makes the imported target Tarvo::Base.
find_library(TARVO_BASE_LIBRARY libTarvoRelease.so
  DOC "The board's own libTarvoRelease.so")
find_path(TARVO_BASE_INCLUDE_DIR base/KorThread.h PATH_SUFFIXES tarvo-ext
  DOC "The folder above the base library's base/KorThread.h")
mark_as_advanced(TARVO_BASE_LIBRARY TARVO_BASE_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(TarvoBase
  REQUIRED_VARS TARVO_BASE_LIBRARY TARVO_BASE_INCLUDE_DIR)

if(TarvoBase_FOUND AND NOT TARGET Tarvo::Base)
  add_library(Tarvo::Base SHARED IMPORTED GLOBAL)
  set_target_properties(Tarvo::Base PROPERTIES
    IMPORTED_LOCATION ${TARVO_BASE_LIBRARY}
    # A board's build may have left the name out, which would make its path here the name.
    IMPORTED_NO_SONAME ON
    INTERFACE_INCLUDE_DIRECTORIES ${TARVO_BASE_INCLUDE_DIR}
    # System headers come last, behind the headers of the same name in this tree.
    SYSTEM OFF)
endif()
