#include "project/block_pipe.h"

#include <utility>

namespace morvane {

void BlockPipe::transfer(const Fill& fill, const Drain& drain, bool overlap) {
    if (!blocks_[0])
        blocks_[0] = std::make_unique<char[]>(blockSize);
    if (!overlap) {
        while (const std::size_t count = fill(blocks_[0].get(), blockSize))
            drain(blocks_[0].get(), count);
        return;
    }
    free_.clear();
    filled_.clear();
    fillEnded_ = false;
    error_ = nullptr;
    for (auto& block : blocks_) {
        if (!block)
            block = std::make_unique<char[]>(blockSize);
        free_.push_back(block.get());
    }
    draining_.start([this, &drain] { consume(drain); });
    produce(fill);
    draining_.wait();
    if (error_)
        std::rethrow_exception(std::exchange(error_, nullptr));
}

void BlockPipe::produce(const Fill& fill) {
    try {
        while (char* block = takeFree()) {
            const std::size_t count = fill(block, blockSize);
            if (count == 0)
                break;
            giveFilled({block, count});
        }
    } catch (...) {
        fail();
    }
    {
        const std::scoped_lock guard(lock_);
        fillEnded_ = true;
    }
    changed_.notify_one();
}

void BlockPipe::consume(const Drain& drain) {
    try {
        for (Filled filled = takeFilled(); filled.block; filled = takeFilled()) {
            drain(filled.block, filled.count);
            giveFree(filled.block);
        }
    } catch (...) {
        fail();
    }
}

void BlockPipe::fail() {
    {
        const std::scoped_lock guard(lock_);
        if (!error_)
            error_ = std::current_exception();
    }
    changed_.notify_one();
}

char* BlockPipe::takeFree() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !free_.empty() || error_; });
    if (error_)
        return nullptr;
    char* block = free_.back();
    free_.pop_back();
    return block;
}

void BlockPipe::giveFree(char* block) {
    {
        const std::scoped_lock guard(lock_);
        free_.push_back(block);
    }
    changed_.notify_one();
}

BlockPipe::Filled BlockPipe::takeFilled() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !filled_.empty() || fillEnded_ || error_; });
    if (error_ || filled_.empty())
        return {nullptr, 0};
    const Filled filled = filled_.front();
    filled_.pop_front();
    return filled;
}

void BlockPipe::giveFilled(Filled filled) {
    {
        const std::scoped_lock guard(lock_);
        filled_.push_back(filled);
    }
    changed_.notify_one();
}

}  // namespace morvane
