pedvar_test(location DEPENDS linux core platform SOURCES
    gpsd_location_test.cpp
    gpsd_message_test.cpp
    ../support/gpsd_rig.cpp)

pedvar_test(steps DEPENDS linux core platform SOURCES
    iio_pedometer_test.cpp)
