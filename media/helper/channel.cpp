#include "media/helper/channel.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace morvane {

namespace {

bool isWellFormed(const MediaRequest& request) {
    if (request.mark != mediaRequestMark || request.limitMilliseconds == 0)
        return false;
    if (request.job == MediaJob::Thumbnail)
        return request.maxSide >= 1 && request.maxSide <= mediaLargestSide;
    return request.job == MediaJob::Probe && request.maxSide == 0;
}

bool sendAll(int socket, const void* bytes, std::size_t count) {
    const auto* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t sent = ::send(socket, next, count, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        next += sent;
        count -= static_cast<std::size_t>(sent);
    }
    return true;
}

}  // namespace

std::optional<ReceivedRequest> receiveRequest(int socket) {
    ReceivedRequest received;
    iovec piece{&received.request, sizeof received.request};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    ssize_t count = 0;
    do {
        count = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC | MSG_WAITALL);
    } while (count < 0 && errno == EINTR);
    if (count != static_cast<ssize_t>(sizeof received.request) || (message.msg_flags & MSG_CTRUNC) != 0)
        return std::nullopt;
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS ||
        header->cmsg_len != CMSG_LEN(sizeof(int)))
        return std::nullopt;
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    received.file.reset(descriptor);
    if (!isWellFormed(received.request))
        return std::nullopt;
    return received;
}

bool sendAnswer(int socket, MediaStatus status, const std::vector<unsigned char>& payload) {
    MediaAnswer answer;
    answer.status = status;
    answer.payloadBytes = static_cast<std::uint32_t>(payload.size());
    return sendAll(socket, &answer, sizeof answer) && sendAll(socket, payload.data(), payload.size());
}

bool sendRefusal(int socket, const std::string& reason) {
    const auto kept = reason.substr(0, mediaLongestReason);
    return sendAnswer(socket, MediaStatus::Refused, {kept.begin(), kept.end()});
}

}  // namespace morvane
