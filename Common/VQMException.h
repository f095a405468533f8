#pragma once

#include <string>

/// The names of the socket states 0 to 3: connected, disconnected, timed out, and refused because
/// another client has the same address.
extern const char* const SocketStateString[4];

/// The one exception type of the library: an error code and a message.
///
/// It is not a `std::exception`: a handler for those does not catch it. Thrown by value, caught by
/// reference. An object may be read from several threads at once.
class CVQMException {
public:
    /// Codes in use: 0x100001 a standard exception, whose text is the message; 0x100005 a file that
    /// cannot be opened; 0x100006 a failed write; 0x100007 a failed read.
    CVQMException(int nErrorCode, std::string strErrorMsg);
    virtual ~CVQMException();

    CVQMException(const CVQMException&) = default;
    CVQMException& operator=(const CVQMException&) = default;

    int GetErrorCode() const;

    /// A copy of the message.
    std::string GetErrorMsg() const;

    /// The message itself, as long as this object lives. Unlike a copy it takes no memory: for
    /// handlers, which may run because there is none.
    const char* GetErrorText() const noexcept;

    /// The entry of `SocketStateString`, or null for a state that is not in the table.
    static const char* GetSocketStateMsg(int state);

private:
    std::string m_strErrorMsg;
    int m_nErrorCode;
};
