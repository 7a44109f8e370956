# Step counters.
set(PEDVAR_STEPS_SOURCES
    steps/iio_pedometer.cpp)
