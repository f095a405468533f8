#pragma once

#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

#include "Tests/Support/Descriptors.h"
#include "VQMPipe/VQMFilePipe.h"
#include "VQMSerialize/VQMXMLSerialize.h"

// Data objects and serializers for the pipe's tests.

/// The pipe with its table and its steps in the open.
struct OpenPipe : CVQMFilePipe {
    using CVQMFilePipe::_PipeInfo;
    using CVQMFilePipe::AddPipeInfo;
    using CVQMFilePipe::CopyPipeInfo;
    using CVQMFilePipe::DeletePipeInfo;
    using CVQMFilePipe::ExistHandle;
    using CVQMFilePipe::FOpen;
    using CVQMFilePipe::FRead;
    using CVQMFilePipe::FWrite;
    using CVQMFilePipe::GetPipeInfo;
    using CVQMFilePipe::InitPipeInfo;
    using CVQMFilePipe::m_pipeInfoMap;
    using CVQMFilePipe::m_pipeMutex;
    using CVQMFilePipe::UpdatePipeInfo;
};

/// A document that a serializer fills or writes.
struct Document : CVQMDataSerializableObject {
    std::string text;

    void GetSturcture(void* /*pStructure*/) override {}
    void SetStructure(void* /*pStructure*/) override {}
    bool WriteTo(IVQMSerialize* /*pSerialize*/) override { return false; }
    bool ReadFrom(IVQMSerialize* /*pSerialize*/) override { return true; }
};

/// Writes a document as its text and reads it back, or does what a test says.
struct PlainSerializer : IVQMSerialize {
    std::function<bool(CVQMDataBufferObject*)> onSerialize;
    std::function<bool(const char*)> onDeserialize;

    bool Create() override { return true; }
    void Destroy() override {}

    bool Serialize(const CVQMDataSerializableObject* pObj, CVQMDataBufferObject* pBuffer) override
    {
        if (onSerialize) {
            return onSerialize(pBuffer);
        }
        const std::string& text = static_cast<const Document*>(pObj)->text;
        pBuffer->InsertData(text.data(), text.size());
        return true;
    }

    bool Deserialize(const char* pData, CVQMDataSerializableObject* pObj) override
    {
        if (onDeserialize) {
            return onDeserialize(pData);
        }
        static_cast<Document*>(pObj)->text = pData;
        return true;
    }
};

/// A buffer that is counted.
struct CountedBuffer : CVQMDataBufferObject {
    explicit CountedBuffer(int& count) : count_(count) { ++count_; }
    ~CountedBuffer() override { --count_; }
    CountedBuffer(const CountedBuffer&) = delete;
    CountedBuffer& operator=(const CountedBuffer&) = delete;

private:
    int& count_;
};

/// A data object that is neither a buffer nor serializable.
struct OtherData : CVQMDataObject {};

/// A request of a kind that the pipe does not take.
struct OtherRequest : CVQMDataStructureObject {
    void GetSturcture(void* /*pStructure*/) override {}
    void SetStructure(void* /*pStructure*/) override {}
};
