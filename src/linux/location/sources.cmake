# Receivers behind gpsd.
set(PEDVAR_LOCATION_SOURCES
    location/gpsd_connection.cpp
    location/gpsd_location_manager.cpp
    location/gpsd_message.cpp
    location/gpsd_report.cpp
    location/receiver_watch.cpp)
set_source_files_properties(location/gpsd_connection.cpp PROPERTIES
    COMPILE_DEFINITIONS PEDVAR_LIBGPS="${GPS_SONAME}")
