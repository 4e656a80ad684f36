// The temporary files of a project: never visible under a final name, gone on every exit.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "support/unique_fd.h"

namespace morvane {

/// A fresh ".morvane-" + UUID + ".partial".
std::string temporaryName();
/// True for names of exactly that form.
bool isTemporaryName(std::string_view name);

/// A new file under a fresh temporary name in an open folder, which must outlive this object. It is
/// removed on destruction unless it was published.
class TemporaryFile {
public:
    /// Creates the file for writing; empty (false) when that fails.
    TemporaryFile(int folder, mode_t mode);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    explicit operator bool() const { return created_; }
    int writer() const { return writer_.get(); }
    bool isOpenForWriting() const { return static_cast<bool>(writer_); }
    const std::string& name() const { return name_; }
    /// Flushes to stable storage, then closes the writer. Throws std::system_error.
    void flushAndClose();
    /// Opens what stands under the temporary name for reading; empty when that is not the file
    /// created here.
    const UniqueFd& reopen();
    int reader() const { return reader_.get(); }
    /// Gives the file its final name in the same folder, never replacing; 0 or an errno value.
    int publish(const std::string& finalName);

private:
    int folder_;
    std::string name_;
    UniqueFd writer_;
    UniqueFd reader_;
    struct stat identity_ {};
    bool created_ = false;
};

}  // namespace morvane
