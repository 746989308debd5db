# Builds the library on a board's own base library and installs it beside that, as on the board.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

set(settings -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
  -DCMAKE_CXX_FLAGS=${FLAGS} -DCMAKE_INSTALL_PREFIX=${PREFIX} -DCMAKE_INSTALL_LIBDIR=lib
  -DCMAKE_FIND_ROOT_PATH=${PREFIX} -DTARVO=${TARVO})
file(REMOVE_RECURSE ${BINARY} ${PREFIX})

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/BoardBase -B ${BINARY}/base ${settings})
run(${CMAKE_COMMAND} --build ${BINARY}/base --target install)

run(${CMAKE_COMMAND} -S ${TARVO} -B ${BINARY}/ext ${settings} -DTARVO_BASE=system
  -DTARVO_BUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF)
run(${CMAKE_COMMAND} --build ${BINARY}/ext --target install)

# Nothing of it may know another CKorMutex than the board's.
execute_process(COMMAND ninja -C ${BINARY}/ext -t deps OUTPUT_VARIABLE headers
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[^ ]*/base/Kor(ThreadSafety|MutexHoldDetail)\\.h" "" headers "${headers}")
if(NOT headers MATCHES "${PREFIX}/include/base/KorMutex.h" OR headers MATCHES "${TARVO}/base/")
  message(FATAL_ERROR "compiled with other headers than those of the board's base library")
endif()
