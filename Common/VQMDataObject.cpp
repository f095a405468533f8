// A null text stops the process in release builds too: without this, <cassert> does not declare
// `__assert_fail` there.
#undef NDEBUG

#include "Common/VQMDataObject.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

/// Every number text is cut to this length. Only a double can be longer: it has up to 309 digits before
/// the point.
constexpr std::size_t kMaxNumberText = 253;

/// The largest size that an object can have.
constexpr std::size_t kMaxSize = std::numeric_limits<std::ptrdiff_t>::max();

/// The most memory that is reserved for announced bytes at first: the announcement may be wrong.
constexpr uVQMINT64 kMaxReserve = 64ULL << 20U;

/// Later, at most this many times the stored bytes are reserved.
constexpr uVQMINT64 kMaxReserveFactor = 16;

/// Fails like an `assert` in `function`. A real `assert` would print the function's name as the compiler
/// spells it; this text is the same with every compiler.
void AssertText(const char* pStr, int line, const char* function)
{
    if (pStr == nullptr) {
        __assert_fail("pStr!=__null", __FILE__, static_cast<unsigned int>(line), function);
    }
}

/// The value of a digit; more than 9 for any other character, because the ones below '0' wrap around.
unsigned int DigitOf(char character)
{
    return static_cast<unsigned char>(character) - static_cast<unsigned int>('0');
}

bool IsDigit(char character)
{
    return DigitOf(character) <= 9;
}

/// The number of the leading digits; wraps around.
template <typename Unsigned>
Unsigned ScanDigits(const char* pStr)
{
    Unsigned number = 0;
    for (unsigned int digit = DigitOf(*pStr); digit <= 9; digit = DigitOf(*++pStr)) {
        number = number * 10U + digit;
    }
    return number;
}

struct DigitRun {
    std::uint64_t number;
    const char* pEnd;
};

/// The first digits, at most as many as a double holds exactly. Up to there, integer arithmetic gives
/// the same number as arithmetic on doubles, and faster.
DigitRun ScanExactDigits(const char* pStr)
{
    constexpr int kExactDigits = 15;
    DigitRun run = {0, pStr};
    for (int i = 0; i < kExactDigits && IsDigit(*run.pEnd); ++i, ++run.pEnd) {
        run.number = run.number * 10U + static_cast<std::uint64_t>(*run.pEnd - '0');
    }
    return run;
}

/// A product that is rounded separately: stored, so that no compiler, with any options, fuses it with
/// an addition that follows.
double Product(double left, double right)
{
    const volatile double product = left * right;
    return product;
}

/// The capacity that doubling reaches from `capacity` until `size` bytes fit.
std::size_t DoubleUntil(std::size_t capacity, std::size_t size)
{
    if (capacity == 0) {
        capacity = 1;
    }
    while (capacity < size) {
        capacity = capacity > kMaxSize / 2 ? kMaxSize : capacity * 2;
    }
    return capacity;
}

/// The capacity for `size` bytes and for as many of the expected ones as the limits allow.
std::size_t WithReserve(std::size_t size, uVQMINT64 expected)
{
    const uVQMINT64 believed = std::min(expected, std::max(kMaxReserve, kMaxReserveFactor * size));
    return size + static_cast<std::size_t>(std::min<uVQMINT64>(believed, kMaxSize - size));
}

} // namespace

CVQMDataObject::~CVQMDataObject() = default;
CVQMDataStructureObject::~CVQMDataStructureObject() = default;
CVQMDataSerializableObject::~CVQMDataSerializableObject() = default;
CVQMDataBufferObject::~CVQMDataBufferObject() = default;

void CVQMDataObject::StrToNumber(const char* pStr, int& number)
{
    AssertText(pStr, __LINE__, "void CVQMDataObject::StrToNumber(const char*, int&)");
    const bool negative = *pStr == '-';
    // Unsigned, because a signed overflow would be undefined; the result wraps around as documented.
    const auto magnitude = ScanDigits<unsigned int>(negative ? pStr + 1 : pStr);
    number = static_cast<int>(negative ? 0U - magnitude : magnitude);
}

void CVQMDataObject::StrToNumber(const char* pStr, uVQMINT64& number)
{
    AssertText(pStr, __LINE__, "void CVQMDataObject::StrToNumber(const char*, uVQMINT64&)");
    number = ScanDigits<uVQMINT64>(pStr);
}

