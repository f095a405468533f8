#pragma once

#include <map>
#include <string>

#include "Common/VQMDataObject.h"

/// Named values from an XML file, for the whole process. Docs/constants-format.md describes the file.
///
/// The class is used through its static operations; an object of it is only what a serializer
/// fills while a file is read.
///
/// Threads: there is no lock, and looking a value up may store its key. Load the file before any
/// look-up, and look values up on one thread.
class CVQMDataConstants : public CVQMDataSerializableObject {
public:
    CVQMDataConstants();
    ~CVQMDataConstants() override;

    /// Reads the file at `filePath` and adds its values to those that are there; a key that is
    /// there already takes the new value. False, logged at debug priority, when the path is empty
    /// or the file cannot be read or is not well-formed; what was read before a parse error stays.
    /// Throws `std::bad_alloc` when a value cannot be kept; those that are kept are whole.
    static bool Initialize(std::string filePath);

    // Look-ups. While no value was ever loaded, the output stays as it is. After that a key that
    // is not there reads as empty text or 0, and is there from then on, with an empty value.

    static void GetValue(std::string key, std::string& value);

    /// By the conversions of `CVQMDataObject`: "12ab" gives 12, "abc" gives 0.
    static void GetValue(std::string key, int& value);
    static void GetValue(std::string key, uVQMINT64& value);

    /// There is no plain record: both do nothing. The first name's spelling is the interface.
    void GetSturcture(void* pStructure) override;
    void SetStructure(void* pStructure) override;

    /// Constants are never written: false.
    bool WriteTo(IVQMSerialize* pSerialize) override;

    /// Takes one parsing step of a `CVQMXMLSerialize`; false for any other serializer, and when a
    /// start or end tag comes without its name or its attributes.
    bool ReadFrom(IVQMSerialize* pSerialize) override;

    /// Stores the pair of a "Data" start tag. `attributes` alternates names and values and ends
    /// with a null name.
    ///
    /// Only the first two attributes count, and "key" must stand before "value": else the value is
    /// stored under the empty key. Other elements, other attributes and missing ones are logged at
    /// debug priority. A null argument does nothing. Throws `std::bad_alloc`; the key has its old
    /// value then.
    void OnStartElement(const char* name, const char** attributes);

    /// Logs the end tag at debug priority; null does nothing.
    void OnEndElement(const char* name);

protected:
    static std::map<std::string, std::string> m_DataCache;
};
