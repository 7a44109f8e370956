/// A program beside the test.
#pragma once

#include "core/check.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// Runs until it is destroyed: then its standard input ends, and so should it.
class Program {
public:
    /// `environment` has further variables ("NAME=value"), which win.
    explicit Program(std::vector<std::string> words, std::vector<std::string> environment = {}) {
        std::array<int, 2> input{}, output{};
        check(pipe2(input.data(), O_CLOEXEC) == 0 && pipe2(output.data(), O_CLOEXEC) == 0, "no pipes");
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, input[0], 0);
        posix_spawn_file_actions_adddup2(&files, output[1], 1);
        for (char** variable = environ; *variable; ++variable) environment.emplace_back(*variable);
        const auto arguments = pointers(words);
        const auto variables = pointers(environment);
        check(posix_spawnp(&process_, arguments[0], &files, nullptr, arguments.data(), variables.data()) == 0,
              "the program cannot be started");
        posix_spawn_file_actions_destroy(&files);
        close(input[0]);
        close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        endInput();
        wait();
        close(output_);
    }

    void endInput() {
        if (input_ >= 0) close(std::exchange(input_, -1));
    }
    /// The exit code after the signal; negative when the signal has ended it.
    int end(int signal) {
        kill(process_, signal);
        return wait();
    }

    void write(const std::string& lineToRead) const {
        const std::string text = lineToRead + "\n";
        check(::write(input_, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
              "it does not listen");
    }

    /// The next line of its standard output, waited for; empty at its end.
    std::string line() const {
        std::string text;
        char character = 0;
        while (read(output_, &character, 1) == 1 && character != '\n') text += character;
        return text;
    }

private:
    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (std::string& text : texts) result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    }
    int wait() {
        int status = 0;
        if (process_ != 0) waitpid(std::exchange(process_, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t process_ = 0;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace pedvar
