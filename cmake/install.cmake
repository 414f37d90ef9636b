# What `cmake --install` puts where. Everything is found from where it is installed; only the
# imaging process has a place that is compiled in (see platform/local/imaging/program_path.h).
set(PHOTOS_KIT_LIBRARY_DIR ${CMAKE_INSTALL_LIBDIR} CACHE STRING
    "Where the library goes; a folder of java.library.path serves hosts best")
set(PHOTOS_KIT_ZSH_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Where the completion for zsh goes")

install(TARGETS photos_kit DESTINATION ${PHOTOS_KIT_LIBRARY_DIR})
install(FILES bridge/entry_points.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} RENAME photos_kit.h)
configure_file(cmake/photos_kit.pc.in photos_kit.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/photos_kit.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES README.md CHANGELOG.md LICENSE docs/licences.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(PHOTOS_KIT_BACK_END STREQUAL local)
    install(TARGETS photos-kit-imaging DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/photos-kit)
    install(TARGETS photos-kit DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES tool/photos-kit.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES tool/completions/photos-kit.bash RENAME photos-kit
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES tool/completions/_photos-kit DESTINATION ${PHOTOS_KIT_ZSH_DIR})
    install(FILES tool/completions/photos-kit.fish
            DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
