#include "ui/QtScheduler.h"

#include <QThread>
#include <QTimer>

namespace korvane {

QtScheduler::QtScheduler() = default;

QtScheduler::~QtScheduler() {
    // A background task may be blocked in runOnMainAndWait; serve it here,
    // since the event loop may already have stopped.
    std::unique_lock lock(mutex_);
    while (activeBackground_ > 0 || !main_.empty()) {
        if (!main_.empty()) {
            Task task = std::move(main_.front());
            main_.pop_front();
            lock.unlock();
            task();
            lock.lock();
            continue;
        }
        wake_.wait(lock);
    }
    lock.unlock();
    for (QThread* thread : threads_) {
        thread->wait();
        delete thread;
    }
}

bool QtScheduler::isMainThread() const {
    return QThread::currentThread() == context_.thread();
}

void QtScheduler::wakeMain() {
    // One queued wake-up serves every task queued before it runs.
    QMetaObject::invokeMethod(
        &context_, [this] { drainMain(); }, Qt::QueuedConnection);
}

void QtScheduler::drainMain() {
    std::unique_lock lock(mutex_);
    isWakeQueued_ = false;
    // Only the tasks queued so far: tasks they queue wait for the next turn of
    // the event loop, so painting and input are never starved.
    std::size_t count = main_.size();
    while (count-- > 0 && !main_.empty()) {
        Task task = std::move(main_.front());
        main_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
    if (!main_.empty() && !isWakeQueued_) {
        isWakeQueued_ = true;
        lock.unlock();
        wakeMain();
    }
}

void QtScheduler::postToMain(Task task) {
    bool shouldWake = false;
    {
        std::lock_guard lock(mutex_);
        main_.push_back(std::move(task));
        if (!isWakeQueued_) {
            isWakeQueued_ = true;
            shouldWake = true;
        }
    }
    wake_.notify_all();
    if (shouldWake) {
        wakeMain();
    }
}

std::shared_ptr<CancellableWork> QtScheduler::postToMainAfter(Seconds delay, Task task) {
    auto work = std::make_shared<CancellableWork>();
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(delay);
    // The timer must be made on the main thread to belong to its event loop.
    postToMain([this, work, milliseconds, task = std::move(task)] {
        QTimer::singleShot(milliseconds, &context_, [work, task] {
            if (!work->isCancelled()) {
                task();
            }
        });
    });
    return work;
}

void QtScheduler::runOnMainAndWait(Task task) {
    runNowOrPostAndWait(task, isMainThread());
}

void QtScheduler::reapFinishedThreads() {
    std::erase_if(threads_, [](QThread* thread) {
        if (!thread->isFinished()) {
            return false;
        }
        thread->wait();
        delete thread;
        return true;
    });
}

void QtScheduler::runInBackground(Priority priority, Task task) {
    reapFinishedThreads();
    {
        std::lock_guard lock(mutex_);
        ++activeBackground_;
    }
    QThread* thread = QThread::create([this, task = std::move(task)] {
        task();
        {
            std::lock_guard lock(mutex_);
            --activeBackground_;
        }
        wake_.notify_all();
    });
    threads_.push_back(thread);
    thread->start(priority == Priority::utility ? QThread::LowPriority : QThread::NormalPriority);
}

std::size_t QtScheduler::activeBackgroundTasks() const {
    std::lock_guard lock(mutex_);
    return activeBackground_;
}

} // namespace korvane
