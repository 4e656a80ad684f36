// The helper's end of the talk that media_protocol.h describes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/media_protocol.h"
#include "support/unique_fd.h"

namespace morvane {

struct ReceivedRequest {
    MediaRequest request;
    UniqueFd file;
};

/// Waits for the next request; nothing when the program is gone or does not follow the rules.
std::optional<ReceivedRequest> receiveRequest(int socket);

/// Sends an answer with its payload; false when the program is gone.
bool sendAnswer(int socket, MediaStatus status, const std::vector<unsigned char>& payload);
bool sendRefusal(int socket, const std::string& reason);

}  // namespace morvane
