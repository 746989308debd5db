# Without the library's debug information objects are named, and nothing fails.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run_gdb(output "${PREFIX}/${LIBDIR}"
  -iex "add-auto-load-safe-path ${PREFIX}"
  -iex "add-auto-load-scripts-directory ${PREFIX}/share/gdb/auto-load"
  -- oTimes.m_oUtc oTimes.m_oTimeout oLine oLoop)
set(needs "needs the debug information of tarvo-ext>")
expect("${output}" " = <CKorUTCTime: ${needs}" " = 500 ms from " " = <CKorSerialLine: ${needs}"
  " = <CKorEventLoop: ${needs}")
