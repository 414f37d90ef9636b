# The product for a Mac: the core with the adapter to the Photos framework, for both architectures.
list(TRANSFORM exported_symbols PREPEND _)
list(JOIN exported_symbols "\n" exported_lines)
set(symbols_file ${CMAKE_BINARY_DIR}/exported_symbols.exp)
file(CONFIGURE OUTPUT ${symbols_file} CONTENT "@exported_lines@\n" @ONLY)

add_library(photos_kit SHARED $<TARGET_OBJECTS:core> $<TARGET_OBJECTS:photokit>)
target_link_libraries(photos_kit PRIVATE foundation Threads::Threads)
# A host finds the library by its own rpath. Every symbol must be known when it is linked.
set_target_properties(photos_kit PROPERTIES LINKER_LANGUAGE CXX INSTALL_NAME_DIR "@rpath"
                      BUILD_WITH_INSTALL_NAME_DIR ON LINK_DEPENDS ${symbols_file})
target_link_options(photos_kit PRIVATE -Wl,-exported_symbols_list,${symbols_file}
                    -Wl,-undefined,error -Wl,-dead_strip)
