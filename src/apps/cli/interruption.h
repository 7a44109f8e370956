/// Ctrl-C while something must not be cut off in the middle.
#pragma once

#include <csignal>

namespace pedvar {

/// Holds SIGINT and SIGTERM back for as long as it lives: the first one is remembered, the next ends the process
/// as usual. One at a time in a process.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    bool hasHappened() const;

private:
    struct sigaction interruptBefore_;
    struct sigaction terminateBefore_;
};

}  // namespace pedvar
