# pedvar_module(NAME DEPENDS modules... [LIBRARIES third-party targets...] SOURCES files...)
# A folder of src/ as one library. DEPENDS are other modules; LIBRARIES stay private to the folder.
function(pedvar_module name)
    cmake_parse_arguments(PARSE_ARGV 1 module "" "" "DEPENDS;LIBRARIES;SOURCES")
    list(TRANSFORM module_DEPENDS PREPEND pedvar_)
    add_library(pedvar_${name} STATIC ${module_SOURCES})
    # As a file set, so that each header can be compiled alone.
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS *.h)
    target_sources(pedvar_${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${headers})
    target_link_libraries(pedvar_${name}
        PUBLIC ${module_DEPENDS}
        PRIVATE ${module_LIBRARIES} $<BUILD_INTERFACE:pedvar_warnings> pedvar_sanitizers)
endfunction()

# pedvar_test(NAME DEPENDS modules... [LIBRARIES targets...] SOURCES files...)
# The tests of a module as one program, each case registered with CTest.
function(pedvar_test name)
    cmake_parse_arguments(PARSE_ARGV 1 test "" "" "DEPENDS;LIBRARIES;SOURCES")
    list(TRANSFORM test_DEPENDS PREPEND pedvar_)
    add_executable(${name}_test ${test_SOURCES})
    target_include_directories(${name}_test PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name}_test PRIVATE ${test_DEPENDS} ${test_LIBRARIES} pedvar_test_main
        $<BUILD_INTERFACE:pedvar_warnings> pedvar_sanitizers)
    doctest_discover_tests(${name}_test TEST_PREFIX "${name}: " PROPERTIES TIMEOUT 600)
endfunction()
