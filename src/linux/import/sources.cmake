# The import of health exports, part of the `linux` module.
set(PEDVAR_IMPORT_LIBRARIES minizip)
set(PEDVAR_IMPORT_SOURCES
    import/batch_queue.cpp
    import/byte_source.cpp
    import/document_look.cpp
    import/export_interpreter.cpp
    import/export_package.cpp
    import/export_prolog.cpp
    import/export_reader.cpp
    import/export_values.cpp
    import/health_importer.cpp
    import/import_report.cpp
    import/location_route.cpp
    import/quantity_types.cpp
    import/route_files.cpp
    import/source_identity.cpp
    import/tag.cpp
    import/text_buffer.cpp
    import/workout_reader.cpp
    import/zip_archive.cpp)
