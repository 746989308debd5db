# Installs the components of a build one by one: each has its own files and no others.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

function(install_component component)
  run(${CMAKE_COMMAND} --install ${BUILD} --component ${component} --prefix ${BINARY}/${component})
endfunction()

file(REMOVE_RECURSE ${BINARY})
install_component(Runtime)
expect_files(${BINARY}/Runtime/${LIBDIR} "libTarvoExtRelease.so;libTarvoRelease.so")
file(GLOB_RECURSE runtime RELATIVE ${BINARY}/Runtime ${BINARY}/Runtime/*)
list(LENGTH runtime count)
if(NOT count EQUAL 2)
  message(FATAL_ERROR "more than the two libraries at run time: ${runtime}")
endif()

install_component(Development)
file(GLOB_RECURSE development RELATIVE ${BINARY}/Development ${BINARY}/Development/*)
foreach(file include/tarvo-ext/KorExport.h include/tarvo-ext/config/KorIniFile.h
    ${LIBDIR}/pkgconfig/tarvo-ext.pc ${LIBDIR}/cmake/TarvoExt/TarvoExtConfig.cmake)
  if(NOT file IN_LIST development)
    message(FATAL_ERROR "missing in Development: ${file}")
  endif()
endforeach()
if(development MATCHES "Detail|\\.so|\\.md")
  message(FATAL_ERROR "does not belong to Development: ${development}")
endif()

install_component(Documentation)
file(GLOB_RECURSE pages ${BINARY}/Documentation/*)
if(NOT pages MATCHES "ini-format\\.md" OR NOT pages MATCHES "examples/format_time\\.cpp" OR
    pages MATCHES "/include/|\\.(so|cmake)(;|$)")
  message(FATAL_ERROR "not the documentation: ${pages}")
endif()

# Beside the libraries a tool runs as it was installed.
install_component(Tools)
file(GLOB_RECURSE tools RELATIVE ${BINARY}/Tools ${BINARY}/Tools/*)
if(NOT "${BINDIR}/inictl.bin" IN_LIST tools OR tools MATCHES "\\.(h|so|cmake|md)(;|$)")
  message(FATAL_ERROR "not the tools: ${tools}")
endif()
run(${CMAKE_COMMAND} --install ${BUILD} --component Tools --prefix ${BINARY}/Runtime)
expect_output("^inictl, Version [0-9.]+\n" ${BINARY}/Runtime/${BINDIR}/inictl.bin --version)
