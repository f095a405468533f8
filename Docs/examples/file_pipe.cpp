// Writes a file, appends a line to it, and reads it back in steps of 8 bytes.

#include <iostream>
#include <string>

#include "VQMPipe/VQMFilePipe.h"

namespace {

/// One write: open, write, close. True if all of it is on disk.
bool Write(int command, const std::string& path, const std::string& text)
{
    CVQMDataBufferObject source;
    source.InsertData(text.data(), text.size());

    CVQMFileRequestData::_VQMFileRequest request;
    request.strDestURI = path;
    request.eRequestCommand = command;
    request.pSerializableData = &source;
    request.bAddNewLine = true; // only appending adds "\r\n"
    CVQMFileRequestData data;
    data.SetStructure(&request);

    CVQMFilePipe pipe;
    void* handle = pipe.Request(&data); // no handle in the request: opens the file first
    if (handle == nullptr) {
        return false;
    }
    const uVQMINT64 written = pipe.GetFileSizeToRead(handle);
    pipe.DisconnectPipe(handle); // what the disk refuses now, it refuses silently
    return pipe.GetFileSize(path.c_str()) == written;
}

bool Read(const std::string& path, CVQMDataBufferObject& destination)
{
    CVQMFileRequestData::_VQMFileRequest request;
    request.strDestURI = path;
    request.eRequestCommand = REQUEST_READ;
    request.pDeSerializableData = &destination;
    request.nReadUnitSize = 8;
    request.nRequestID = 1;
    request.fnCallback = [](int id, char* /*data*/, uVQMINT64 size, IVQMPipe* /*pipe*/, void* /*handle*/) {
        std::cout << "request " << id << ": " << size << " bytes\n";
    };
    CVQMFileRequestData data;
    data.SetStructure(&request);

    CVQMFilePipe pipe;
    request.hPipe = pipe.CreatePipe(&data); // nothing is read yet
    if (request.hPipe == nullptr) {
        return false;
    }
    data.SetStructure(&request);
    while (!pipe.CheckCompleteFileRead(request.hPipe)) {
        if (pipe.Request(&data) == nullptr) {
            pipe.DisconnectPipe(request.hPipe); // after an error the handle may still be open
            return false;
        }
    }
    pipe.DisconnectPipe(request.hPipe);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: file_pipe FILE\n";
        return 2;
    }
    const std::string path = argv[1];
    CVQMDataBufferObject content;
    if (!Write(REQUEST_WRITE, path, "first line, ") || !Write(REQUEST_APPEND, path, "and more") ||
        !Read(path, content)) {
        std::cerr << path << ": failed, the log says why\n";
        return 1;
    }
    std::cout.write(content.GetData(), static_cast<std::streamsize>(content.GetDataSize()));
    return 0;
}
