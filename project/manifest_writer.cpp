#include "project/manifest_writer.h"

#include <unistd.h>

#include <ctime>
#include <limits>
#include <system_error>
#include <utility>

#include "project/project_errors.h"
#include "support/system_error.h"

namespace morvane {

namespace {

using Copy = ManifestCopies::Copy;

void stamp(ProjectManifest& manifest) {
    if (manifest.revision == std::numeric_limits<std::int64_t>::max())
        failWith(project_text::noMoreRevisions);
    ++manifest.revision;
    manifest.updatedAt = std::time(nullptr);
}

/// Of a file that had its name before: its content (and a changed size) is enough.
void flushContent(int file) {
    if (::fdatasync(file) != 0)
        throwErrno();
}

}  // namespace

ManifestWriter::~ManifestWriter() {
    try {
        preparing_.wait();
    } catch (const std::system_error&) {
        // What was prepared is removed.
    }
    removePrepared();
}

void ManifestWriter::persist(ProjectManifest& manifest) {
    dropPrepared(manifest);
    stamp(manifest);
    text_.emplace(manifest);
    replace();
}

void ManifestWriter::persist(ProjectManifest& manifest, std::optional<std::size_t> changed) {
    if (isForetold(manifest, changed) && copies_.canExchange()) {
        publishPrepared(manifest);
        return;
    }
    dropPrepared(manifest);
    stamp(manifest);
    if (!text_ || (changed && !setRecord(*changed, manifest.files[*changed]))) {
        text_.emplace(manifest);
        replace();
        return;
    }
    text_->setHead(manifest.revision, manifest.updatedAt);
    copies_.checkTarget();
    if (!copies_.canExchange() || !copies_.exchange(nextCopy(manifest)))
        replace();
}

void ManifestWriter::prepare(const ProjectManifest& manifest, const std::vector<Change>& changes) {
    if (!text_ || !prepared_.empty() || copies_.spares() < mostSpares_ || !copies_.canExchange())
        return;
    std::vector<int> files;
    try {
        for (const Change& change : changes) {
            if (!prepareOne(manifest, change))
                break;
            files.push_back(prepared_.back().copy.file.get());
        }
    } catch (const std::system_error&) {
        removePrepared();
        return;
    }
    if (!files.empty())
        preparing_.start([files = std::move(files)] {
            for (const int file : files)
                flushContent(file);
        });
}

/// False where no copy can be overwritten at once, or the record needs more room than its field has.
bool ManifestWriter::prepareOne(const ProjectManifest& manifest, const Change& change) {
    const auto revision = manifest.revision + static_cast<std::int64_t>(prepared_.size());
    if (revision == std::numeric_limits<std::int64_t>::max())
        return false;
    auto copy = copies_.takeFree();
    if (!copy)
        return false;
    if (!setRecord(change.index, change.record)) {
        copies_.giveBack(*std::move(copy));
        return false;
    }
    // The copies that are not with the others: this one, and those prepared for the writes before.
    copy->behind.push_back(text_->record(change.index));
    for (Prepared& earlier : prepared_)
        earlier.copy.behind.push_back(text_->record(change.index));
    prepared_.push_back({change, revision + 1, std::time(nullptr), *std::move(copy)});
    text_->setHead(prepared_.back().revision, prepared_.back().updatedAt);
    ManifestCopies::bringUpToDate(prepared_.back().copy, *text_);
    return true;
}

/// Whether the write that was prepared first is this one.
bool ManifestWriter::isForetold(const ProjectManifest& manifest, std::optional<std::size_t> changed) const {
    return !prepared_.empty() && changed == prepared_.front().change.index &&
           manifest.files[*changed] == prepared_.front().change.record &&
           manifest.revision + 1 == prepared_.front().revision;
}

void ManifestWriter::publishPrepared(ProjectManifest& manifest) {
    try {
        preparing_.wait();
    } catch (...) {
        removePrepared();
        throw;
    }
    Prepared next = std::move(prepared_.front());
    prepared_.pop_front();
    manifest.revision = next.revision;
    manifest.updatedAt = next.updatedAt;
    if (!copies_.exchange(std::move(next.copy))) {
        removePrepared();
        text_.emplace(manifest);
        replace();
    }
}

/// What was prepared will not be written: the text goes back to what `manifest` says.
void ManifestWriter::dropPrepared(const ProjectManifest& manifest) {
    try {
        preparing_.wait();
    } catch (const std::system_error&) {
        removePrepared();
    }
    std::vector<std::size_t> changed;
    while (!prepared_.empty()) {
        changed.push_back(prepared_.back().change.index);
        copies_.giveBack(std::move(prepared_.back().copy));
        prepared_.pop_back();
    }
    for (const std::size_t index : changed)
        if (text_ && !setRecord(index, manifest.files[index]))
            text_.reset();
}

/// Removes the files, too: after a failed flush nobody knows what stands in them. The text, which is
/// ahead of the manifest, is built again by the next write.
void ManifestWriter::removePrepared() {
    if (prepared_.empty())
        return;
    for (const Prepared& prepared : prepared_)
        copies_.remove(prepared.copy);
    prepared_.clear();
    text_.reset();
}

bool ManifestWriter::setRecord(std::size_t index, const ProjectFileRecord& record) {
    if (!text_->setRecord(index, record))
        return false;
    copies_.noteChange(text_->record(index));
    return true;
}

/// A new file with the present text, flushed.
Copy ManifestWriter::newCopy() const {
    Copy copy = copies_.make(*text_);
    try {
        if (::fsync(copy.file.get()) != 0)
            throwErrno();
    } catch (...) {
        copies_.remove(copy);
        throw;
    }
    return copy;
}

/// A complete, flushed copy of the present text: the oldest spare brought up to date, or a new file.
Copy ManifestWriter::nextCopy(const ProjectManifest& manifest) {
    if (wantsAnotherSpare(manifest)) {
        try {
            return newCopy();
        } catch (const std::system_error& error) {
            // A full disk ends no run that can go on with the copies it has.
            if (copies_.spares() == 0 || error.code() != std::errc::no_space_on_device)
                throw;
            mostSpares_ = copies_.spares();
        }
    }
    Copy copy = copies_.take(*text_);
    try {
        ManifestCopies::bringUpToDate(copy, *text_);
        flushContent(copy.file.get());
    } catch (...) {
        copies_.remove(copy);
        throw;
    }
    return copy;
}

/// Two spares always; more while they cannot take the room of what is still to be copied.
bool ManifestWriter::wantsAnotherSpare(const ProjectManifest& manifest) const {
    constexpr std::size_t fewestSpares = 2;
    if (copies_.spares() >= mostSpares_)
        return false;
    if (copies_.spares() < fewestSpares)
        return true;
    const auto room = copies_.availableBytes();
    if (!room)
        return false;
    // In floating point, where no sum of sizes overflows; the exact byte does not matter here.
    auto needed = static_cast<double>(text_->text().size()) * 2;
    for (std::size_t index = 0; index < manifest.files.size(); ++index)
        if (manifest.files[index].state != ProjectFileState::verified)
            needed += static_cast<double>(manifest.plan.items[index].size);
    return *room > needed;
}

void ManifestWriter::replace() {
    copies_.checkTarget();
    copies_.forget();
    copies_.replace(newCopy());
}

}  // namespace morvane
