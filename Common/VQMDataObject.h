#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include "Common/VQMException.h"

class IVQMSerialize;

/// Sizes, counts, identifiers and file offsets.
using uVQMINT64 = unsigned long long;

/// The base class of all objects that move through a pipe or a serializer, with the conversions between
/// numbers and text that they share.
///
/// Threads: the conversions keep no state and may run on any thread. No data object locks: one
/// object belongs to one thread at a time.
class CVQMDataObject {
public:
    CVQMDataObject() = default;
    virtual ~CVQMDataObject();

    CVQMDataObject(const CVQMDataObject&) = default;
    CVQMDataObject& operator=(const CVQMDataObject&) = default;

    // Text to number. The longest prefix that is a number counts, what follows is ignored, and
    // text without such a prefix gives 0; no white space, '+' or exponent is accepted. A null
    // `pStr` stops the process with a failed assertion, in every build type.

    /// An optional '-' and decimal digits; out of range wraps around in 32 bits.
    void StrToNumber(const char* pStr, int& number);

    /// Decimal digits without a sign; out of range wraps around in 64 bits.
    void StrToNumber(const char* pStr, uVQMINT64& number);

    /// An optional '-', digits, and '.' with a fraction. The same text gives the same bits on
    /// every target. A further '.' continues with the fraction read so far: "1.5.5" gives 1.1.
    void StrToNumber(const char* pStr, double& number);

    // Number to text. The text is replaced; the number is only read. The decimal point is '.' in
    // every locale, and text longer than 253 characters is cut there.

    void NumberToStr(int& number, std::string& str);
    void NumberToStr(uVQMINT64& number, std::string& str);

    /// With six decimals.
    void NumberToStr(double& number, std::string& str);

    /// Eight upper-case hexadecimal digits, with leading zeros; -1 gives "FFFFFFFF".
    void NumberToHexStr(int& number, std::string& str);
};

/// A data object that can be exchanged with a plain record. Each concrete class says which record
/// that is; one that has none does nothing in both operations.
class CVQMDataStructureObject : public CVQMDataObject {
public:
    ~CVQMDataStructureObject() override;

    /// Copies the object's content into the record at `pStructure`, which the caller owns.
    /// The name's spelling is the interface.
    virtual void GetSturcture(void* pStructure) = 0;

    /// Loads the object from the record at `pStructure`, which stays the caller's.
    virtual void SetStructure(void* pStructure) = 0;
};

/// A data object that a serializer can fill.
class CVQMDataSerializableObject : public CVQMDataStructureObject {
public:
    ~CVQMDataSerializableObject() override;

    /// Writes the object through the serializer. No class of this library writes: false.
    virtual bool WriteTo(IVQMSerialize* pSerialize) = 0;

    /// Takes the serializer's current parsing step. Called once per step, on the parsing thread;
    /// pointers obtained from the serializer are valid only during the call.
    virtual bool ReadFrom(IVQMSerialize* pSerialize) = 0;
};

/// A growable sequence of bytes.
class CVQMDataBufferObject : public CVQMDataObject {
public:
    CVQMDataBufferObject() = default;
    ~CVQMDataBufferObject() override;

    CVQMDataBufferObject(const CVQMDataBufferObject& other);
    CVQMDataBufferObject& operator=(const CVQMDataBufferObject& other);

    // A move takes the bytes where they are, and leaves `other` as it was after construction.

    CVQMDataBufferObject(CVQMDataBufferObject&& other) noexcept;
    CVQMDataBufferObject& operator=(CVQMDataBufferObject&& other) noexcept;

    /// Appends `nSize` bytes, which may lie in this very buffer; does nothing with 0.
    /// A full buffer doubles its capacity, from 1 on, until the bytes fit. More bytes than an
    /// object can have throw `std::length_error`, exhausted memory throws `std::bad_alloc`; both
    /// leave the buffer as it was.
    void InsertData(const char* pData, uVQMINT64 nSize);

    /// Appends `nSize` bytes and a zero byte, as `InsertData` does one after the other.
    void InsertText(const char* pText, uVQMINT64 nSize)
    {
        if (nSize < m_nCapacity - m_nSize) { // the usual case, for as many texts as a document has
            const auto size = static_cast<std::size_t>(nSize);
            char* const end = m_pData.get() + m_nSize;
            std::memcpy(end, pText, size);
            end[size] = '\0';
            m_nSize += size + 1;
        } else {
            InsertData(pText, nSize);
            InsertData("", 1);
        }
    }

    /// `InsertData` for a part of something of which `nExpected` more bytes are to follow: a full
    /// buffer makes room for them too, so that they move nothing. The number may be wrong: at first
    /// the room is 64 MiB at most, then 16 times what the buffer holds; and if memory does not
    /// suffice for it, the buffer only doubles.
    void AppendReserving(const char* pData, uVQMINT64 nSize, uVQMINT64 nExpected);

    /// The first byte, until the next `InsertData`; null while nothing has ever been stored.
    const char* GetData() const { return m_pData.get(); }

    /// The number of bytes stored.
    uVQMINT64 GetDataSize() const { return m_nSize; }

    /// Forgets the bytes and keeps the capacity.
    void Clear() { m_nSize = 0; }

private:
    void Swap(CVQMDataBufferObject& other) noexcept;
    std::unique_ptr<char[]> Grow(uVQMINT64 nSize, uVQMINT64 nExpected);

    std::unique_ptr<char[]> m_pData;
    std::size_t m_nSize = 0;
    std::size_t m_nCapacity = 0;
};
