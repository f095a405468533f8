#pragma once

#include <sstream>
#include <string>

#include "Tests/Support/Recorder.h"
#include "Tests/Support/RecordingApplication.h"

namespace recording {

/// The name of an object that the recording platform handed out, "null", or "?" for any other.
std::string NameOf(const void* object);

/// Records "<function> <argument> <argument>…" and runs what the test wants to happen then.
template <typename... Arguments>
void Call(const char* function, const Arguments&... arguments)
{
    std::ostringstream line;
    line << function;
    ((line << ' ' << arguments), ...);
    recorder::Record(line.str());
    const auto hook = application().onCall.find(function);
    if (hook != application().onCall.end()) {
        hook->second();
    }
}

} // namespace recording
