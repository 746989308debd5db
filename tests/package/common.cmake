# What the scripts beside this one share.
cmake_minimum_required(VERSION 3.25)

set(EXPECTED "^outside runs on Quentor libTarvo, Version 1\\.0\\.10\n$")

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# expect_files(<folder> <name;...>)
# Compares the files in a folder, those in folders below it not counted.
function(expect_files folder names)
  file(GLOB found LIST_DIRECTORIES false RELATIVE ${folder} ${folder}/*)
  if(NOT found STREQUAL names)
    message(FATAL_ERROR "expected in ${folder}: ${names}\nfound: ${found}")
  endif()
endfunction()

# expect_output(<pattern> <program> [<argument>...])
# Runs a program, under the emulator of the target if there is one, without a library path from
# outside, and compares what it prints.
function(expect_output pattern)
  unset(ENV{LD_LIBRARY_PATH})
  execute_process(COMMAND ${EMULATOR} ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output
    COMMAND_ERROR_IS_FATAL ANY)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "expected:\n${pattern}\nprinted:\n${output}")
  endif()
endfunction()

# Compiles one source with nothing but what pkg-config says of the installed package. A program
# that needs the library alone leaves it to the library to find the base library.
function(compile_with_pkg_config source program)
  set(ENV{PKG_CONFIG_LIBDIR} ${PREFIX}/${LIBDIR}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs tarvo-ext
    OUTPUT_VARIABLE package OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(package UNIX_COMMAND "${package}")
  separate_arguments(flags UNIX_COMMAND "${FLAGS}")
  run(${COMPILER} -std=c++17 ${flags} ${source} -o ${program} -Wl,--as-needed ${package}
    -Wl,-rpath,${PREFIX}/${LIBDIR})
endfunction()
