#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <boost/thread/mutex.hpp>

#include "Tests/Common/StoredDemo.h"
#include "Tests/Support/Recorder.h"

/// The monitor's policy mutex, which is private.
boost::mutex& MutexOf(CVQMSyncDemoMonitor& monitor);

/// A schedule document with these contents, period by period.
std::string Xml(const std::vector<std::vector<Content>>& schedules, const std::string& rechInfo);

constexpr char kRechInfo[] = "<rech_info IsMaster='1' NumOfPlayer='2' IPAddrOfMaster='192.168.0.10' IPType='3' "
                             "IPAddr='192.168.0.11' SubnetMask='255.255.255.0' Gateway='192.168.0.1' "
                             "TypeOfNetwork='4' WirelessGroupName='100%s' nImageDuration='10'/>";

constexpr char kSeparator[] = "#########################################################";

/// The content check, its answers and its log lines.
class ContentCheck : public StoredDemo {
protected:
    using Lines = recorder::Lines;

    void SetUp() override
    {
        StoredDemo::SetUp();
        recorder::Clear();
    }

    void TearDown() override
    {
        recorder::SetListener(nullptr);
        StoredDemo::TearDown();
    }

    /// A check that succeeds: two answers and a policy to lose.
    void StoreGood()
    {
        StoreSchedule(Xml({{{"intro", "mp4", 5}}}, kRechInfo));
        StoreMedia("intro.mp4", 5);
        monitor_->CheckContents();
        ExpectAnswers(true, true);
        recorder::Clear();
    }

    void ExpectAnswers(bool schedule, bool contents)
    {
        EXPECT_EQ(monitor_->CheckHaveSchedule(), schedule);
        EXPECT_EQ(monitor_->CheckHaveContents(), contents);
    }

    /// The current policy is the one of `StoreGood`.
    void ExpectGoodPolicy();

    static std::string Line(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMSyncDemoMonitor.cpp").Debug(function, message);
    }
    static std::string PipeLine(const std::string& function, const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMFilePipe.cpp").Debug(function, message);
    }
    static std::string CreateError(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMSyncDemoMonitor.cpp").Error("Create", message);
    }
    static std::string SizeLine(const std::string& path, unsigned long long size)
    {
        return PipeLine("GetFileSize", "CVQMFilePipe::GetFileSize - (" + path + ") : " + std::to_string(size) + " \n");
    }
    static std::string ParserLine(const std::string& message)
    {
        return recorder::LogOf("Quillmere", "VQMXMLSerialize.cpp").Debug("Deserialize", message);
    }
    static std::string SchedulePathLine()
    {
        return Line("GetSyncDemoSchedulePath",
                    "CVQMSyncDemoMonitor::GetSyncDemoSchedulePath - " + kScheduleDirectory + "\n");
    }
    static std::string MediaPathLine()
    {
        return Line("GetSyncDemoMediaPath", "CVQMSyncDemoMonitor::GetSyncDemoMediaPath - " + kMediaDirectory + "\n");
    }

    /// Everything that was logged except the schedule parser's own lines, which carry no tag.
    static Lines TaggedLines()
    {
        Lines lines;
        for (const std::string& line : recorder::Take()) {
            if (line.rfind("D/(null) ", 0) != 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    /// The log of a check until the schedule is parsed.
    static Lines Reading()
    {
        const std::string path = kScheduleDirectory + "schedule.xml";
        return {SchedulePathLine(), PipeLine("FOpen", "CVQMFilePipe::FOpen\n"),
                PipeLine("FOpen", "CVQMFilePipe::FOpen - RequestCommand is Read\n"),
                SizeLine(path, std::filesystem::file_size(path))};
    }

    static Lines Join(Lines first, const Lines& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    static Lines Dump(const std::vector<std::string>& values)
    {
        Lines lines = {Line("CheckContents", kSeparator)};
        for (const std::string& value : values) {
            lines.push_back(Line("CheckContents", "rech_info - " + value + "\n"));
        }
        lines.push_back(Line("CheckContents", kSeparator));
        return lines;
    }
};
