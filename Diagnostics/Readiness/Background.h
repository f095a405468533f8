#pragma once

#include <future>
#include <system_error>
#include <type_traits>

#include "Diagnostics/Readiness/SignalsBlocked.h"

namespace readiness {

/// Runs `work` on a thread of its own or, where there can be none, when the result is asked for. The future
/// waits for the thread when it is destroyed.
template <typename Work>
std::future<std::invoke_result_t<Work>> InBackground(const Work& work)
{
    const SignalsBlocked blocked;
    try {
        return std::async(std::launch::async, work);
    } catch (const std::system_error&) {
        return std::async(std::launch::deferred, work);
    }
}

} // namespace readiness
