# Other people's libraries, all from Debian 12; only linux, apps and tests name them.
#
# They are linked from their archives where Debian has one: loading a dozen shared objects takes longer than
# `pedvar today` works.
set(CMAKE_FIND_LIBRARY_SUFFIXES .a .so)

find_package(CLI11 REQUIRED)
find_package(EXPAT REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)

find_library(MINIZIP_LIBRARY minizip REQUIRED)
find_path(MINIZIP_INCLUDE_DIR unzip.h PATH_SUFFIXES minizip REQUIRED)
add_library(minizip UNKNOWN IMPORTED)
set_target_properties(minizip PROPERTIES
    IMPORTED_LOCATION ${MINIZIP_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${MINIZIP_INCLUDE_DIR}
    INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)

# The time zones of Abseil. Its CMake package knows the shared objects only.
add_library(absl_time INTERFACE)
foreach(part time time_zone civil_time strings strings_internal int128 base spinlock_wait throw_delegate
        raw_logging_internal log_severity)
    find_library(ABSL_${part} absl_${part} REQUIRED)
    target_link_libraries(absl_time INTERFACE ${ABSL_${part}})
endforeach()

# gpsd's client. Only recording needs it, and its archive needs a dozen other libraries, so it is loaded when it is
# needed: GPS_SONAME is the name to load it by, that of the version whose header is compiled.
find_file(GPS_SHARED_LIBRARY libgps.so
    PATHS /usr/lib PATH_SUFFIXES ${CMAKE_LIBRARY_ARCHITECTURE} lib/${CMAKE_LIBRARY_ARCHITECTURE} REQUIRED)
file(REAL_PATH ${GPS_SHARED_LIBRARY} GPS_VERSIONED)
string(REGEX MATCH "libgps[.]so[.][0-9]+" GPS_SONAME ${GPS_VERSIONED})
