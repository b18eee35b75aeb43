#include "RenderQueue.h"

#include <chrono>
#include <utility>

std::shared_ptr<RenderQueue> RenderQueue::Shared()
{
    static std::weak_ptr<RenderQueue> shared;
    auto queue = shared.lock();
    if (!queue) {
        queue = std::make_shared<RenderQueue>();
        shared = queue;
    }
    return queue;
}

RenderQueue::~RenderQueue()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    if (worker_.joinable()) {
        jobAdded_.Signal();
        worker_.join();
    }
}

void RenderQueue::Add(Job job)
{
    std::list<Job> added;
    added.push_back(std::move(job));
    std::list<Job> done;
    if (!worker_.joinable()) {
        worker_ = std::thread([this] { Run(); });
    }
    {
        const std::lock_guard lock(mutex_);
        done.swap(done_);
        jobs_.splice(jobs_.end(), added);
    }
    jobAdded_.Signal();
}

void RenderQueue::Run()
{
    constexpr std::chrono::milliseconds kPause(100);
    std::list<Job> running;
    std::list<Job> undone;
    for (;;) {
        {
            const std::lock_guard lock(mutex_);
            if (stopping_) {
                done_.splice(done_.end(), undone);
                return;
            }
            if (!jobs_.empty()) {
                running.splice(running.end(), jobs_, jobs_.begin());
            }
        }
        if (!running.empty()) {
            const bool isDone = running.front()();
            const std::lock_guard lock(mutex_);
            std::list<Job>& target = isDone ? done_ : undone;
            target.splice(target.end(), running);
        } else if (undone.empty()) {
            jobAdded_.Wait();
        } else {
            jobAdded_.WaitFor(kPause);
            const std::lock_guard lock(mutex_);
            jobs_.splice(jobs_.end(), undone);
        }
    }
}
