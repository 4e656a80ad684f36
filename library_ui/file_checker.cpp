#include "library_ui/file_checker.h"

#include "catalog/asset.h"
#include "support/deliver.h"
#include "support/serial_queue.h"

#include <QPointer>
#include <QTimer>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>

namespace morvane {

namespace {

std::int64_t nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

bool fileExists(const std::string& path) {
    struct stat facts {};
    return ::stat(path.c_str(), &facts) == 0;
}

/// A queue stuck in a dead drive's call cannot be ended, and quitting must not wait for it: what is put
/// here is left to the end of the process.
std::vector<std::shared_ptr<void>>& abandonedLanes() {
    static auto& lanes = *new std::vector<std::shared_ptr<void>>();
    return lanes;
}

}  // namespace

/// One queue for one library folder. `lastSign` is when the file system last answered, or when the first of
/// the waiting questions was put; written by the queue too.
struct FileChecker::Lane {
    bool silent() const { return waiting > 0 && nowMs() - lastSign > answerDeadline; }

    int waiting = 0;
    std::atomic<std::int64_t> lastSign = 0;
    std::unique_ptr<SerialQueue> queue = std::make_unique<SerialQueue>("com.morvane.library.files");
};

/// One question on its way through one or more lanes. `answered` tells queued work that it is pointless by
/// now.
struct FileChecker::Request {
    std::vector<FileRef> files;
    std::vector<char> found;
    std::vector<std::shared_ptr<Lane>> open;
    std::atomic<bool> answered = false;
    QPointer<QObject> owner;
    ExistingFiles answer;

    void finish() {
        if (answered.exchange(true) || !owner)
            return;
        std::vector<std::string> existing;
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (found[i] != 0)
                existing.push_back(files[i].path);
        }
        answer(std::move(existing));
    }
};

FileChecker::FileChecker(QObject* parent) : QObject(parent) {}

FileChecker::~FileChecker() {
    for (auto& [key, lane] : lanes_) {
        if (lane->waiting > 0)
            abandonedLanes().push_back(lane);
    }
}

void FileChecker::findExisting(std::vector<FileRef> files, QObject* owner, ExistingFiles answer) {
    auto request = std::make_shared<Request>();
    request->files = std::move(files);
    request->owner = owner;
    request->answer = std::move(answer);
    find(Purpose::List, request);
}

void FileChecker::checkShown(const Asset& asset, std::function<void(bool exists)> answer) {
    const quint64 ticket = ++shownTicket_;
    auto request = std::make_shared<Request>();
    request->files = {{asset.path, asset.root}};
    request->owner = this;
    request->answer = [this, ticket, answer = std::move(answer)](const std::vector<std::string>& existing) {
        if (ticket == shownTicket_)
            answer(!existing.empty());
    };
    find(Purpose::Shown, request);
}

void FileChecker::forgetShown() {
    ++shownTicket_;
}

void FileChecker::find(Purpose purpose, const std::shared_ptr<Request>& request) {
    request->found.assign(request->files.size(), 0);
    std::map<std::string, std::vector<std::size_t>> byRoot;
    for (std::size_t i = 0; i < request->files.size(); ++i)
        byRoot[request->files[i].root].push_back(i);

    int deadline = byRoot.empty() ? 0 : silentDeadline;
    for (auto& [root, members] : byRoot) {
        std::shared_ptr<Lane>& lane = lanes_[{purpose, root}];
        if (!lane)
            lane = std::make_shared<Lane>();
        if (!lane->silent())
            deadline = answerDeadline;
        request->open.push_back(lane);
        ask(lane, request, std::move(members));
    }
    watch(request, deadline);
}

void FileChecker::ask(const std::shared_ptr<Lane>& lane, const std::shared_ptr<Request>& request,
                      std::vector<std::size_t> members) {
    if (lane->waiting++ == 0)
        lane->lastSign = nowMs();
    runAndDeliver(
        *lane->queue, this,
        [lane = lane.get(), request, members = std::move(members)] {
            std::vector<std::size_t> existing;
            for (const std::size_t i : members) {
                if (request->answered)
                    break;
                if (fileExists(request->files[i].path))
                    existing.push_back(i);
                lane->lastSign = nowMs();
            }
            return existing;
        },
        [lane = lane.get(), request](FileChecker&, Outcome<std::vector<std::size_t>>& outcome) {
            --lane->waiting;
            std::erase_if(request->open, [lane](const auto& open) { return open.get() == lane; });
            for (const std::size_t i : outcome.get())
                request->found[i] = 1;
            if (request->open.empty())
                request->finish();
        });
}

void FileChecker::watch(const std::shared_ptr<Request>& request, int milliseconds) {
    QTimer::singleShot(milliseconds, this, [this, request] {
        if (request->answered)
            return;
        if (std::all_of(request->open.begin(), request->open.end(),
                        [](const auto& lane) { return lane->silent(); }))
            request->finish();
        else
            watch(request, silentDeadline);
    });
}

}  // namespace morvane
