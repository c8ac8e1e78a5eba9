#pragma once

#include <functional>

namespace korvane {

// Tells that some USB device arrived or left, nothing more: the model rescans
// the whole tree anyway.
//
// Contract: start() is called once, on the main thread. From then on the
// source calls `onChange` on the main thread once per platform event (however
// many devices the event covers) until the source is destroyed; the devices
// present at start() cause no call. A source that can't listen stays silent
// and says nothing.
class HotplugSource {
  public:
    virtual ~HotplugSource() = default;
    virtual void start(std::function<void()> onChange) = 0;
};

} // namespace korvane
