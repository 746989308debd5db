# Settings that every target of this project shares.

# -Wno-psabi: on 32-bit ARM GCC would remark on what it passed otherwise before version 7.
set(tarvo_warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
  -Wold-style-cast -Wno-psabi $<$<BOOL:${TARVO_WARNINGS_AS_ERRORS}>:-Werror>)

set(tarvo_exports ${CMAKE_CURRENT_LIST_DIR}/exports.version)

# tarvo_configure_library(<target> <export-name> <file-name>)
# Names the shared object exactly <file-name>.so, hides what is not marked as exported, drops
# what nothing uses and lets it find its neighbours beside itself.
function(tarvo_configure_library target export_name file_name)
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${export_name}
    PREFIX ""
    OUTPUT_NAME ${file_name}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN")
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE ${tarvo_warnings})
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)
  target_link_options(${target} PRIVATE -Wl,--no-undefined -Wl,--as-needed -Wl,--gc-sections
    -Wl,-O1 -Wl,-Bsymbolic-functions -Wl,--version-script=${tarvo_exports})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${tarvo_exports})
endfunction()

# tarvo_add_program(<target> <source>...)
# A program of this project that links the library as a user would.
function(tarvo_add_program target)
  add_executable(${target} ${ARGN})
  target_compile_options(${target} PRIVATE ${tarvo_warnings})
  target_link_libraries(${target} PRIVATE Tarvo::Ext)
endfunction()
