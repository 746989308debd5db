# An installation that was moved as a whole keeps its file of printers, which GDB reads on demand.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE "${MOVED}")
file(COPY "${PREFIX}/" DESTINATION "${MOVED}")
file(GLOB_RECURSE printers "${MOVED}/share/gdb/*/libTarvoExtRelease.so-gdb.py")
run_gdb(output "${MOVED}/${LIBDIR}" -ex "source ${printers}" -- oTimes.m_oUtc oDocument)
expect("${output}" " = 2024-02-29T14:07:09.25Z\n" " = INI document, 3 lines")
