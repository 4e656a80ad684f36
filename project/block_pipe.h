// Moving a stream of blocks from one thread to another, so that reading, hashing and writing overlap.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "project/side_task.h"

namespace morvane {

/// Holds eight blocks of 256 KiB (small enough that a block just filled is still in the processor's
/// cache when it is drained) and, from the first overlapped transfer on, a second thread; both stay for
/// the next transfer. One thread uses it at a time.
class BlockPipe {
public:
    static constexpr std::size_t blockSize = 262'144;
    /// Streams shorter than this (bytes) gain nothing from a second thread.
    static constexpr std::size_t overlapFrom = 2 * blockSize;

    /// Fills at most `room` bytes and returns how many; 0 ends the stream. On the caller's thread.
    using Fill = std::function<std::size_t(char* block, std::size_t room)>;
    /// On the second thread where the transfer overlaps.
    using Drain = std::function<void(const char* block, std::size_t count)>;

    /// Passes block after block from `fill` to `drain` in order. What either throws ends the transfer
    /// and is thrown here after both have ended (the first one, when both fail).
    void transfer(const Fill& fill, const Drain& drain, bool overlap);

private:
    struct Filled {
        char* block;
        std::size_t count;
    };

    void produce(const Fill& fill);
    void consume(const Drain& drain);
    void fail();
    char* takeFree();
    void giveFree(char* block);
    Filled takeFilled();
    void giveFilled(Filled filled);

    std::array<std::unique_ptr<char[]>, 8> blocks_;

    std::mutex lock_;
    std::condition_variable changed_;
    // Guarded by lock_.
    std::vector<char*> free_;
    std::deque<Filled> filled_;
    bool fillEnded_ = false;
    std::exception_ptr error_;

    SideTask draining_;
};

}  // namespace morvane
