// A queue of limited length between the threads that read and the one that writes.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace NFLEET {

template <typename TItem>
class TLoadQueue {
  public:
    explicit TLoadQueue(std::size_t limit) : limit_(limit) {}

    /// Waits for a free place. Returns false once the queue is closed.
    bool Push(TItem item) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return isClosed_ || items_.size() < limit_; });
        if (isClosed_) {
            return false;
        }
        items_.push_back(std::move(item));
        changed_.notify_all();
        return true;
    }

    /// Waits for an item; nullopt once the queue is closed and empty.
    std::optional<TItem> Pop() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return isClosed_ || !items_.empty(); });
        if (items_.empty()) {
            return std::nullopt;
        }
        std::optional<TItem> item(std::move(items_.front()));
        items_.pop_front();
        changed_.notify_all();
        return item;
    }

    /// Ends all waiting. Items that are in the queue can still be popped.
    void Close() {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<TItem> items_;
    std::size_t limit_;
    bool isClosed_ = false;
};

}  // namespace NFLEET
