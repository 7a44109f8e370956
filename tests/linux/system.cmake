
pedvar_test(system DEPENDS linux core platform LIBRARIES EXPAT::EXPAT sample_export_document SOURCES
    backup_test.cpp
    sample_export_test.cpp
    system_defaults_test.cpp
    system_event_loop_test.cpp
    system_json_and_log_test.cpp
    system_locale_test.cpp
    system_shared_library_test.cpp
    system_process_lock_test.cpp
    system_replay_time_test.cpp
    system_texts_test.cpp
    system_waiting_test.cpp
    system_zone_test.cpp)
target_compile_definitions(system_test PRIVATE PEDVAR_CATALOGUES="${PROJECT_BINARY_DIR}/locale")
add_dependencies(system_test translations)

pedvar_test(web DEPENDS linux core platform SOURCES
    web_session_test.cpp)
target_compile_definitions(web_test PRIVATE PEDVAR_WEB_SERVER="${CMAKE_CURRENT_SOURCE_DIR}/web_server.py")

pedvar_test(notifications DEPENDS engagement health linux core platform SOURCES
    desktop_notifications_test.cpp)
target_compile_definitions(notifications_test PRIVATE
    PEDVAR_NOTIFICATION_SERVER="${CMAKE_CURRENT_SOURCE_DIR}/notification_server.py")
