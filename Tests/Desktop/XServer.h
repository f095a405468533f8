#pragma once

#include <string>
#include <sys/types.h>

/// An Xvfb of the test's own, on a display that was free. Ends with the object.
class XServer {
public:
    /// `screen`: its size and depth.
    explicit XServer(const char* screen = "640x480x24");
    ~XServer();

    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// ":<number>"; empty when the server did not start.
    const std::string& Name() const { return name_; }

private:
    pid_t pid_ = -1;
    std::string name_;
};
