/// What people have to know of the receiver.
#pragma once

#include "apps/cli/texts.h"
#include "linux/location/gpsd_location_manager.h"

#include <functional>
#include <string>

namespace pedvar {

/// Tells, once each time, what keeps fixes from coming and when they come again.
class ReceiverNews {
public:
    using Tell = std::function<void(std::string)>;

    /// Keeps references. `address` is where gpsd is looked for.
    ReceiverNews(GpsdLocationManager& receiver, GpsdAddress address, const Texts& text, Tell tell);

private:
    void hear(const ReceiverCondition& condition);
    std::string sentence(const ReceiverCondition& condition) const;
    void hearOfClock(Seconds difference);

    GpsdAddress address_;
    const Texts& text_;
    Tell tell_;
    bool hadDaemon_ = false;
    bool isGone_ = false;  // the daemon, which is told once, whatever keeps it away then
    bool hadReceiver_ = false;
    bool hadFix_ = false;
    bool isTroubled_ = false;
    Subscription condition_;
    Subscription clockDifference_;
};

}  // namespace pedvar
