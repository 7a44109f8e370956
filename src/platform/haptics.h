/// What the device lets the hand feel.
#pragma once

namespace pedvar {

enum class NotificationFeedback { success, warning, error };
enum class ImpactStyle { light, medium, heavy };

class Haptics {
public:
    virtual ~Haptics() = default;

    virtual void notify(NotificationFeedback feedback) = 0;
    virtual void impact(ImpactStyle style) = 0;
};

}  // namespace pedvar
