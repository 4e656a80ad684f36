// morvane-media: decodes pictures and examines media for the program that started it, one request
// at a time, inside a sandbox. See media/media_protocol.h for the talk between the two.
#include <sys/socket.h>

#include <cstdio>
#include <cstring>
#include <new>

#include "media/helper/channel.h"
#include "media/helper/probe.h"
#include "media/helper/refusal.h"
#include "media/helper/sandbox.h"
#include "media/helper/thumbnail.h"

extern "C" {
#include <libavutil/log.h>
}

namespace morvane {

namespace {

std::vector<unsigned char> carriedOut(const ReceivedRequest& received) {
    if (received.request.job == MediaJob::Thumbnail)
        return makeThumbnail(received.file.get(), static_cast<int>(received.request.maxSide));
    const ProbeRecord record = probeMedia(received.file.get());
    std::vector<unsigned char> payload(sizeof record);
    std::memcpy(payload.data(), &record, sizeof record);
    return payload;
}

bool answer(ReceivedRequest received) {
    armTimeLimit(received.request.limitMilliseconds);
    std::vector<unsigned char> payload;
    std::string reason;
    try {
        payload = carriedOut(received);
    } catch (const Refusal& refusal) {
        reason = refusal.what();
    } catch (const std::bad_alloc&) {
        reason = "内存不足";
    }
    armTimeLimit(0);
    received.file.reset();
    return reason.empty() ? sendAnswer(mediaSocketDescriptor, MediaStatus::Done, payload)
                          : sendRefusal(mediaSocketDescriptor, reason);
}

bool isSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

int run(const char* programName) {
    if (!isSocket(mediaSocketDescriptor)) {
        std::fputs("morvane-media 由 MORVANE 素材助手启动，不能单独使用。\n", stderr);
        return 64;
    }
    av_log_set_level(AV_LOG_QUIET);
    startImageLibrary(programName);
    warmUpDecoders();
    limitResources();
    enterSandbox();
    while (auto received = receiveRequest(mediaSocketDescriptor)) {
        if (!answer(std::move(*received)))
            break;
    }
    return 0;
}

}  // namespace

}  // namespace morvane

int main(int, char** arguments) {
    try {
        return morvane::run(arguments[0]);
    } catch (const std::exception&) {
        return 1;
    }
}
