# Playing a recording back.
set(PEDVAR_REPLAY_SOURCES
    replay/replay_time.cpp)
