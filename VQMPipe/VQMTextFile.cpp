#include "VQMPipe/VQMTextFile.h"

#include "VQMPipe/VQMFilePipe.h"

VQMTextFileResult VQMReadTextFile(const std::string& path, uVQMINT64 readUnit, CVQMDataBufferObject& text)
{
    CVQMFilePipe pipe;
    CVQMFileRequestData requestData;
    CVQMFileRequestData::_VQMFileRequest request;
    request.strDestURI = path;
    request.eRequestCommand = REQUEST_READ;
    request.pDeSerializableData = &text;
    request.nReadUnitSize = readUnit;
    requestData.SetStructure(&request);

    void* handle = pipe.CreatePipe(&requestData);
    if (handle == nullptr) {
        return VQMTextFileResult::NotOpened;
    }
    request.hPipe = handle;
    requestData.SetStructure(&request);
    while (!pipe.CheckCompleteFileRead(handle)) {
        if (pipe.Request(&requestData) == nullptr) {
            pipe.DisconnectPipe(handle);
            return VQMTextFileResult::NotRead;
        }
    }
    pipe.DisconnectPipe(handle);
    text.InsertData("", 1);
    return VQMTextFileResult::Complete;
}
