#pragma once

#include <optional>
#include <string>
#include <utility>

namespace desktop {

/// Why an operation gave no value: text for one log line.
struct Problem {
    std::string text;
};

/// The value of an operation, or the problem that it met.
template <typename Value>
class Result {
public:
    Result(Value value) : value_(std::move(value)) {}
    Result(Problem problem) : problem_(std::move(problem.text)) {}

    explicit operator bool() const { return value_.has_value(); }

    /// The value. There must be one.
    Value& operator*() { return *value_; }
    const Value& operator*() const { return *value_; }
    Value* operator->() { return &*value_; }
    const Value* operator->() const { return &*value_; }

    /// Empty when there is a value.
    const std::string& ProblemText() const { return problem_; }

private:
    std::optional<Value> value_;
    std::string problem_;
};

} // namespace desktop
