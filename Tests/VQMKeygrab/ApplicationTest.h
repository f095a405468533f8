#pragma once

#include <string>

#include <gmock/gmock.h>

#include "Tests/Support/Recorder.h"
#include "Tests/Support/RecordingApplication.h"
#include "Tests/Support/RecordingSettings.h"
#include "VQMKeygrab/VQMKeyGrab.h"

/// The application on the recording platform, fresh for each test.
class ApplicationTest : public testing::Test {
protected:
    ApplicationTest()
    {
        recording::application() = {};
        recording::settings() = {};
        recorder::Clear();
    }

    static recorder::Lines Concatenated(std::initializer_list<recorder::Lines> parts)
    {
        recorder::Lines all;
        for (const recorder::Lines& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    recording::Application& application = recording::application();
    recording::Settings& settings = recording::settings();

    const recorder::LogOf main{"Quillmere", "main.cpp"};
    const recorder::LogOf grab{"Quillmere", "VQMKeyGrab.cpp"};
    const recorder::LogOf monitor{"Quillmere", "VQMSyncDemoMonitor.cpp"};
};

/// Everything a complete creation of the window asks of the platform.
recorder::Lines WindowCreation();
/// The grab of all keys and the hand-over of ten, as part of it.
recorder::Lines KeyGrab();
/// Everything the destruction of a complete window does.
recorder::Lines WindowDestruction();
