
pedvar_test(system DEPENDS linux core platform LIBRARIES EXPAT::EXPAT sample_export_document SOURCES
    backup_test.cpp
    sample_export_test.cpp
    system_defaults_test.cpp
    system_event_loop_test.cpp
    system_json_and_log_test.cpp
    system_locale_test.cpp
    system_zone_test.cpp)
