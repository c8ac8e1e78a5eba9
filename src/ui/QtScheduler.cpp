#include "ui/QtScheduler.h"

#include <QThread>
#include <QTimer>

namespace korvane {

// One queued wake-up serves every task posted before it runs.
QtScheduler::QtScheduler()
    : queue_([this] {
          QMetaObject::invokeMethod(
              &context_, [this] { queue_.runQueued(); }, Qt::QueuedConnection);
      }) {}

QtScheduler::~QtScheduler() {
    // A background task may be blocked in runOnMainAndWait; serve it here,
    // since the event loop may already have stopped.
    queue_.serveUntilBackgroundEnds();
    for (QThread* thread : threads_) {
        thread->wait();
        delete thread;
    }
}

bool QtScheduler::isMainThread() const {
    return QThread::currentThread() == context_.thread();
}

void QtScheduler::postToMain(Task task) {
    queue_.post(std::move(task));
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
    queue_.backgroundStarted();
    QThread* thread = QThread::create([this, task = std::move(task)] {
        task();
        queue_.backgroundFinished();
    });
    threads_.push_back(thread);
    thread->start(priority == Priority::utility ? QThread::LowPriority : QThread::NormalPriority);
}

} // namespace korvane
