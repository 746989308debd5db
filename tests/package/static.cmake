# Builds the library as static archives, installs and uninstalls it, and installs it into PREFIX.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE ${BINARY} ${PREFIX})
run(${CMAKE_COMMAND} -S ${TARVO} -B ${BINARY} -G Ninja -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_CXX_FLAGS=${FLAGS} -DBUILD_SHARED_LIBS=OFF
  -DCMAKE_INSTALL_PREFIX=${PREFIX} -DCMAKE_INSTALL_LIBDIR=${LIBDIR}
  -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_BUILD_TOOLS=OFF -DBUILD_TESTING=OFF --no-warn-unused-cli)
run(${CMAKE_COMMAND} --build ${BINARY} --target install)
expect_files(${PREFIX}/${LIBDIR} "libTarvoExtRelease.a;libTarvoRelease.a")
run(${CMAKE_COMMAND} --build ${BINARY} --target uninstall)
file(GLOB_RECURSE left ${PREFIX}/*)
if(left)
  message(FATAL_ERROR "not uninstalled: ${left}")
endif()
run(${CMAKE_COMMAND} --build ${BINARY} --target install)
