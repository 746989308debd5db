# Configures, builds and runs an outside project, against the package in PREFIX or with the tree
# TARVO as a part of it, whose libraries are shared unless SHARED says otherwise.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE ${BINARY})
set(ENV{PKG_CONFIG_LIBDIR} ${PREFIX}/${LIBDIR}/pkgconfig)
if(DEFINED SHARED)
  set(shared -DBUILD_SHARED_LIBS=${SHARED})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G Ninja -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_CXX_FLAGS=${FLAGS} --no-warn-unused-cli
  -DCMAKE_FIND_ROOT_PATH=${PREFIX} -DTarvoExt_ROOT=${PREFIX} -DTARVO=${TARVO} ${shared})
run(${CMAKE_COMMAND} --build ${BINARY})
expect_output("${EXPECTED}" ${BINARY}/outside.bin)
