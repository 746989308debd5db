# GDB finds the printers by itself beside the installed library, as it does for packages below /usr.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run_gdb(output "${PREFIX}/${LIBDIR}"
  -iex "add-auto-load-safe-path ${PREFIX}"
  -iex "add-auto-load-scripts-directory ${PREFIX}/share/gdb/auto-load"
  -- oTimes.m_oSpan oTimes.m_oDays oTimes.m_oUtc oTimes.m_oInvalid oTimes.m_oLocal oTimes.m_oZone
  oTimes.m_oTimeZone oTimes.m_oTimeout oTimes.m_oForever oSettings oDocument
  *oDocument.m_apOptionLines[2] oBuffer oClosed oLine oLoop)
expect("${output}"
  " = -00:00:01.5\n"
  " = 2 d 01:02:03.25\n"
  " = 2024-02-29T14:07:09.25Z\n"
  "T00:00:00Z (invalid)\n"
  " = 1999-12-31T23:30:00-02:00\n"
  " = 2024-02-29T10:37:09.25-03:30\n"
  " = UTC\n"
  " = 500 ms from "
  " s on the monotonic clock\n"
  " = never\n"
  "INI file \"/tmp/none.ini\", 0 findings, errno 2"
  "INI document, 3 lines = {# Gateway, [Port], Device=/dev/ttyAM0 # upper}\n"
  " = Device=/dev/ttyAM0 # upper\n"
  " = 12 characters: \"two \\\"words\\\"\\n\"\n"
  " = closed line\n"
  ", 9600 bit/s 8N1, 2 bytes: 01 FF held\n"
  " = event loop, 2 timers, 0 handles, 1 signal, 1 posted call = {"
  " = timer, every 1000 ms,"
  " = timer, once,"
  " = signal 10}")
