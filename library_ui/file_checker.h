// Asks the file system whether files exist, without ever holding up the main thread. Every library
// folder has queues of its own (one for the preview, one for longer lists), so that a dead drive delays only
// its own answers. A drive that gives no sign of life for `answerDeadline` counts its files as missing; a
// long list on a working drive takes the time it needs.
#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace morvane {

struct Asset;

/// A file to ask for: its absolute path and the library folder it was found under (names the queue).
struct FileRef {
    std::string path;
    std::string root;
};

/// Main thread only. Destroying it never waits for a drive that does not answer.
class FileChecker final : public QObject {
    Q_OBJECT
public:
    /// Called on the main thread, exactly once, with the paths that exist, in the order asked.
    using ExistingFiles = std::function<void(std::vector<std::string> existing)>;

    explicit FileChecker(QObject* parent = nullptr);
    ~FileChecker() override;

    /// Asks for `files`. The answer comes later, never from inside this call; nothing comes once this object
    /// or `owner` is gone.
    void findExisting(std::vector<FileRef> files, QObject* owner, ExistingFiles answer);
    /// Asks for the one file the preview shows. Only the newest call is answered.
    void checkShown(const Asset& asset, std::function<void(bool exists)> answer);
    /// Makes the pending checkShown void.
    void forgetShown();

    /// Milliseconds without a sign of life after which a drive counts as silent; a drive already known to be
    /// silent is waited for only `silentDeadline`.
    static constexpr int answerDeadline = 3000;
    static constexpr int silentDeadline = 300;

private:
    enum class Purpose { Shown, List };
    struct Lane;
    struct Request;
    using Lanes = std::map<std::pair<Purpose, std::string>, std::shared_ptr<Lane>>;

    void find(Purpose purpose, const std::shared_ptr<Request>& request);
    void ask(const std::shared_ptr<Lane>& lane, const std::shared_ptr<Request>& request,
             std::vector<std::size_t> members);
    void watch(const std::shared_ptr<Request>& request, int milliseconds);

    Lanes lanes_;
    quint64 shownTicket_ = 0;
};

}  // namespace morvane
