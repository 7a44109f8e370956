#include "apps/cli/receiver_news.h"

#include "apps/cli/terminal.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace pedvar {

using State = ReceiverCondition::State;

ReceiverNews::ReceiverNews(GpsdLocationManager& receiver, GpsdAddress address, const Texts& text, Tell tell)
    : address_(std::move(address)),
      text_(text),
      tell_(std::move(tell)),
      condition_(receiver.condition.observe([this](const ReceiverCondition& condition) { hear(condition); })),
      clockDifference_(receiver.clockDifference.observe([this](const std::optional<Seconds>& difference) {
          if (difference) hearOfClock(*difference);
      })) {}

void ReceiverNews::hear(const ReceiverCondition& condition) {
    const bool isUntroubledFix = condition.state == State::fix && !isTroubled_;
    const bool isStillGone = condition.state == State::noDaemon && isGone_;
    if (!isUntroubledFix && !isStillGone) {
        if (const std::string told = sentence(condition); !told.empty()) tell_(told);
    }
    isGone_ = condition.state == State::noDaemon && hadDaemon_;
    isTroubled_ = condition.state != State::fix && condition.state != State::connecting;
    hadDaemon_ = hadDaemon_ || condition.state > State::noDaemon;
    hadReceiver_ = hadReceiver_ || condition.state > State::noReceiver;
    hadFix_ = hadFix_ || condition.state == State::fix;
}

std::string ReceiverNews::sentence(const ReceiverCondition& condition) const {
    const std::string where = address_.text();
    const std::string reason = harmless(text_.of(condition.reason));
    switch (condition.state) {
        case State::connecting:
            break;
        case State::noDaemon:
            if (hadDaemon_)
                return text_("gpsd at {0} has gone ({1}). Pedvar tries to reach it again.", where, reason);
            return text_(
                "No gpsd answers at {0} ({1}). Start it, or say where it is with --gpsd; Pedvar goes on "
                "trying.",
                where, reason);
        case State::noReceiver:
            if (hadReceiver_)
                return text_("The receiver was unplugged. Plug it in again; Pedvar goes on by itself.");
            return text_("gpsd at {0} has no receiver. Plug one in; Pedvar goes on by itself.", where);
        case State::silent:
            return text_("The receiver says nothing. See whether it is plugged in and switched on.");
        case State::noFix:
            if (hadFix_) return text_("The receiver has lost its fix. It needs a free view of the sky.");
            return text_(
                "The receiver has no fix yet. It needs a free view of the sky, and a few minutes at first.");
        case State::fix:
            return hadFix_ ? text_("The receiver has a fix again.") : text_("The receiver has a fix.");
    }
    return {};
}

void ReceiverNews::hearOfClock(Seconds difference) {
    const auto seconds = static_cast<std::int64_t>(std::llround(std::abs(difference.count())));
    tell_(difference > Seconds{}
              ? text_("This machine's clock is {} s behind the receiver's, so its fixes cannot be used. Set the "
                      "clock.",
                      seconds)
              : text_("This machine's clock is {} s ahead of the receiver's, so its fixes cannot be used. Set the "
                      "clock.",
                      seconds));
}

}  // namespace pedvar
