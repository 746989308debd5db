# Settings that every target of this project shares.

# -Wno-psabi: on 32-bit ARM GCC would remark on what it passed otherwise before version 7.
set(tarvo_warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
  -Wold-style-cast -Wno-psabi $<$<BOOL:${TARVO_WARNINGS_AS_ERRORS}>:-Werror>)

set(tarvo_exports ${CMAKE_CURRENT_LIST_DIR}/exports.version)
set(tarvo_unwind_resume ${CMAKE_CURRENT_LIST_DIR}/KorUnwindResume.cpp)
set(tarvo_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/tarvo-ext)

include(CheckIPOSupported)
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fno-semantic-interposition TARVO_HAS_NO_SEMANTIC_INTERPOSITION)

# What GCC does for speed even at -Os, and what makes this code larger. Above all it replaces a
# parameter by its parts and so makes private copies, one a source, of functions that the sources
# share otherwise; and it takes few of the inline functions that a source calls once for its own.
set(tarvo_small $<$<AND:$<CONFIG:MinSizeRel>,$<CXX_COMPILER_ID:GNU>>:-fno-ipa-sra -fno-gcse
  -fno-move-loop-invariants -fno-caller-saves -fno-schedule-insns2 -fno-tree-loop-optimize
  --param=comdat-sharing-probability=0>)

# tarvo_configure_library(<target> <export-name> <file-name>)
# Names the library exactly <file-name>.so or .a and hides what is not marked as exported. A shared
# object drops what nothing uses and finds its neighbours beside itself; with a static library the
# program that links it drops what it does not use.
function(tarvo_configure_library target export_name file_name)
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${export_name}
    PREFIX ""
    OUTPUT_NAME ${file_name}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN")
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${tarvo_include_dir}>)
  target_compile_options(${target} PRIVATE ${tarvo_warnings} -ffunction-sections -fdata-sections
    ${tarvo_small} $<$<BOOL:${TARVO_HAS_NO_SEMANTIC_INTERPOSITION}>:-fno-semantic-interposition>)
  target_link_libraries(${target} PRIVATE Threads::Threads)
  if(BUILD_SHARED_LIBS)
    target_link_options(${target} PRIVATE -Wl,--no-undefined -Wl,--as-needed -Wl,--gc-sections
      -Wl,-Bsymbolic-functions -Wl,--version-script=${tarvo_exports})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${tarvo_exports})
  else()
    target_link_options(${target} INTERFACE -Wl,--gc-sections)
  endif()
endfunction()

# tarvo_optimise_as_one_piece(<target>)
# Lets the smallest build of a shared library be optimised at link time: it is a twentieth smaller.
# GCC notes then that timeval and timespec stand for two types each: wanted, some sources have times
# of 64 bits (see time/KorSystemClock.cpp) and hand them on in types of their own. A C++ runtime that
# is linked in as well would get KorUnwindResume.cpp for a function of its own.
function(tarvo_optimise_as_one_piece target)
  if(NOT BUILD_SHARED_LIBS OR NOT CMAKE_BUILD_TYPE STREQUAL "MinSizeRel" OR
      "${CMAKE_CXX_FLAGS} ${CMAKE_SHARED_LINKER_FLAGS}" MATCHES "-static-libstdc\\+\\+")
    return()
  endif()
  check_ipo_supported(RESULT has_lto OUTPUT reason LANGUAGES CXX)
  set_property(TARGET ${target} PROPERTY INTERPROCEDURAL_OPTIMIZATION ${has_lto})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    target_sources(${target} PRIVATE ${tarvo_unwind_resume})
    set_source_files_properties(${tarvo_unwind_resume} PROPERTIES COMPILE_OPTIONS -fno-lto)
    target_link_options(${target} PRIVATE -Wl,--wrap=_Unwind_Resume)
  endif()
endfunction()

# tarvo_public_headers(<header>...)
# Headers of the current folder that are installed, in the folder of the same name.
function(tarvo_public_headers)
  if(TARVO_INSTALL)
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    install(FILES ${ARGN} DESTINATION ${tarvo_include_dir}/${folder} COMPONENT Development)
  endif()
endfunction()

# tarvo_add_program(<target> <source>...)
# A program of this project that links the library as a user would.
function(tarvo_add_program target)
  add_executable(${target} ${ARGN})
  target_compile_options(${target} PRIVATE ${tarvo_warnings})
  target_link_libraries(${target} PRIVATE Tarvo::Ext)
endfunction()
