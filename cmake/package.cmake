# What an installation has, and the Debian package made of it: `./dev package`.
include(GNUInstallDirs)

install(TARGETS pedvar RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# pedvar_install_compressed(FILE DESTINATION NAME): as NAME.gz, without the date of the build.
function(pedvar_install_compressed file destination name)
    set(compressed ${PROJECT_BINARY_DIR}/compressed/${name}.gz)
    add_custom_command(OUTPUT ${compressed}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/compressed
        COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/${file} > ${compressed}
        DEPENDS ${PROJECT_SOURCE_DIR}/${file} VERBATIM)
    add_custom_target(compressed_${name} ALL DEPENDS ${compressed})
    install(FILES ${compressed} DESTINATION ${destination})
endfunction()

pedvar_install_compressed(docs/pedvar.1 ${CMAKE_INSTALL_MANDIR}/man1 pedvar.1)
pedvar_install_compressed(CHANGELOG.md ${CMAKE_INSTALL_DOCDIR} changelog)
pedvar_install_compressed(extras/debian/changelog ${CMAKE_INSTALL_DOCDIR} changelog.Debian)
install(FILES extras/debian/copyright README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES extras/debian/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME pedvar)
install(DIRECTORY extras/waybar DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES extras/completion/pedvar.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME pedvar)
install(FILES extras/completion/_pedvar DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES extras/completion/pedvar.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
file(GLOB_RECURSE user_units extras/*.service)
install(FILES ${user_units} DESTINATION lib/systemd/user)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Pedvar authors <pedvar@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "steps, walks and goals from your own data")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Reads the health export of a phone, counts the steps of phone and watch once
where both were carried, and shows today, the week, the goal and the streaks in
a terminal, in a status bar or as JSON. Everything stays in a folder of local
files: no account, no cloud.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
# Libraries that only some commands load, so that no program names them: `update`, `record`, and notifications.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libcurl4, libgps28, libsystemd0, tzdata")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gpsd, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
include(CPack)
