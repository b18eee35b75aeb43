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
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        dropped.swap(jobs_);
    }
    if (worker_.joinable()) {
        jobAdded_.Signal();
        worker_.join();
    }
}

void RenderQueue::Add(Job job)
{
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        if (!worker_.joinable()) {
            worker_ = std::thread([this] { Run(); });
        }
    }
    jobAdded_.Signal();
}

void RenderQueue::Run()
{
    for (;;) {
        Job job;
        {
            const std::lock_guard lock(mutex_);
            if (stopping_) {
                return;
            }
            if (!jobs_.empty()) {
                job = std::move(jobs_.front());
                jobs_.pop_front();
            }
        }
        if (job) {
            job();
        } else {
            jobAdded_.Wait();
        }
    }
}