void CVQMDataObject::StrToNumber(const char* pStr, double& number)
{
    AssertText(pStr, __LINE__, "void CVQMDataObject::StrToNumber(const char*, double&)");
    const bool negative = *pStr == '-';
    if (negative) {
        ++pStr;
    }
    const DigitRun whole = ScanExactDigits(pStr);
    auto integer = static_cast<double>(whole.number);
    for (pStr = whole.pEnd; IsDigit(*pStr); ++pStr) {
        // Rounded once, on every target: those without the instruction call a function for it.
        integer = std::fma(integer, 10.0, *pStr - '0');
    }
    double fraction = 0.0;
    double scale = 1.0;
    while (*pStr == '.') {
        ++pStr;
        // The shortcut counts digits from zero. After a further '.', the fraction so far is not zero.
        if (fraction == 0.0) {
            const DigitRun digits = ScanExactDigits(pStr);
            fraction = static_cast<double>(digits.number);
            for (; pStr != digits.pEnd; ++pStr) {
                scale *= 0.1;
            }
        }
        for (; IsDigit(*pStr); ++pStr) {
            scale *= 0.1;
            // Rounded twice, unlike the integer part above: intended.
            fraction = Product(fraction, 10.0) + (*pStr - '0');
        }
        // A further '.' continues from here with the scaled fraction: intended.
        fraction = Product(fraction, scale);
    }
    number = negative ? -(integer + fraction) : integer + fraction;
}

void CVQMDataObject::NumberToStr(int& number, std::string& str)
{
    str = std::to_string(number);
}

void CVQMDataObject::NumberToStr(uVQMINT64& number, std::string& str)
{
    str = std::to_string(number);
}

void CVQMDataObject::NumberToStr(double& number, std::string& str)
{
    // Sign, 309 digits, point and six decimals at most.
    char text[320];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6);
    str.assign(text, std::min(static_cast<std::size_t>(result.ptr - text), kMaxNumberText));
}

void CVQMDataObject::NumberToHexStr(int& number, std::string& str)
{
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned int>(number));
    str = text;
}

CVQMDataBufferObject::CVQMDataBufferObject(const CVQMDataBufferObject& other) : CVQMDataObject(other)
{
    InsertData(other.GetData(), other.GetDataSize());
}

CVQMDataBufferObject& CVQMDataBufferObject::operator=(const CVQMDataBufferObject& other)
{
    CVQMDataBufferObject copy(other);
    Swap(copy);
    return *this;
}

CVQMDataBufferObject::CVQMDataBufferObject(CVQMDataBufferObject&& other) noexcept
    : CVQMDataObject(other),
      m_pData(std::move(other.m_pData)),
      m_nSize(std::exchange(other.m_nSize, 0)),
      m_nCapacity(std::exchange(other.m_nCapacity, 0))
{
}

CVQMDataBufferObject& CVQMDataBufferObject::operator=(CVQMDataBufferObject&& other) noexcept
{
    CVQMDataBufferObject moved(std::move(other));
    Swap(moved);
    return *this;
}

void CVQMDataBufferObject::Swap(CVQMDataBufferObject& other) noexcept
{
    m_pData.swap(other.m_pData);
    std::swap(m_nSize, other.m_nSize);
    std::swap(m_nCapacity, other.m_nCapacity);
}

void CVQMDataBufferObject::InsertData(const char* pData, uVQMINT64 nSize)
{
    AppendReserving(pData, nSize, 0);
}

void CVQMDataBufferObject::AppendReserving(const char* pData, uVQMINT64 nSize, uVQMINT64 nExpected)
{
    if (nSize == 0) {
        return;
    }
    std::unique_ptr<char[]> old; // released last: the bytes to append may lie in it
    if (nSize > m_nCapacity - m_nSize) {
        old = Grow(nSize, nExpected);
    }
    std::memcpy(m_pData.get() + m_nSize, pData, static_cast<std::size_t>(nSize));
    m_nSize += static_cast<std::size_t>(nSize);
}

/// Makes room for `nSize` more bytes. Returns the old memory, with the bytes in it.
std::unique_ptr<char[]> CVQMDataBufferObject::Grow(uVQMINT64 nSize, uVQMINT64 nExpected)
{
    if (nSize > kMaxSize - m_nSize) {
        // The text is part of the interface.
        throw std::length_error("vector::_M_emplace_back_aux");
    }
    const std::size_t size = m_nSize + static_cast<std::size_t>(nSize);
    const std::size_t doubled = DoubleUntil(m_nCapacity, size);
    const std::size_t wanted = std::max(doubled, WithReserve(size, nExpected));

    // Not `make_unique`, which would fill it with zeros.
    std::unique_ptr<char[]> room(wanted > doubled ? new (std::nothrow) char[wanted] : nullptr);
    std::size_t capacity = wanted;
    if (room == nullptr) {
        room.reset(new char[doubled]);
        capacity = doubled;
    }
    m_pData.swap(room);
    m_nCapacity = capacity;
    if (m_nSize != 0) {
        std::memcpy(m_pData.get(), room.get(), m_nSize);
    }
    return room;
}
