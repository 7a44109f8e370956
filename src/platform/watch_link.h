/// The paired watch.
#pragma once

namespace pedvar {

class WatchLink {
public:
    virtual ~WatchLink() = default;

    /// The shared values have changed; the watch may fetch them.
    virtual void valuesChanged() = 0;
};

}  // namespace pedvar
