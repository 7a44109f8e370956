/// Other programs at work.
#pragma once

#include "linux/system/readiness.h"

#include <sys/types.h>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace pedvar {

/// A program that was started and is waited for. Destroying it asks the program to end, and waits until it has.
class ChildProcess {
public:
    /// `handler` is called once on the main executor, with the exit code or, after a signal, its negative number.
    /// Standard input and output are nothing. Why the program cannot be started is for people.
    static std::expected<std::unique_ptr<ChildProcess>, std::string> start(
        Readiness& readiness, std::vector<std::string> words, std::move_only_function<void(int)> handler);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

private:
    ChildProcess(pid_t process, int descriptor, std::move_only_function<void(int)> handler)
        : process_(process), descriptor_(descriptor), handler_(std::move(handler)) {}

    int wait();

    pid_t process_;  // 0 once it has ended
    int descriptor_;
    std::move_only_function<void(int)> handler_;
    Subscription readable_;
};

}  // namespace pedvar
