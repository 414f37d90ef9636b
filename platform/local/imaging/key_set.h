// A bounded set of content keys, which forgets the oldest. For several threads.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <unordered_set>

namespace local::imaging {

class KeySet {
public:
    explicit KeySet(std::size_t limit) : limit_(limit) {}

    bool contains(const std::string& key) const {
        const std::lock_guard lock(mutex_);
        return keys_.count(key) != 0;
    }

    // An empty key names no file and is not kept. False when it was there already.
    bool insert(const std::string& key) {
        const std::lock_guard lock(mutex_);
        if (key.empty() || !keys_.insert(key).second)
            return false;
        order_.push_back(key);
        if (order_.size() > limit_) {
            keys_.erase(order_.front());
            order_.pop_front();
        }
        return true;
    }

private:
    const std::size_t limit_;
    mutable std::mutex mutex_;
    std::unordered_set<std::string> keys_;
    std::deque<std::string> order_;
};

} // namespace local::imaging
