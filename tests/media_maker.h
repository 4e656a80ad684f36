// Real media for tests, made with ffmpeg and vips.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/run_process.h"

namespace morvane::test {

/// Runs a program found in PATH; throws with its error text when it fails.
inline void runTool(const std::string& program, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), program);
    const ProcessOutcome outcome = runProcess("/usr/bin/env", arguments, [] { return false; });
    if (outcome.exitStatus != 0)
        throw std::runtime_error(program + " failed: " + outcome.standardError);
}

/// ffmpeg with `arguments`, the last one being the file to make (replaced when it exists).
inline void ffmpeg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"-v", "error", "-y", "-bitexact"});
    runTool("ffmpeg", std::move(arguments));
}

inline void vips(std::vector<std::string> arguments) {
    runTool("vips", std::move(arguments));
}

using Arguments = std::vector<std::string>;

inline Arguments operator+(Arguments left, const Arguments& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// Moving test picture of `rate` frames a second.
inline Arguments testVideo(const std::string& rate, const std::string& seconds,
                           const std::string& size = "320x240") {
    return {"-f", "lavfi", "-i", "testsrc2=size=" + size + ":rate=" + rate + ":duration=" + seconds};
}
/// A tone of 440 Hz.
inline Arguments testAudio(const std::string& seconds, const std::string& rate = "48000") {
    return {"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=" + rate + ":duration=" + seconds};
}

}  // namespace morvane::test
