#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

/// The descriptors that the process has open, that of the counting included.
inline std::size_t OpenDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}
