#pragma once

#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace platform {

/// Why an operation failed.
struct Error {
    std::string text; ///< for one log line, without a line end
    int code = 0;     ///< the errno when the system refused; other numbers where an operation says so
};

/// An error of the system about `subject`, such as a file: "<subject>: <the errno's text>".
inline Error SystemError(const std::string& subject, int code)
{
    return {subject + ": " + std::generic_category().message(code), code};
}

/// The result of an operation: its value, or the error that prevented it. Converts to true for a value.
template <typename Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : value_(std::move(value)) {}
    Result(platform::Error error) : error_(std::move(error)) {}

    explicit operator bool() const { return value_.has_value(); }

    /// The value. There must be one.
    Value& operator*() { return *value_; }
    const Value& operator*() const { return *value_; }
    Value* operator->() { return &*value_; }
    const Value* operator->() const { return &*value_; }

    Value ValueOr(Value other) const { return value_.value_or(std::move(other)); }

    /// Empty when there is a value.
    const platform::Error& Error() const { return error_; }

private:
    std::optional<Value> value_;
    platform::Error error_;
};

/// The result of an operation that has no value.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(platform::Error error) : error_(std::move(error)) {}

    explicit operator bool() const { return !error_; }

    /// The error. There must be one.
    const platform::Error& Error() const { return *error_; }

private:
    std::optional<platform::Error> error_;
};

} // namespace platform
