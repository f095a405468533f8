#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "Tests/Platform/Recorder.h"
#include "VQMPipe/VQMFilePipe.h"
#include "VQMSerialize/VQMXMLSerialize.h"

using FileRequest = CVQMFileRequestData::_VQMFileRequest;
using recorder::Lines;

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

/// A data object that is neither a buffer nor serializable.
struct OtherData : CVQMDataObject {};

/// A request of a kind that the pipe does not take.
struct OtherRequest : CVQMDataStructureObject {
    void GetSturcture(void* /*pStructure*/) override {}
    void SetStructure(void* /*pStructure*/) override {}
};

/// A directory of its own, and the shorthand of the pipe's tests.
class FilePipe : public testing::Test {
protected:
    FilePipe()
    {
        std::string pattern = testing::TempDir() + "filepipe-XXXXXX";
        directory_ = mkdtemp(pattern.data());
        recorder::Clear();
    }

    ~FilePipe() override
    {
        std::filesystem::remove_all(directory_);
        recorder::Clear();
    }

    std::string Path(const std::string& name) const { return directory_ + "/" + name; }

    std::string MakeFile(const std::string& name, const std::string& content) const
    {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    static std::string ContentOf(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static std::string TextOf(const CVQMDataBufferObject& buffer)
    {
        return {buffer.GetData() != nullptr ? buffer.GetData() : "", static_cast<std::size_t>(buffer.GetDataSize())};
    }

    static void Fill(CVQMDataBufferObject& buffer, const std::string& text)
    {
        buffer.InsertData(text.data(), text.size());
    }

    static FileRequest RequestFor(int command, const std::string& path)
    {
        FileRequest request;
        request.strDestURI = path;
        request.eRequestCommand = command;
        return request;
    }

    void* Create(FileRequest request)
    {
        CVQMFileRequestData data;
        data.SetStructure(&request);
        return pipe_.CreatePipe(&data);
    }

    void* Step(FileRequest request)
    {
        CVQMFileRequestData data;
        data.SetStructure(&request);
        return pipe_.Request(&data);
    }

    /// Opens the request's file, leaves the handle in the request and forgets what was logged.
    void* Opened(FileRequest& request)
    {
        request.hPipe = Create(request);
        EXPECT_NE(request.hPipe, nullptr);
        recorder::Clear();
        return request.hPipe;
    }

    static std::string Debug(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMFilePipe.cpp").Debug(function, message);
    }

    static std::string SizeLine(const std::string& path, unsigned long long size)
    {
        return Debug("GetFileSize", "CVQMFilePipe::GetFileSize - (" + path + ") : " + std::to_string(size) + " \n");
    }

    static std::string RequestError(const std::string& message)
    {
        return Debug("Request", "CVQMFilePipe::Request - error " + message + " \n");
    }

    /// What this standard library says when a stream throws over its state.
    static std::string StreamFailure()
    {
        try {
            std::ofstream stream;
            stream.exceptions(std::ios::failbit);
            stream.setstate(std::ios::failbit);
        } catch (const std::ios_base::failure& failure) {
            return failure.what();
        }
        return {};
    }

    static std::size_t OpenDescriptors()
    {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
    }

    std::string directory_;
    OpenPipe pipe_;
};
