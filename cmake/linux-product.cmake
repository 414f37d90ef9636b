# The product for Linux: the core with the embedded library.
list(JOIN exported_symbols ";\n    " exported_lines)
set(version_script ${CMAKE_BINARY_DIR}/exported_symbols.map)
file(CONFIGURE OUTPUT ${version_script} CONTENT "{\n  global:\n    @exported_lines@;\n  local:\n    *;\n};\n" @ONLY)

add_library(photos_kit SHARED $<TARGET_OBJECTS:core> $<TARGET_OBJECTS:local>)
set_target_properties(photos_kit PROPERTIES LINK_DEPENDS ${version_script})
target_link_libraries(photos_kit PRIVATE local_dependencies)
# Threads of ours run until the process ends, so the library is never taken out of it.
target_link_options(photos_kit PRIVATE ${photos_kit_no_undefined} -Wl,--exclude-libs,ALL -Wl,-z,nodelete
                    -Wl,--version-script=${version_script} -Wl,--as-needed -Wl,--gc-sections
                    $<$<CONFIG:Release>:-s>)
add_dependencies(photos_kit photos-kit-imaging)
