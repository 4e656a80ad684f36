// The walk through one source folder.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "project/job_context.h"
#include "project/safe_paths.h"

namespace morvane {

/// True for a name with the extension of Final Cut Pro's libraries, in any case.
bool isFcpLibraryName(std::string_view name);

/// Walks a folder and everything below it in a fixed order (entries of one folder in the byte order of
/// their names, a folder's content where its name stands) and passes over what is never copied: symbolic
/// links, system entries, packages, Final Cut Pro libraries, the project folder, everything that is no
/// regular file. One thread uses it at a time.
class SourceWalk {
public:
    struct Entry {
        enum class Kind { File, UnreadableFolder };
        Kind kind;
        std::string path;
        std::string safeRelative;  ///< below the walked folder, every component made safe
        FileAttributes attributes;
    };
    /// So many that handing them to another thread costs nothing beside finding them.
    static constexpr std::size_t batchSize = 128;

    /// `folder`, `project`: real paths. Throws ProjectCoreError cannotScan.
    SourceWalk(JobContext& context, const std::string& folder, std::string project);

    /// The next entries, at most `batchSize`; fewer only at the end. Throws ProjectCoreError (its
    /// cancelled case).
    std::vector<Entry> next();

private:
    struct Named {
        std::string name;
        struct stat status;
    };
    struct Frame {
        std::string path;
        std::string safeRelative;  ///< ending in "/" unless empty
        std::vector<Named> entries;
        std::size_t next = 0;
    };

    static std::optional<std::vector<Named>> list(const std::string& folder);
    bool isPassedOver(const std::string& path, const Named& entry) const;
    void visit(const Named& entry, std::vector<Entry>& found);

    JobContext& context_;
    const std::string project_;
    std::vector<Frame> frames_;
};

}  // namespace morvane
