#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Tests/Data/ConstantsFixture.h"
#include "Tests/VQMSerialize/EmptyText.h"
#include "Tests/VQMSerialize/EventSource.h"
#include "Tests/VQMSerialize/ParserFault.h"

namespace {

using recorder::Lines;

struct OtherSerializer : IVQMSerialize {
    bool Create() override { return true; }
    void Destroy() override {}
    bool Serialize(const CVQMDataSerializableObject* /*pObj*/, CVQMDataBufferObject* /*pBuffer*/) override
    {
        return false;
    }
    bool Deserialize(const char* /*pData*/, CVQMDataSerializableObject* /*pObj*/) override { return true; }
};

constexpr char kWrongAttribute[] = "pAttribute or pValue is wrong";

class DataConstants : public ConstantsTest {
protected:
    DataConstants()
    {
        std::string pattern = testing::TempDir() + "constants-XXXXXX";
        directory_ = mkdtemp(pattern.data());
    }

    ~DataConstants() override { std::filesystem::remove_all(directory_); }

    std::string MakeFile(const std::string& content) const
    {
        std::string path = directory_ + "/constants.xml";
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    static bool Load(const std::string& path) { return CVQMDataConstants::Initialize(path); }
    bool LoadText(const std::string& content) const { return Load(MakeFile(content)); }

    static std::string PipeLine(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMFilePipe.cpp").Debug(function, message);
    }
    /// What opening the file logs.
    static Lines Opening(const std::string& path, std::size_t size)
    {
        return {
            Line("Initialize", "CVQMDataConstants::Initialize \n"), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
            PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
            PipeLine("GetFileSize", "CVQMFilePipe::GetFileSize - (" + path + ") : " + std::to_string(size) + " \n")};
    }

    static Lines Join(Lines first, const Lines& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    static std::string Text(const std::string& key)
    {
        std::string value = "untouched";
        CVQMDataConstants::GetValue(key, value);
        return value;
    }
    static int Int(const std::string& key)
    {
        int value = 77;
        CVQMDataConstants::GetValue(key, value);
        return value;
    }
    static uVQMINT64 Big(const std::string& key)
    {
        uVQMINT64 value = 77;
        CVQMDataConstants::GetValue(key, value);
        return value;
    }

    std::string directory_;
};

TEST_F(DataConstants, AFileIsReadLineByLine)
{
    const std::string xml = "<c>\n<Data key='a' value='1'/>x<Data key='b' value='2'></Data></c>";
    const std::string path = MakeFile(xml);
    EXPECT_TRUE(Load(path));
    EXPECT_EQ(recorder::Take(), Join(Opening(path, xml.size()),
                                     {Line("OnStartElement", "OnStartElement - Unknown Element\n"),
                                      Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - TEXT step not used\n"),
                                      Line("OnEndElement", "OnEndElement - Data element closed\n"),
                                      Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - TEXT step not used\n"),
                                      Line("OnEndElement", "OnEndElement - Data element closed\n"),
                                      Line("OnEndElement", "OnEndElement - Unknown Element\n"),
                                      ParserLine("ParseHttpResponse End !!!!\n")}));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}, {"b", "2"}}));
}

TEST_F(DataConstants, AnEmptyPathFails)
{
    EXPECT_FALSE(Load(""));
    EXPECT_EQ(recorder::Take(), (Lines{Line("Initialize", "CVQMDataConstants::Initialize \n"),
                                       Line("Initialize", "CVQMDataConstants::Initialize - filePath is empty\n")}));
}

TEST_F(DataConstants, AFileThatCannotBeOpenedFails)
{
    const std::string path = directory_ + "/missing";
    EXPECT_FALSE(Load(path));
    EXPECT_EQ(recorder::Take(),
              (Lines{Line("Initialize", "CVQMDataConstants::Initialize \n"), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
                     PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
                     PipeLine("CreatePipe", "CVQMFilePipe::CreatePipe - error ifstream open Error : " + path + " \n"),
                     Line("Initialize", "CVQMDataConstants::Initialize - PIPEHANDLE handle is INVALID_HANDLE\n")}));
}

TEST_F(DataConstants, AFileThatCannotBeReadFails)
{
    // A directory opens, and measures more than 0 bytes where it has an entry.
    MakeFile("");
    EXPECT_FALSE(Load(directory_));
    const Lines lines = recorder::Take();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[4], PipeLine("Request", "CVQMFilePipe::Request - error File Read Error : " + directory_ + " \n"));
    EXPECT_EQ(lines[5], Line("Initialize", "CVQMDataConstants::Initialize - xml file read fail\n"));
}

