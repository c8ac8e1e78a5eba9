#include "platform/NotificationThread.h"

namespace korvane {

NotificationThread::NotificationThread(Scheduler& scheduler, std::function<void()> onChange)
    : scheduler_(scheduler), onChange_(std::make_shared<const std::function<void()>>(std::move(onChange))) {}

NotificationThread::~NotificationThread() {
    if (!thread_.joinable()) {
        return;
    }
    stopRequested_.store(true);
    if (wake_) {
        wake_();
    }
    thread_.join();
}

void NotificationThread::start(Loop loop, std::function<void()> wake) {
    if (thread_.joinable() || !loop) {
        return;
    }
    wake_ = std::move(wake);
    thread_ = std::thread([this, loop = std::move(loop)] { loop(*this); });
}

void NotificationThread::notify() {
    scheduler_.postToMain([callback = onChange_] {
        if (*callback) {
            (*callback)();
        }
    });
}

} // namespace korvane
