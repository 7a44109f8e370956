#include "linux/location/receiver_watch.h"

namespace pedvar {

std::optional<ReceiverCondition::State> ReceiverWatch::after(const GpsdMessage& message, Moment now) {
    using State = ReceiverCondition::State;
    if (const auto* const receivers = std::get_if<GpsdReceivers>(&message)) {
        hasReceiver_ = receivers->count > 0;
        if (!hasReceiver_) lastFix_.reset();
        heard_ = now;
    } else if (const auto* const report = std::get_if<GpsdReport>(&message)) {
        hasReceiver_ = true;
        hasReported_ = true;
        heard_ = now;
        const bool isFix = report->mode != GpsdReport::Mode::noFix;
        if (isFix && !hasFix(now)) chosen_ = report->receiver;
        if (isFix && isChosen(*report)) lastFix_ = now;
    }
    if (!hasReceiver_) return State::noReceiver;
    if (now - heard_ > patience_.silence) return State::silent;
    if (hasFix(now)) return State::fix;
    return hasReported_ ? std::optional(State::noFix) : std::nullopt;
}

}  // namespace pedvar
