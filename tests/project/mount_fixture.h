// Small file systems made for one test: a tmpfs that is soon full, a FUSE folder whose driver knows no
// exclusive rename.
#pragma once

#include <string>

namespace morvane::test {

/// Mounts on an existing folder; unmounts on destruction. `problem` says why there is none.
class Mount {
public:
    /// A tmpfs of `bytes`.
    static Mount tmpfs(const std::string& folder, std::size_t bytes);
    /// `source` seen through bindfs.
    static Mount bindfs(const std::string& source, const std::string& folder);
    ~Mount();
    Mount(Mount&& other) noexcept;
    Mount& operator=(Mount&&) = delete;

    explicit operator bool() const { return problem_.empty(); }
    const std::string& problem() const { return problem_; }

private:
    Mount(std::string folder, std::string problem);

    std::string folder_;
    std::string problem_;
};

}  // namespace morvane::test
