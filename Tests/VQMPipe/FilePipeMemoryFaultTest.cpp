#include "Tests/VQMPipe/FilePipeMemoryTest.h"

// Every allocation of every operation fails in turn, until the operation gets through. Two other
// transfers of the same pipe are under way meanwhile.

namespace {

TEST_F(FilePipeMemory, AFailedOpenLeavesNothingBehind)
{
    const std::string content = "some content";
    for (const int command : {REQUEST_WRITE, REQUEST_READ, REQUEST_APPEND}) {
        for (const uVQMINT64 offset : {0ULL, 5ULL}) {
            Exhaust({"open " + std::to_string(command) + " at " + std::to_string(offset),
                     [&] {
                         FileRequest request = RequestFor(command, MakeFile("file", content));
                         request.nStartOffset = offset;
                         request.fnCallback = LargeCallback();
                         return request;
                     },
                     true, true,
                     [&](bool) {
                         const std::string now = ContentOf(Path("file"));
                         EXPECT_TRUE(now == content || (command == REQUEST_WRITE && now.empty())) << now;
                     }});
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, FailedOpensLogTheirCauseOrAMemoryError)
{
    MakeFile("short", "0123");
    const struct {
        int command;
        const char* name;
        uVQMINT64 offset;
    } cases[] = {{REQUEST_WRITE, "no/such/file", 0},
                 {REQUEST_READ, "no/such/file", 0},
                 {REQUEST_APPEND, "no/such/file", 0},
                 {REQUEST_READ, "short", 4},
                 {3, "short", 0}};
    for (const auto& test : cases) {
        for (const bool create : {true, false}) {
            if (!create && test.offset != 0) {
                continue; // heeded by `CreatePipe` only
            }
            Exhaust({std::string(create ? "create " : "request ") + test.name + ' ' + std::to_string(test.command),
                     [&] {
                         FileRequest request = RequestFor(test.command, Path(test.name));
                         request.nStartOffset = test.offset;
                         request.fnCallback = LargeCallback();
                         return request;
                     },
                     create,
                     false,
                     {}});
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AFailedReadStepLeavesEachKindOfDestinationUnchanged)
{
    const std::string content(300, 'c');
    const std::string path = MakeFile("file", content);
    CVQMDataBufferObject buffer;
    Document document;
    OtherData other;
    int calls = 0;
    const struct {
        const char* name;
        CVQMDataObject* destination;
        IVQMSerialize* serializer;
    } destinations[] = {{"buffer", &buffer, nullptr},
                        {"none", nullptr, nullptr},
                        {"other", &other, nullptr},
                        {"document", &document, &serializer_}};
    for (const auto& destination : destinations) {
        for (const uVQMINT64 unit : {0ULL, 100ULL}) {
            for (const int earlierSteps : {-1, 0, 1, 2}) { // -1: the request opens the file itself
                if (unit == 0 && earlierSteps > 0) {
                    continue;
                }
                std::string before;
                Exhaust({std::string(destination.name) + " unit " + std::to_string(unit) + " after " +
                             std::to_string(earlierSteps),
                         [&] {
                             FileRequest request = RequestFor(REQUEST_READ, path);
                             request.pDeSerializableData = destination.destination;
                             request.pSerializer = destination.serializer;
                             request.nReadUnitSize = unit;
                             request.fnCallback = [&calls, large = kLargeText](int, char*, uVQMINT64, IVQMPipe*,
                                                                               void*) { ++calls; };
                             buffer = {};
                             document.text = "before";
                             if (earlierSteps >= 0) {
                                 Opened(request);
                             }
                             for (int step = 0; step < earlierSteps; ++step) {
                                 EXPECT_NE(Step(request), nullptr);
                             }
                             before = TextOf(buffer);
                             calls = 0;
                             return request;
                         },
                         false, true,
                         [&](bool done) {
                             const bool complete = unit == 0 || earlierSteps == 2;
                             const bool delivered = destination.serializer == nullptr || complete;
                             EXPECT_EQ(calls, done && delivered ? 1 : 0);
                             if (!done) {
                                 EXPECT_EQ(TextOf(buffer), before);
                                 EXPECT_EQ(document.text, "before");
                             }
                             buffer = {};
                             document.text = {};
                         }});
            }
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AStepWhoseCallbackRunsOutOfMemoryIsNotCounted)
{
    const std::string path = MakeFile("file", std::string(300, 'c'));
    std::string copy;
    FileRequest request;
    Exhaust({"callback",
             [&] {
                 request = RequestFor(REQUEST_READ, path);
                 request.nReadUnitSize = 100;
                 request.fnCallback = [&copy](int, char* data, uVQMINT64 size, IVQMPipe*, void*) {
                     copy.assign(data, static_cast<std::size_t>(size));
                 };
                 Opened(request);
                 copy = std::string();
                 return request;
             },
             false, true,
             [&](bool done) {
                 EXPECT_EQ(pipe_.GetCurretFileReadByNow(request.hPipe), done ? 100U : 0U);
                 EXPECT_EQ(copy.size(), done ? 100U : 0U);
                 copy = std::string();
                 request = FileRequest();
             }});
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, AWriteStepWritesAllOrNothing)
{
    CVQMDataBufferObject buffer;
    Document document;
    const struct {
        const char* name;
        CVQMDataObject* source;
        IVQMSerialize* serializer;
    } sources[] = {{"buffer", &buffer, nullptr}, {"document", &document, &serializer_}};
    for (const int command : {REQUEST_WRITE, REQUEST_APPEND}) {
        for (const auto& source : sources) {
            for (const int earlierSteps : {-1, 0, 1}) {
                std::string before;
                const std::string text = kLargeText + (command == REQUEST_APPEND ? "\r\n" : "");
                Exhaust({std::string(source.name) + " command " + std::to_string(command) + " after " +
                             std::to_string(earlierSteps),
                         [&] {
                             FileRequest request = RequestFor(command, MakeFile("file", "old"));
                             request.pSerializableData = source.source;
                             request.pSerializer = source.serializer;
                             request.bAddNewLine = true;
                             request.fnCallback = LargeCallback();
                             document.text = "a text that takes memory";
                             buffer = {};
                             Fill(buffer, document.text);
                             if (earlierSteps >= 0) {
                                 Opened(request);
                             }
                             for (int step = 0; step < earlierSteps; ++step) {
                                 EXPECT_NE(Step(request), nullptr);
                             }
                             document.text = kLargeText;
                             buffer = {};
                             Fill(buffer, document.text);
                             before = ContentOf(Path("file"));
                             return request;
                         },
                         false, true,
                         [&](bool done) {
                             const std::string now = ContentOf(Path("file"));
                             if (done) {
                                 EXPECT_EQ(now.substr(now.size() - text.size()), text);
                             } else {
                                 EXPECT_TRUE(now == before || (now.empty() && command == REQUEST_WRITE));
                                 EXPECT_EQ(TextOf(buffer), kLargeText) << "no line end is left in it";
                             }
                             document.text = {};
                             buffer = {};
                         }});
            }
        }
    }
    ExpectBystandersWork();
}

TEST_F(FilePipeMemory, FailedStepsLogTheirCauseOrAMemoryError)
{
    const std::string path = MakeFile("file", "0123456789");
    CVQMDataBufferObject buffer;
    Fill(buffer, kLargeText);
    Document document;
    PlainSerializer refusing;
    refusing.onSerialize = [](CVQMDataBufferObject*) { return false; };
    refusing.onDeserialize = [](const char*) { return false; };
    const struct {
        const char* name;
        int command;
        std::string path;
        CVQMDataObject* data;
        IVQMSerialize* serializer;
    } cases[] = {
        {"a full disk", REQUEST_WRITE, "/dev/full", &buffer, nullptr},
        {"a full disk to append to", REQUEST_APPEND, "/dev/full", &buffer, nullptr},
        {"a directory", REQUEST_READ, std::filesystem::current_path().string(), &buffer, nullptr},
        {"a text that is none", REQUEST_WRITE, Path("out"), &buffer, &serializer_},
        {"no text", REQUEST_WRITE, Path("out"), &document, &refusing},
        {"a document that is none", REQUEST_READ, path, &buffer, &serializer_},
        {"no document", REQUEST_READ, path, &document, &refusing},
    };
    for (const auto& test : cases) {
        Exhaust({test.name,
                 [&] {
                     FileRequest request = RequestFor(test.command, test.path);
                     request.pSerializableData = request.pDeSerializableData = test.data;
                     request.pSerializer = test.serializer;
                     request.nReadUnitSize = 0;
                     Opened(request);
                     if (test.command == REQUEST_READ && pipe_.GetFileSizeToRead(request.hPipe) == 0) {
                         pipe_.m_pipeInfoMap[request.hPipe].nFileSize = 1; // an empty directory
                     }
                     return request;
                 },
                 false,
                 false,
                 {}});
    }
    ExpectBystandersWork();
}

} // namespace
