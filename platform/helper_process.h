// A child program that answers requests over a socket and may crash, hang or misbehave.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "support/unique_fd.h"

namespace morvane {

/// Runs `program` without arguments, one end of a stream socket pair on its descriptor 3, the null
/// device on 0 to 2 and nothing else open. One thread uses it at a time.
class HelperProcess {
public:
    enum class Exchange {
        Complete,
        Deadline,
        Cancelled,
        Lost,  ///< the other side closed the socket or died
    };
    /// The moment until which an exchange may last, and the question asked about twenty times a
    /// second meanwhile (empty: never cancelled).
    struct Patience {
        std::chrono::steady_clock::time_point until;
        const std::function<bool()>& cancelled;
    };

    /// Throws std::system_error when the program cannot be started.
    explicit HelperProcess(const std::string& program);
    /// Kills the program. Does not wait for one that is stuck in the kernel: such a one is collected
    /// by a later HelperProcess.
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    /// True while the program neither ended nor said anything unasked.
    bool isSilent() const;
    /// Sends `count` bytes together with a copy of `descriptor`.
    Exchange send(const void* bytes, std::size_t count, int descriptor, const Patience& patience);
    /// Receives exactly `count` bytes.
    Exchange receive(void* bytes, std::size_t count, const Patience& patience);

private:
    Exchange waitFor(short events, const Patience& patience) const;

    UniqueFd socket_;
    int process_ = -1;
};

}  // namespace morvane
