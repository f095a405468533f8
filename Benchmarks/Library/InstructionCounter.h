#pragma once

#include <optional>

/// The user instructions of this thread since it was made, as the processor counts them.
class InstructionCounter {
public:
    InstructionCounter();
    ~InstructionCounter();

    InstructionCounter(const InstructionCounter&) = delete;
    InstructionCounter& operator=(const InstructionCounter&) = delete;

    /// Nothing where the counter cannot be read, as on most virtual machines.
    std::optional<double> Read() const;

private:
    int descriptor_;
};
