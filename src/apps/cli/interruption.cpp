#include "apps/cli/interruption.h"

namespace pedvar {
namespace {

volatile std::sig_atomic_t hasBeenAsked = 0;  // all that a signal handler may touch

}  // namespace

Interruption::Interruption() {
    hasBeenAsked = 0;
    struct sigaction remember{};
    remember.sa_handler = [](int) { hasBeenAsked = 1; };
    remember.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigaction(SIGINT, &remember, &interruptBefore_);
    sigaction(SIGTERM, &remember, &terminateBefore_);
}

Interruption::~Interruption() {
    sigaction(SIGINT, &interruptBefore_, nullptr);
    sigaction(SIGTERM, &terminateBefore_, nullptr);
}

bool Interruption::hasHappened() const {
    return hasBeenAsked != 0;
}

}  // namespace pedvar
