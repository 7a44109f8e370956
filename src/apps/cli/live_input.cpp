#include "apps/cli/live_input.h"

#include "core/check.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

namespace pedvar {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};

// All that a signal handler may touch.
std::array<int, 2> news{-1, -1};  // a pipe; what is written to its end is heard by the thread
struct sigaction before[endingSignals.size() + 1];
std::optional<termios> terminalBefore;

constexpr char endAsked = 'e';
constexpr char broughtBack = 'b';
constexpr char finished = 'f';

void tellThread(char what) {
    const int error = errno;
    static_cast<void>(!write(news[1], &what, 1));
    errno = error;
}

/// Who touches the terminal in the background is stopped.
bool isInBackground() {
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground > 0 && foreground != getpgrp();
}

void hearKeysAtOnce() {
    if (!terminalBefore || isInBackground()) return;
    termios keys = *terminalBefore;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &keys);
}

}  // namespace

LiveInput::LiveInput(MainExecutor& executor, Keys keys, Handlers handlers)
    : executor_(executor), handlers_(std::move(handlers)) {
    check(pipe2(news.data(), O_CLOEXEC | O_NONBLOCK) == 0, "there is no pipe for signals");
    terminalBefore.reset();
    termios terminal{};
    const bool hasKeys = keys == Keys::heard && !isInBackground();
    if (hasKeys && tcgetattr(STDIN_FILENO, &terminal) == 0) terminalBefore = terminal;
    struct sigaction action{};
    action.sa_flags = SA_RESTART;
    action.sa_handler = [](int) { tellThread(endAsked); };
    for (std::size_t i = 0; i < endingSignals.size(); ++i) sigaction(endingSignals[i], &action, &before[i]);
    // Shells set the terminal to their own liking while a program is stopped.
    action.sa_handler = [](int) { tellThread(broughtBack); };
    sigaction(SIGCONT, &action, &before[endingSignals.size()]);
    hearKeysAtOnce();
    thread_ = std::thread([this, withKeys = terminalBefore.has_value()] { listen(withKeys); });
}

LiveInput::~LiveInput() {
    tellThread(finished);
    thread_.join();
    if (terminalBefore && !isInBackground()) tcsetattr(STDIN_FILENO, TCSANOW, &*terminalBefore);
    for (std::size_t i = 0; i < endingSignals.size(); ++i) sigaction(endingSignals[i], &before[i], nullptr);
    sigaction(SIGCONT, &before[endingSignals.size()], nullptr);
    for (int& end : news) close(std::exchange(end, -1));
}

void LiveInput::listen(bool withKeys) {
    std::array<pollfd, 2> files{{{news[0], POLLIN, 0}, {withKeys ? STDIN_FILENO : -1, POLLIN, 0}}};
    while (true) {
        if (poll(files.data(), files.size(), -1) < 0) continue;
        char character = 0;
        while (read(files[0].fd, &character, 1) == 1) {
            if (character == finished) return;
            if (character == broughtBack) hearKeysAtOnce();
            if (character == endAsked) executor_.post([handler = handlers_.end] { handler(); });
        }
        if (files[1].revents == 0) continue;
        const auto count = read(STDIN_FILENO, &character, 1);
        if (count == 1) {
            executor_.post([handler = handlers_.key, character] { handler(character); });
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            files[1].fd = -1;  // the terminal has gone
        }
    }
}

}  // namespace pedvar
