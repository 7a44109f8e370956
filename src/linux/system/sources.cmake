# The adapters to the machine.
set(PEDVAR_SYSTEM_SOURCES
    system/absl_zone.cpp
    system/event_loop.cpp
    system/glibc_locale.cpp
    system/nlohmann_json_parser.cpp
    system/posix_zone.cpp
    system/private_folder.cpp
    system/process_zone.cpp
    system/sqlite_defaults.cpp
    system/sqlite_defaults_file.cpp
    system/sqlite_defaults_format.cpp
    system/sqlite_document_parts.cpp
    system/sqlite_parts_format.cpp
    system/system_log.cpp
    system/system_random.cpp
    system/widget_reloads.cpp)
