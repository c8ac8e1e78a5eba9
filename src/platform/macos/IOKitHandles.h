#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <utility>

namespace korvane {

// Owns one IOKit object handle (entry, iterator, service) and releases it.
class IOObject {
  public:
    IOObject() = default;
    explicit IOObject(io_object_t object) : object_(object) {}
    ~IOObject() { reset(); }
    IOObject(IOObject&& other) noexcept : object_(std::exchange(other.object_, IO_OBJECT_NULL)) {}
    IOObject& operator=(IOObject&& other) noexcept {
        if (this != &other) {
            reset();
            object_ = std::exchange(other.object_, IO_OBJECT_NULL);
        }
        return *this;
    }
    IOObject(const IOObject&) = delete;
    IOObject& operator=(const IOObject&) = delete;

    io_object_t get() const { return object_; }
    io_object_t* receive() {
        reset();
        return &object_;
    }
    explicit operator bool() const { return object_ != IO_OBJECT_NULL; }
    void reset() {
        if (object_ != IO_OBJECT_NULL) {
            IOObjectRelease(object_);
            object_ = IO_OBJECT_NULL;
        }
    }

  private:
    io_object_t object_ = IO_OBJECT_NULL;
};

// Owns one CoreFoundation reference obtained under the Create/Copy rule.
template <typename Ref> class CFOwned {
  public:
    CFOwned() = default;
    explicit CFOwned(Ref ref) : ref_(ref) {}
    ~CFOwned() {
        if (ref_) {
            CFRelease(ref_);
        }
    }
    CFOwned(CFOwned&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFOwned& operator=(CFOwned&& other) noexcept {
        if (this != &other) {
            if (ref_) {
                CFRelease(ref_);
            }
            ref_ = std::exchange(other.ref_, nullptr);
        }
        return *this;
    }
    CFOwned(const CFOwned&) = delete;
    CFOwned& operator=(const CFOwned&) = delete;

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

  private:
    Ref ref_ = nullptr;
};

} // namespace korvane
