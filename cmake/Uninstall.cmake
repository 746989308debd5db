# Removes what `cmake --install` of this build folder put in place last, by its manifests; with
# DESTDIR set as for the installation. Folders stay.
file(GLOB manifests install_manifest*.txt)
if(NOT manifests)
  message(FATAL_ERROR "Nothing was installed from here: no install_manifest.txt")
endif()
foreach(manifest IN LISTS manifests)
  file(STRINGS ${manifest} files)
  foreach(file IN LISTS files)
    message(STATUS "Removing $ENV{DESTDIR}${file}")
    file(REMOVE "$ENV{DESTDIR}${file}")
  endforeach()
  file(REMOVE ${manifest})
endforeach()
