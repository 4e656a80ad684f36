#include "platform/player_library.h"

#include <fcntl.h>
#include <mpv/stream_cb.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include <QByteArray>

#include "platform/media_player.h"
#include "support/path_text.h"
#include "support/unique_fd.h"

namespace morvane {

namespace {

constexpr std::array<std::pair<const char*, const char*>, 35> playerOptions{{
    // no configuration, scripts, keys, terminal or traces
    {"config", "no"},
    {"load-scripts", "no"},
    {"ytdl", "no"},
    {"osc", "no"},
    {"load-stats-overlay", "no"},
    {"load-osd-console", "no"},
    {"load-auto-profiles", "no"},
    {"input-default-bindings", "no"},
    {"input-builtin-bindings", "no"},
    {"input-vo-keyboard", "no"},
    {"terminal", "no"},
    {"save-position-on-quit", "no"},
    {"resume-playback", "no"},
    // nothing but the given file
    {"demuxer", "lavf"},
    {"autoload-files", "no"},
    {"sub-auto", "no"},
    {"audio-file-auto", "no"},
    {"cover-art-auto", "no"},
    {"access-references", "no"},
    {"ordered-chapters", "no"},
    {"sid", "no"},
    {"osd-level", "0"},
    // sound, also without a device; embedded cover art is no video
    {"audio-fallback-to-null", "yes"},
    {"audio-display", "no"},
    {"audio-client-name", "MORVANE"},
    {"volume-max", "100"},
    // pictures: decoded by the processor, shown as soon as they are due; turning them is ours, since the
    // software renderer takes the wrong sides for a turned picture
    {"hwdec", "no"},
    {"video-rotate", "no"},
    {"video-timing-offset", "0"},
    {"demuxer-max-bytes", "48MiB"},
    {"demuxer-max-back-bytes", "16MiB"},
    // paused at the beginning, paused at the end, exact seeks
    {"pause", "yes"},
    {"keep-open", "yes"},
    {"idle", "yes"},
    {"hr-seek", "yes"},
}};

/// The containers of the listed kinds of media. Everything else stays closed, above all lists that
/// name other files.
constexpr const char* allowedContainers =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpegts,mpeg,mp3,aac,wav,w64,aiff,caf,flac,ogg,asf";

constexpr const char* scheme = "morvane";

/// True when something may take sound. Asking a system that has neither a sound server nor a card costs
/// time for every file and fills the standard error with the complaints of the sound libraries.
bool mayHaveSoundDevice() {
    for (const char* server : {"PULSE_SERVER", "PIPEWIRE_REMOTE", "JACK_DEFAULT_SERVER"}) {
        if (qEnvironmentVariableIsSet(server))
            return true;
    }
    const std::string runtime = qgetenv("XDG_RUNTIME_DIR").toStdString();
    for (const char* socket : {"/pipewire-0", "/pulse/native"}) {
        if (!runtime.empty() && ::access((runtime + socket).c_str(), F_OK) == 0)
            return true;
    }
    std::error_code none;
    for (const auto& device : std::filesystem::directory_iterator("/dev/snd", none)) {
        const std::string name = device.path().filename().string();
        if (name.starts_with("pcm") && name.ends_with("p"))
            return true;
    }
    return false;
}

bool allowContainers(mpv_handle* player) {
    std::string containers = allowedContainers;
    std::string key = "format_whitelist";
    char* keys = key.data();
    mpv_node value{};
    value.format = MPV_FORMAT_STRING;
    value.u.string = containers.data();
    mpv_node_list list{};
    list.num = 1;
    list.values = &value;
    list.keys = &keys;
    mpv_node map{};
    map.format = MPV_FORMAT_NODE_MAP;
    map.u.list = &list;
    return mpv_set_option(player, "demuxer-lavf-o", MPV_FORMAT_NODE, &map) >= 0;
}

/// The first handle of a process takes the messages of the decoders; when it goes, they would appear on
/// the standard error. So one that never plays anything is made first and kept for good.
void keepDecodersQuiet() {
    static mpv_handle* const listener = mpv_create();
    static_cast<void>(listener);
}

/// The given file as the library reads it.
class FileStream {
public:
    static int open(void* path, char*, mpv_stream_cb_info* info) {
        UniqueFd file(::open(static_cast<const char*>(path),
                             O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
        struct stat facts {};
        if (!file || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode))
            return MPV_ERROR_LOADING_FAILED;
        info->cookie = new FileStream(std::move(file));
        info->read_fn = [](void* stream, char* buffer, std::uint64_t count) {
            return static_cast<FileStream*>(stream)->read(buffer, count);
        };
        info->seek_fn = [](void* stream, std::int64_t offset) {
            return static_cast<FileStream*>(stream)->offset_ = offset;
        };
        info->size_fn = [](void* stream) { return static_cast<FileStream*>(stream)->size(); };
        info->close_fn = [](void* stream) { delete static_cast<FileStream*>(stream); };
        return 0;
    }

private:
    explicit FileStream(UniqueFd file) : file_(std::move(file)) {}

    std::int64_t read(char* buffer, std::uint64_t count) {
        ssize_t got = 0;
        do {
            got = ::pread(file_.get(), buffer, count, offset_);
        } while (got < 0 && errno == EINTR);
        if (got > 0)
            offset_ += got;
        return got;
    }
    std::int64_t size() const {
        struct stat facts {};
        return ::fstat(file_.get(), &facts) == 0 ? facts.st_size : std::int64_t{MPV_ERROR_UNSUPPORTED};
    }

    UniqueFd file_;
    std::int64_t offset_ = 0;
};

/// An address without the file's own name, but with its extension, which helps to recognize some
/// containers, when it is a plain one.
std::string streamAddress(const std::string& path) {
    const std::string extension(pathExtension(path));
    const bool isPlain = std::all_of(extension.begin(), extension.end(), [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') ||
               (letter >= 'A' && letter <= 'Z');
    });
    return std::string(scheme) + "://media" +
           (isPlain && !extension.empty() ? "." + extension : std::string());
}

}  // namespace

PlayerHandle openPlayer(PlayerContent content) {
    keepDecodersQuiet();
    PlayerHandle player(mpv_create());
    if (!player)
        return nullptr;
    for (const auto& [name, value] : playerOptions) {
        // Options of built-in scripts are missing where the library was built without them.
        if (const int error = mpv_set_option_string(player.get(), name, value);
            error < 0 && error != MPV_ERROR_OPTION_NOT_FOUND)
            return nullptr;
    }
    const bool hasPictures = content == PlayerContent::AudioAndVideo;
    mpv_set_option_string(player.get(), "vo", hasPictures ? "libmpv" : "null");
    mpv_set_option_string(player.get(), "vid", hasPictures ? "auto" : "no");
    if (!mayHaveSoundDevice())
        mpv_set_option_string(player.get(), "ao", "null");
    return allowContainers(player.get()) && mpv_initialize(player.get()) >= 0 ? std::move(player) : nullptr;
}

bool beginLoading(mpv_handle* player, const std::string& path) {
    if (mpv_stream_cb_add_ro(player, scheme, const_cast<char*>(path.c_str()), FileStream::open) < 0)
        return false;
    const std::string address = streamAddress(path);
    std::array<const char*, 3> words{"loadfile", address.c_str(), nullptr};
    return mpv_command_async(player, 0, words.data()) >= 0;
}

}  // namespace morvane
