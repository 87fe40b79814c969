#pragma once

#include <dlfcn.h>

namespace tidewell {

/// A library of the system that is loaded when it is first needed, and stays. For those that drag much along
/// and that hardly a run of the program uses; they may also be missing.
class SharedLibrary final {
public:
    explicit SharedLibrary(const char* name) : handle_{::dlopen(name, RTLD_NOW | RTLD_LOCAL)} {}
    SharedLibrary(const SharedLibrary&) = delete;

    /// Fills in a function by its name; false, now and for the library as a whole, when it is not there.
    template <class Function>
    void load(Function*& function, const char* name)
    {
        function = handle_ == nullptr ? nullptr : reinterpret_cast<Function*>(::dlsym(handle_, name));
        complete_ = complete_ && function != nullptr;
    }

    /// Every function that was asked for is there.
    [[nodiscard]] bool complete() const { return complete_; }

private:
    void* handle_;
    bool complete_ = true;
};

}  // namespace tidewell