TEST_F(DataConstants, WhatPrecedesAParseErrorStays)
{
    EXPECT_TRUE(LoadText("<c><Data key='old' value='1'/></c>"));
    recorder::Clear();
    const std::string xml = "<Data key='a' value='1'/><oops";
    const std::string path = MakeFile(xml);
    EXPECT_FALSE(Load(path));
    EXPECT_EQ(recorder::Take(),
              Join(Opening(path, xml.size()),
                   {Line("OnEndElement", "OnEndElement - Data element closed\n"), ParserLine("  PraseError !!!!\n"),
                    Line("Initialize", "CVQMDataConstants::Initialize - xml Deserialize fail\n")}));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}, {"old", "1"}}));
}

TEST_F(DataConstants, AnEmptyFileDoesNotParse)
{
    using parser_fault::EmptyBuffer;
    const std::string path = MakeFile("");
    for (const auto& [answer, message] : {std::pair(EmptyBuffer::Real, RefusalMessage("")),
                                          {EmptyBuffer::Given, kParseErrorMessage},
                                          {EmptyBuffer::Null, kNoBufferMessage}}) {
        parser_fault::faults().emptyBuffer = answer;
        EXPECT_FALSE(Load(path));
        parser_fault::faults() = {};
        EXPECT_EQ(recorder::Take(),
                  Join(Opening(path, 0), {ParserLine(message), Line("Initialize", "CVQMDataConstants::Initialize - xml "
                                                                                  "Deserialize fail\n")}));
    }
}

TEST_F(DataConstants, AParserThatCannotBeMadeFails)
{
    const std::string xml = "<Data key='a' value='1'/>";
    const std::string path = MakeFile(xml);
    parser_fault::faults().creation = parser_fault::Creation::Null;
    EXPECT_FALSE(Load(path));
    parser_fault::faults() = {};
    EXPECT_EQ(
        recorder::Take(),
        Join(Opening(path, xml.size()),
             {recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Create", " XML_ParserCreate is Failed!!!\n"),
              Line("Initialize", "CVQMDataConstants::Initialize - xml serialize creation fail\n")}));
}

TEST_F(DataConstants, AFileOfManyReadUnitsIsReadWhole)
{
    for (const std::size_t size : {10239U, 10240U, 10241U, 20480U, 50000U}) {
        OpenConstants::m_DataCache.clear();
        std::string xml = "<c><Data key='a' value='1'/><Data key='z' value='";
        const std::string end = "'/></c>";
        const std::string value(size - xml.size() - end.size(), 'v');
        ASSERT_EQ((xml + value + end).size(), size);
        EXPECT_TRUE(LoadText(xml + value + end));
        EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}, {"z", value}})) << size;
    }
}

TEST_F(DataConstants, FilesAreMergedAndLaterValuesWin)
{
    EXPECT_TRUE(LoadText("<c><Data key='a' value='1'/><Data key='b' value='2'/></c>"));
    EXPECT_TRUE(LoadText("<c><Data key='b' value='3'/><Data key='B' value='4'/><Data key='b' value='5'/></c>"));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"B", "4"}, {"a", "1"}, {"b", "5"}}));
}

TEST_F(DataConstants, NestingAndTextDoNotCount)
{
    EXPECT_TRUE(LoadText("<Data key='a' value='1'>text<x><Data key='b' value='2'/></x></Data>"));
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"a", "1"}, {"b", "2"}}));
}

