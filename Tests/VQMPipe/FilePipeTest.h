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

#include "Tests/Support/Recorder.h"
#include "Tests/VQMPipe/PipeObjects.h"

using FileRequest = CVQMFileRequestData::_VQMFileRequest;
using recorder::Lines;

/// A private directory, and the shorthand of the pipe's tests.
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

    /// The text of this standard library when a stream throws because of its state.
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

    /// The error of a path that cannot be opened.
    static std::string OpenError(int command, const std::string& path)
    {
        switch (command) {
        case REQUEST_WRITE:
            return StreamFailure();
        case REQUEST_READ:
            return "ifstream open Error : " + path;
        default:
            return "ofstream open Error : " + path;
        }
    }

    static std::string CreateError(const std::string& message)
    {
        return Debug("CreatePipe", "CVQMFilePipe::CreatePipe - error " + message + " \n");
    }

    std::string directory_;
    OpenPipe pipe_;
};
