# What the scripts beside this one share.
cmake_minimum_required(VERSION 3.25)

# run_gdb(<output variable> <library folder> <option>... -- <expression>...)
# Stops the program where its objects are ready, and prints them, a line each.
function(run_gdb result libraries)
  list(FIND ARGN -- separator)
  list(SUBLIST ARGN 0 ${separator} options)
  math(EXPR begin "${separator} + 1")
  list(SUBLIST ARGN ${begin} -1 expressions)
  list(TRANSFORM expressions PREPEND "print " OUTPUT_VARIABLE prints)
  foreach(print IN LISTS prints)
    list(APPEND commands -ex "${print}")
  endforeach()
  execute_process(COMMAND ${GDB} -batch -nx ${options} -ex "set width 0"
    -ex "set environment LD_LIBRARY_PATH ${libraries}" -ex "break Look" -ex run -ex up
    ${commands} -ex kill ${PROGRAM}
    OUTPUT_VARIABLE output ERROR_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  set(${result} "${output}" PARENT_SCOPE)
endfunction()

# expect(<output> <text>...)
function(expect output)
  foreach(text IN LISTS ARGN)
    string(FIND "${output}" "${text}" place)
    if(place EQUAL -1)
      message(SEND_ERROR "not shown: ${text}\nGDB printed:\n${output}")
    endif()
  endforeach()
endfunction()