TEST_F(DataConstants, ExactlyTwoAttributesAreLookedAt)
{
    const std::string unknown = Line("OnStartElement", "OnStartElement - Unknown attribute\n");
    const std::string wrong = Line("OnStartElement", kWrongAttribute);
    const struct {
        const char* attributes[9];
        Lines lines;
        Cache cache;
    } cases[] = {
        {{"key", "k", "value", "v", nullptr}, {}, {{"k", "v"}}},
        {{"value", "v", "key", "k", nullptr}, {}, {{"", "v"}}},
        {{"value", "v", "value", "w", nullptr}, {}, {{"", "w"}}},
        {{"key", "j", "key", "k", "value", "v", nullptr}, {}, {}},
        {{"key", "k", "value", "v", "extra", "x", nullptr}, {}, {{"k", "v"}}},
        {{"key", "k", "value", "v", "value", "w", nullptr}, {}, {{"k", "v"}}},
        {{"key", "k", "extra", "x", "value", "v", nullptr}, {unknown}, {}},
        {{"a", "1", "b", "2", "key", "k", nullptr}, {unknown, unknown}, {}},
        {{"Key", "k", "value", "v", nullptr}, {unknown}, {{"", "v"}}},
        {{"key", "k", nullptr}, {wrong}, {}},
        {{"value", "v", nullptr}, {wrong}, {{"", "v"}}},
        {{"extra", "x", nullptr}, {unknown, wrong}, {}},
        {{nullptr}, {wrong, wrong}, {}},
        {{nullptr, nullptr, "key", "k"}, {wrong, wrong}, {}}, // behind the end
        {{"key", nullptr, "value", "v", nullptr}, {wrong}, {{"", "v"}}},
        {{"key", "k", "value", "", nullptr}, {}, {{"k", ""}}},
        {{"key", "", "value", "v", nullptr}, {}, {{"", "v"}}},
    };
    for (const auto& test : cases) {
        OpenConstants::m_DataCache.clear();
        const char* attributes[9];
        std::copy(std::begin(test.attributes), std::end(test.attributes), attributes);
        CVQMDataConstants().OnStartElement("Data", attributes);
        EXPECT_EQ(recorder::Take(), test.lines);
        EXPECT_EQ(OpenConstants::m_DataCache, test.cache);
    }
}

TEST_F(DataConstants, ReadingStopsAtTheEndOfTheAttributes)
{
    // On the heap, where a sanitizer sees a read behind the end.
    const std::vector<const char*> one = {"key", "k", nullptr};
    const std::vector<const char*> none = {nullptr};
    for (std::vector<const char*> attributes : {one, none}) {
        CVQMDataConstants().OnStartElement("Data", attributes.data());
    }
    EXPECT_TRUE(OpenConstants::m_DataCache.empty());
}

TEST_F(DataConstants, OnlyTheExactElementNameCounts)
{
    const char* attributes[] = {"key", "k", "value", "v", nullptr};
    for (const char* name : {"data", "DATA", "Data2", "Dat", ""}) {
        CVQMDataConstants().OnStartElement(name, attributes);
        CVQMDataConstants().OnEndElement(name);
        EXPECT_EQ(recorder::Take(), (Lines{Line("OnStartElement", "OnStartElement - Unknown Element\n"),
                                           Line("OnEndElement", "OnEndElement - Unknown Element\n")}));
    }
    CVQMDataConstants().OnStartElement(nullptr, attributes);
    CVQMDataConstants().OnStartElement("Data", nullptr);
    CVQMDataConstants().OnEndElement(nullptr);
    EXPECT_EQ(recorder::Take(), Lines());
    EXPECT_TRUE(OpenConstants::m_DataCache.empty());
}

TEST_F(DataConstants, EachEventIsDispatchedOrLogged)
{
    const char* attributes[] = {"key", "k", "value", "v", nullptr};
    const struct {
        int step;
        const char* name;
        const char** attributes;
        bool result;
        Lines lines;
    } cases[] = {
        {0, "Data", attributes, true, {}},
        {0, nullptr, attributes, false, {Line("ReadFrom", "CVQMDataConstants::ReadFrom - pElement is null\n")}},
        {0, "Data", nullptr, false, {Line("ReadFrom", "CVQMDataConstants::ReadFrom - pAtt is null\n")}},
        {0, nullptr, nullptr, false, {Line("ReadFrom", "CVQMDataConstants::ReadFrom - pElement is null\n")}},
        {1, "Data", nullptr, true, {Line("OnEndElement", "OnEndElement - Data element closed\n")}},
        {1, nullptr, nullptr, false, {Line("ReadFrom", "CVQMDataConstants::ReadFrom - pElement is null\n")}},
        {2, nullptr, nullptr, true, {Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - TEXT step not used\n")}},
        {3, "Data", attributes, true, {Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - Unknown parsing step\n")}},
        {-1, "Data", attributes, true, {Line("ReadFrom", "CVQMScheduleContainer::ReadFrom - Unknown parsing step\n")}},
    };
    for (const auto& test : cases) {
        EventSource events(test.step, test.name, test.attributes, nullptr);
        EXPECT_EQ(CVQMDataConstants().ReadFrom(&events), test.result) << test.step;
        EXPECT_EQ(recorder::Take(), test.lines) << test.step;
    }
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"k", "v"}}));
}

