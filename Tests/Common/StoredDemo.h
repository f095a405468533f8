#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Common/VQMConfig.h"
#include "Common/VQMSyncDemoMonitor.h"
#include "Tests/Data/OpenConstants.h"

// A schedule and its media in the directories that are compiled in. Its test programs are compiled
// with relative ones, below a temporary directory that each test works in.

inline const std::string kScheduleDirectory = VQM_APPS_DIR "/" VQM_APP_ID "/RECH/";
inline const std::string kMediaDirectory = VQM_MEDIA_DIR "/";

struct Content {
    std::string name;
    std::string format;
    unsigned long long size;
};

inline std::string ScheduleElement(const std::vector<Content>& contents)
{
    std::string xml = "<schedule start_time='09:00:00' end_time='18:30:00'>";
    for (const Content& content : contents) {
        xml += "<item id='A' order='1'><name>" + content.name + "</name><size>" + std::to_string(content.size) +
               "</size><format>" + content.format + "</format></item>";
    }
    return xml + "</schedule>";
}

/// Empty directories, the constant that names the schedule's file, and a fresh monitor.
class StoredDemo : public testing::Test {
protected:
    void SetUp() override
    {
        static_assert(VQM_APPS_DIR[0] != '/' && VQM_MEDIA_DIR[0] != '/', "these tests remove the directories");
        std::string pattern = testing::TempDir() + "storeddemo-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        place_ = pattern;
        std::filesystem::current_path(place_);
        std::filesystem::create_directories(kScheduleDirectory);
        std::filesystem::create_directories(kMediaDirectory);
        OpenConstants::m_DataCache = {{"ScheduleFile", "schedule.xml"}};
        monitor_ = CVQMSyncDemoMonitor::GetInstance();
    }

    void TearDown() override
    {
        CVQMSyncDemoMonitor::DestroyInstance();
        OpenConstants::m_DataCache.clear();
        std::error_code ignored; // a test may have removed it
        std::filesystem::permissions(kScheduleDirectory, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::current_path("/");
        std::filesystem::remove_all(place_);
    }

    static void StoreSchedule(const std::string& xml) { std::ofstream(kScheduleDirectory + "schedule.xml") << xml; }

    static void StoreMedia(const std::string& name, unsigned long long size)
    {
        std::ofstream(kMediaDirectory + name).close();
        std::filesystem::resize_file(kMediaDirectory + name, size);
    }

    _VQMPolicy Current()
    {
        _VQMPolicy policy;
        monitor_->GetCurrentPolicy(policy);
        return policy;
    }

    CVQMSyncDemoMonitor* monitor_ = nullptr;

private:
    std::filesystem::path place_;
};
