// The module's one thread of its own: a background worker that renders whole lists, and the queue
// of jobs that it serves. Shared by all containers; started with the first job; ended, and waited
// for, when the last container lets go of it, which is before the library can be unloaded.
#pragma once

#include "platform/Threads.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

class RenderQueue {
public:
    // A job runs on the worker; it must not throw, and must not hold a handle to the queue. One
    // that answers false is not done: it runs again after a while, once no other is waiting. A job
    // is destroyed, with all that it holds, on the UI thread: with the next call of Add after it is
    // done, or with the queue.
    using Job = std::function<bool()>;

    // The queue that all containers share, made when no container holds it. [ui-thread]
    static std::shared_ptr<RenderQueue> Shared();

    RenderQueue() = default;
    // Drops the jobs that have not begun and waits for the one that has. Not on the worker.
    ~RenderQueue();
    RenderQueue(const RenderQueue&) = delete;
    RenderQueue& operator=(const RenderQueue&) = delete;

    // Jobs run in the order in which they were added. Fails, and does not take the job, when there
    // is no memory or no thread for it. [ui-thread]
    void Add(Job job);

private:
    void Run();

    std::mutex mutex_;  // guards what follows
    std::list<Job> jobs_;
    std::list<Job> done_;
    bool stopping_ = false;

    Platform::AutoResetEvent jobAdded_;
    std::thread worker_;
};
