#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace tidewell {

/// Sets an environment variable for as long as it lives; null takes it away.
class EnvironmentVariable final {
public:
    EnvironmentVariable(const char* name, const char* value) : name_{name}
    {
        if (const char* before = ::getenv(name))
            before_ = before;
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~EnvironmentVariable() { before_ ? ::setenv(name_, before_->c_str(), 1) : ::unsetenv(name_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> before_{};
};

}  // namespace tidewell
