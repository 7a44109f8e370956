#include "linux/system/system_random.h"

#include "core/check.h"

#include <sys/random.h>

namespace pedvar {

UUID::Bytes SystemRandom::bytes() {
    if (left_ == 0) {
        const bool isFilled = getrandom(pool_.data(), sizeof pool_, 0) == static_cast<ssize_t>(sizeof pool_);
        check(isFilled, "the kernel has no random numbers");
        left_ = pool_.size();
    }
    return pool_[--left_];
}

}  // namespace pedvar
