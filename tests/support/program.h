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
#include <vector>

namespace pedvar {

/// Runs until it is destroyed: then its standard input ends, and so should it.
class Program {
public:
    explicit Program(std::vector<std::string> words) {
        std::array<int, 2> input{}, output{};
        check(pipe2(input.data(), O_CLOEXEC) == 0 && pipe2(output.data(), O_CLOEXEC) == 0, "no pipes");
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, input[0], 0);
        posix_spawn_file_actions_adddup2(&files, output[1], 1);
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        check(posix_spawnp(&process_, arguments[0], &files, nullptr, arguments.data(), environ) == 0,
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
        close(input_);
        int status = 0;
        waitpid(process_, &status, 0);
        close(output_);
    }

    /// The next line of its standard output; empty at its end.
    std::string line() const {
        std::string text;
        char character = 0;
        while (read(output_, &character, 1) == 1 && character != '\n') text += character;
        return text;
    }

private:
    pid_t process_ = 0;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace pedvar
