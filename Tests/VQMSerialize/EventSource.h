#pragma once

#include "VQMSerialize/VQMXMLSerialize.h"

/// A serializer whose current event is what a test says.
class EventSource : public CVQMXMLSerialize {
public:
    EventSource(int step, const char* name, const char** attributes, const char* text)
    {
        m_nParsingStep = step;
        m_pElementName = name;
        m_ppAttributes = attributes;
        m_pText = text;
    }
};
