// A reference to a host picture that a transform owns: given back with
// REALUnlockObject when it goes out of scope, on every path, unless handed on
// with Release(). Declaring several in a row releases them in reverse order.
#pragma once

#include <utility>

#include "platform/xojo/rb_plugin.h"
#include "plugin/host_entry_points.h"

class OwnedPicture {
public:
    OwnedPicture() = default;
    explicit OwnedPicture(REALpicture picture) : picture_(picture) {}
    OwnedPicture(OwnedPicture&& other) noexcept : picture_(std::exchange(other.picture_, nullptr)) {}
    OwnedPicture& operator=(OwnedPicture&&) = delete;
    ~OwnedPicture() {
        if (picture_ != nullptr) REALUnlockObject(picture_);
    }

    REALpicture Get() const { return picture_; }
    // Hands the reference to the caller.
    REALpicture Release() { return std::exchange(picture_, nullptr); }
    explicit operator bool() const { return picture_ != nullptr; }

private:
    REALpicture picture_ = nullptr;
};
