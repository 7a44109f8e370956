/// The widgets that show our shared values.
#pragma once

namespace pedvar {

class WidgetCenter {
public:
    virtual ~WidgetCenter() = default;

    /// Tells every widget to read the shared store anew.
    virtual void reloadAllTimelines() = 0;
};

}  // namespace pedvar
