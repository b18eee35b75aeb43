#include "RenderQueue.h"

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
    {
        const std::lock_guard lock(mutex_);
        done.swap(done_);
        jobs_.splice(jobs_.end(), added);
        if (!worker_.joinable()) {
            worker_ = std::thread([this] { Run(); });
        }
    }
    jobAdded_.Signal();
}

void RenderQueue::Run()
{
    std::list<Job> running;
    for (;;) {
        {
            const std::lock_guard lock(mutex_);
            done_.splice(done_.end(), running);
            if (stopping_) {
                return;
            }
            if (!jobs_.empty()) {
                running.splice(running.end(), jobs_, jobs_.begin());
            }
        }
        if (!running.empty()) {
            running.front()();
        } else {
            jobAdded_.Wait();
        }
    }
}
