pedvar_test(import DEPENDS linux core platform
    LIBRARIES EXPAT::EXPAT minizip nlohmann_json::nlohmann_json SQLite::SQLite3 SOURCES
    import_corpus_test.cpp
    import_meaning_test.cpp
    import_package_test.cpp
    import_reader_test.cpp
    import_store_test.cpp)
target_compile_definitions(import_test PRIVATE PEDVAR_CORPUS="${PROJECT_SOURCE_DIR}/../shared/corpus")
