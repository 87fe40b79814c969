#pragma once

#include <glib-object.h>

#include <memory>

namespace tidewell {

struct GObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
/// Owns one reference to a GObject.
template <class Object>
using GObjectPtr = std::unique_ptr<Object, GObjectUnref>;

/// An error that a GLib function may fill in.
class GErrorSlot final {
public:
    GErrorSlot() = default;
    GErrorSlot(const GErrorSlot&) = delete;
    ~GErrorSlot() { g_clear_error(&error_); }

    /// For a call; drops what an earlier one left.
    [[nodiscard]] GError** fill()
    {
        g_clear_error(&error_);
        return &error_;
    }
    [[nodiscard]] const GError* get() const { return error_; }
    explicit operator bool() const { return error_ != nullptr; }

private:
    GError* error_ = nullptr;
};

}  // namespace tidewell
