#include "Common/VQMException.h"

#include <iterator>
#include <utility>

const char* const SocketStateString[4] = {"CONNECTED", "DISCONNECTED", "TIMEOUT", "SAME_IP_CLIENT"};

CVQMException::CVQMException(int nErrorCode, std::string strErrorMsg)
    : m_strErrorMsg(std::move(strErrorMsg)), m_nErrorCode(nErrorCode)
{
}

CVQMException::~CVQMException() = default;

int CVQMException::GetErrorCode() const
{
    return m_nErrorCode;
}

std::string CVQMException::GetErrorMsg() const
{
    return m_strErrorMsg;
}

const char* CVQMException::GetErrorText() const noexcept
{
    return m_strErrorMsg.c_str();
}

const char* CVQMException::GetSocketStateMsg(int state)
{
    // As unsigned numbers the negative states lie above the table too.
    const auto index = static_cast<unsigned int>(state);
    return index < std::size(SocketStateString) ? SocketStateString[index] : nullptr;
}
