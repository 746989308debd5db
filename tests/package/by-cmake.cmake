# Configures, builds and runs an outside project, against the package in PREFIX or with the tree
# TARVO as a part of it.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE ${BINARY})
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G Ninja -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_CXX_FLAGS=${FLAGS}
  -DCMAKE_FIND_ROOT_PATH=${PREFIX} -DTarvoExt_ROOT=${PREFIX} -DTARVO=${TARVO})
run(${CMAKE_COMMAND} --build ${BINARY})
expect_output("${EXPECTED}" ${BINARY}/outside.bin)