TEST_F(DataConstants, OtherSerializersAreRefusedSilently)
{
    OtherSerializer other;
    EXPECT_FALSE(CVQMDataConstants().ReadFrom(nullptr));
    EXPECT_FALSE(CVQMDataConstants().ReadFrom(&other));
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(DataConstants, ThereIsNeitherARecordNorWriting)
{
    CVQMXMLSerialize serializer;
    int record = 5;
    CVQMDataConstants constants;
    constants.GetSturcture(&record);
    constants.SetStructure(&record);
    constants.GetSturcture(nullptr);
    constants.SetStructure(nullptr);
    EXPECT_EQ(record, 5);
    EXPECT_FALSE(constants.WriteTo(&serializer));
    EXPECT_FALSE(constants.WriteTo(nullptr));
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(DataConstants, LookingUpBeforeAnythingWasLoadedChangesNothing)
{
    EXPECT_EQ(Text("a"), "untouched");
    EXPECT_EQ(Int("a"), 77);
    EXPECT_EQ(Big("a"), 77U);
    EXPECT_TRUE(OpenConstants::m_DataCache.empty());
}

TEST_F(DataConstants, UnknownKeysReadAsEmptyAndAreThereFromThenOn)
{
    OpenConstants::m_DataCache = {{"a", "1"}};
    EXPECT_EQ(Text("text"), "");
    EXPECT_EQ(Int("int"), 0);
    EXPECT_EQ(Big("big"), 0U);
    EXPECT_EQ(Text("A"), "") << "keys are case-sensitive";
    EXPECT_EQ(OpenConstants::m_DataCache, (Cache{{"A", ""}, {"a", "1"}, {"big", ""}, {"int", ""}, {"text", ""}}));
    EXPECT_EQ(recorder::Take(), Lines());
}

TEST_F(DataConstants, NumbersFollowTheLenientConversions)
{
    const struct {
        const char* text;
        int number;
        uVQMINT64 big;
    } cases[] = {
        {"", 0, 0},
        {"12ab", 12, 12},
        {"abc", 0, 0},
        {"-15", -15, 0},
        {" 1", 0, 0},
        {"007", 7, 7},
        {"2147483648", -2147483647 - 1, 2147483648ULL},
        {"18446744073709551615", -1, 18446744073709551615ULL},
    };
    for (const auto& test : cases) {
        OpenConstants::m_DataCache = {{"k", test.text}};
        EXPECT_EQ(Text("k"), test.text);
        EXPECT_EQ(Int("k"), test.number) << test.text;
        EXPECT_EQ(Big("k"), test.big) << test.text;
    }
}

TEST_F(DataConstants, TheSampleNamesItsSchedule)
{
    EXPECT_TRUE(Load(VQM_SOURCE_DIR "/Packaging/sample/constants.xml"));
    EXPECT_EQ(Text("ScheduleFile"), "schedule.xml");
}

// The page about the format: each XML example is followed by what it gives, as text.

/// The code blocks of a language, in order.
std::vector<std::string> Blocks(const std::string& page, const std::string& language)
{
    std::vector<std::string> blocks;
    const std::string opening = "\n```" + language + "\n";
    for (std::size_t at = page.find(opening); at != std::string::npos; at = page.find(opening, at)) {
        at += opening.size();
        blocks.push_back(page.substr(at, page.find("```\n", at) - at));
    }
    return blocks;
}

TEST_F(DataConstants, TheExamplesOfThePageGiveWhatItSays)
{
    std::ifstream stream(VQM_SOURCE_DIR "/Docs/constants-format.md");
    const std::string page{std::istreambuf_iterator<char>(stream), {}};
    const std::vector<std::string> documents = Blocks(page, "xml");
    const std::vector<std::string> results = Blocks(page, "text");
    ASSERT_GE(documents.size(), 3U);
    ASSERT_EQ(documents.size(), results.size());
    for (std::size_t i = 0; i < documents.size(); ++i) {
        OpenConstants::m_DataCache.clear();
        const bool loaded = LoadText(documents[i]);
        std::string given = loaded ? "" : "(not well-formed)\n";
        for (const auto& [key, value] : OpenConstants::m_DataCache) {
            given += "\"" + key + "\" = \"" + value + "\"\n";
        }
        EXPECT_EQ(given, results[i]) << documents[i];
    }
}

} // namespace
