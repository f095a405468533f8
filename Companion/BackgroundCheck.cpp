#include "Companion/BackgroundCheck.h"

#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <Ecore.h>

#include "Diagnostics/Readiness/SignalsBlocked.h"
#include "Diagnostics/Watch/WatchedDirectories.h"

namespace companion {

/// One check. Belongs to its thread and to who waits for it, whichever lets go last.
struct BackgroundCheck::Round {
    std::shared_ptr<FileWatch> files;
    Checked result{};
    std::mutex mutex{};
    BackgroundCheck* owner = nullptr; ///< guarded; null: nobody waits any more

    void Run() noexcept;
    static void Report(const std::shared_ptr<Round>& round);
    static void OnMainLoop(void* data);
};

void BackgroundCheck::Round::Run() noexcept
{
    try {
        const schedule::Clock clock = schedule::ReadClock();
        readiness::Report report = readiness::Check({}, clock.now.day);
        if (files->Watch(WatchedDirectories(report))) {
            report = readiness::Check({}, clock.now.day); // what changed before the watch began goes unnoticed by it
        }
        result.second = clock.now.second;
        result.screen = ScreenOf(report, clock.now);
    } catch (const std::exception& exception) {
        result.problem = exception.what();
    }
}

/// The main loop may be gone for good once nobody waits: it must not be called then.
void BackgroundCheck::Round::Report(const std::shared_ptr<Round>& round)
{
    const std::lock_guard<std::mutex> lock(round->mutex);
    if (round->owner != nullptr) {
        ecore_main_loop_thread_safe_call_async(OnMainLoop, new std::shared_ptr<Round>(round));
    }
}

void BackgroundCheck::Round::OnMainLoop(void* data)
{
    const std::unique_ptr<std::shared_ptr<Round>> round(static_cast<std::shared_ptr<Round>*>(data));
    if ((*round)->owner != nullptr) { // written by this thread alone
        (*round)->owner->Finish(**round);
    }
}

BackgroundCheck::BackgroundCheck(std::function<void(Checked)> done, std::function<void()> onChange)
    : done_(std::move(done)), onChange_(std::move(onChange)), files_(std::make_shared<FileWatch>())
{
}

BackgroundCheck::~BackgroundCheck()
{
    if (round_ != nullptr) {
        const std::lock_guard<std::mutex> lock(round_->mutex);
        round_->owner = nullptr;
    }
    if (readable_ != nullptr) {
        ecore_main_fd_handler_del(static_cast<Ecore_Fd_Handler*>(readable_));
    }
}

bool BackgroundCheck::IsRunning() const
{
    return round_ != nullptr;
}

void BackgroundCheck::Start()
{
    if (round_ != nullptr) {
        again_ = true;
        return;
    }
    if (readable_ != nullptr) {
        ecore_main_fd_handler_del(static_cast<Ecore_Fd_Handler*>(std::exchange(readable_, nullptr)));
    }
    auto round = std::make_shared<Round>();
    round->files = files_;
    round->owner = this;
    try {
        const readiness::SignalsBlocked blocked; // they are for the main thread
        std::thread([round] {
            round->Run();
            Round::Report(round);
        }).detach();
        round_ = std::move(round);
    } catch (const std::system_error& error) {
        round->result.problem = error.what();
        Finish(*round);
    }
}

void BackgroundCheck::Finish(Round& round)
{
    const std::shared_ptr<Round> finished = std::move(round_);
    WatchAgain();
    done_(std::move(round.result));
    if (std::exchange(again_, false)) {
        Start();
    }
}

/// What has happened during the check is still to be read.
void BackgroundCheck::WatchAgain()
{
    const auto read = [](void* data, Ecore_Fd_Handler* /*handler*/) -> Eina_Bool {
        auto* const self = static_cast<BackgroundCheck*>(data);
        if (self->files_->TakeChanges()) {
            self->onChange_();
        }
        return ECORE_CALLBACK_RENEW;
    };
    readable_ = ecore_main_fd_handler_add(files_->Descriptor(), ECORE_FD_READ, read, this, nullptr, nullptr);
}

} // namespace companion
