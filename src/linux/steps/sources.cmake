# Step counters.
set(PEDVAR_STEPS_SOURCES
    steps/iio_pedometer.cpp
    steps/iio_step_counter.cpp)
