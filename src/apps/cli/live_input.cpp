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

/// What a signal has its handler tell the thread.
struct Told {
    int signal;
    char what;
    bool withKeysOnly;
};

constexpr char endAsked = 'e';
constexpr char stopAsked = 's';
constexpr char shownAnew = 'a';
constexpr char keysTaken = 'k';
constexpr char finished = 'f';

constexpr std::array<Told, 8> signals{{
    {SIGINT, endAsked, false},
    {SIGTERM, endAsked, false},
    {SIGHUP, endAsked, false},
    {SIGQUIT, endAsked, false},
    {SIGPIPE, endAsked, false},
    {SIGTSTP, stopAsked, true},
    {SIGCONT, shownAnew, true},  // shells set the terminal to their own liking while a program is stopped
    {SIGWINCH, shownAnew, true},
}};

// All that a signal handler may touch: a pipe; what is written to its end is heard by the thread.
std::array<int, 2> news{-1, -1};

std::array<struct sigaction, signals.size()> before;
std::optional<termios> terminalBefore;

void tellThread(char what) {
    const int error = errno;
    static_cast<void>(!write(news[1], &what, 1));
    errno = error;
}

void handle(int signal) {
    for (const Told& told : signals) {
        if (told.signal == signal) tellThread(told.what);
    }
}

}  // namespace

bool isInBackground(int descriptor) {
    const pid_t foreground = tcgetpgrp(descriptor);
    return foreground > 0 && foreground != getpgrp();
}

LiveInput::LiveInput(MainExecutor& executor, Keys keys, Handlers handlers)
    : executor_(executor), keys_(keys), handlers_(std::move(handlers)), self_(std::make_shared<LiveInput*>(this)) {
    check(pipe2(news.data(), O_CLOEXEC | O_NONBLOCK) == 0, "there is no pipe for signals");
    terminalBefore.reset();
    struct sigaction action{};
    action.sa_flags = SA_RESTART;
    action.sa_handler = handle;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i].signal, nullptr, &before[i]);
        // Who is to outlive the terminal (nohup), or is never to be stopped, goes on so.
        const bool staysIgnored =
            before[i].sa_handler == SIG_IGN && (signals[i].signal == SIGHUP || signals[i].signal == SIGTSTP);
        const bool isHeard = keys_ == Keys::heard || !signals[i].withKeysOnly;
        if (isHeard && !staysIgnored) sigaction(signals[i].signal, &action, nullptr);
    }
    look();
    thread_ = std::thread([this] { listen(); });
}

LiveInput::~LiveInput() {
    tellThread(finished);
    thread_.join();
    giveBack();
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i].signal, &before[i], nullptr);
    for (int& end : news) close(std::exchange(end, -1));
}

void LiveInput::listen() {
    constexpr int untilNextLook = 1'000;  // milliseconds; nothing tells that the foreground has changed
    // Who reads a terminal in its background is stopped, or without this signal fails.
    sigset_t reading;
    sigemptyset(&reading);
    sigaddset(&reading, SIGTTIN);
    pthread_sigmask(SIG_BLOCK, &reading, nullptr);
    bool hasTerminal = keys_ == Keys::heard && isatty(STDIN_FILENO) == 1;
    while (true) {
        const bool hearsKeys = hasTerminal && hearsKeys_;
        std::array<pollfd, 2> files{{{news[0], POLLIN, 0}, {hearsKeys ? STDIN_FILENO : -1, POLLIN, 0}}};
        const int count = poll(files.data(), files.size(), hasTerminal && !hearsKeys ? untilNextLook : -1);
        if (count == 0) post(&LiveInput::look);
        if (count <= 0) continue;
        char character = 0;
        while (read(news[0], &character, 1) == 1) {
            if (character == finished) return;
            if (character == endAsked) executor_.post([handler = handlers_.end] { handler(); });
            if (character == stopAsked) post(&LiveInput::stopProcess);
            if (character == shownAnew) post(&LiveInput::goOn);
        }
        if (files[1].revents == 0) continue;
        if (isInBackground(STDIN_FILENO)) {
            hearsKeys_ = false;
            continue;
        }
        const auto length = read(STDIN_FILENO, &character, 1);
        if (length == 1) {
            executor_.post([handler = handlers_.key, character] { handler(character); });
        } else if (length == 0 || (errno != EINTR && errno != EAGAIN)) {
            hasTerminal = false;  // it has gone
        }
    }
}

void LiveInput::post(void (LiveInput::*job)()) {
    executor_.post([job, weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) ((*self)->*job)();
    });
}

void LiveInput::look() {
    termios terminal{};
    // Who sets a terminal in its background is stopped.
    if (keys_ == Keys::ignored || isInBackground(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &terminal) != 0) return;
    if (!terminalBefore) terminalBefore = terminal;
    termios keys = *terminalBefore;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    if (tcsetattr(STDIN_FILENO, TCSANOW, &keys) == 0 && !hearsKeys_.exchange(true)) tellThread(keysTaken);
}

void LiveInput::giveBack() {
    hearsKeys_ = false;
    if (terminalBefore && !isInBackground(STDIN_FILENO)) tcsetattr(STDIN_FILENO, TCSANOW, &*terminalBefore);
}

void LiveInput::stopProcess() {
    handlers_.hide();
    giveBack();
    struct sigaction usual{};
    usual.sa_handler = SIG_DFL;
    struct sigaction ours{};
    sigaction(SIGTSTP, &usual, &ours);
    raise(SIGTSTP);
    sigaction(SIGTSTP, &ours, nullptr);
    goOn();
}

void LiveInput::goOn() {
    look();
    handlers_.show();
}

}  // namespace pedvar
