# The catalogues of po/, compiled to where the program looks for them beside itself, and installed with it.
find_program(MSGFMT msgfmt REQUIRED)

file(GLOB catalogues CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/po/*.po)
set(compiled_catalogues)
foreach(catalogue ${catalogues})
    cmake_path(GET catalogue STEM language)
    set(folder ${PROJECT_BINARY_DIR}/locale/${language}/LC_MESSAGES)
    add_custom_command(OUTPUT ${folder}/pedvar.mo
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        # Without a table of hashes, which the program would have to check too before it believes the file.
        COMMAND ${MSGFMT} --no-hash -o ${folder}/pedvar.mo ${catalogue}
        DEPENDS ${catalogue} VERBATIM)
    install(FILES ${folder}/pedvar.mo DESTINATION share/locale/${language}/LC_MESSAGES)
    list(APPEND compiled_catalogues ${folder}/pedvar.mo)
endforeach()
add_custom_target(translations ALL DEPENDS ${compiled_catalogues})
