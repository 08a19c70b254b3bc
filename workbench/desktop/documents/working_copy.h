#pragma once

/// A document's files in the state folder. They outlive a crash and are found again at the next start.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include <QDateTime>
#include <QString>

#include "workbench/core/state_folder.h"
#include "workbench/core/unsaved_copies.h"

/// Where a document came from.
struct CopySource {
    /// Decoded, as the provider spells it; empty for a local file.
    QString url;
    /// Absolute; empty for a server's file. Both are empty for a document that was never saved anywhere.
    QString path;
    QString title;
    /// The state of the file that the copy began from or was saved to last.
    std::optional<Stamp> stamp;

    friend bool operator==(const CopySource&, const CopySource&) = default;
};

/// Which version counts, and when it became so.
struct CopyState {
    int version = 0;
    bool is_modified = false;
    QDateTime changed;
};

/// What an earlier run left: a copy with changes that were never saved.
struct LeftCopy {
    std::filesystem::path folder;
    CopySource source;
    CopyState state;
    std::int64_t size = 0;

    /// The file of the version that counts.
    std::filesystem::path Content() const;
};

/// The files of one open document. Holds their lock; unless they are kept, they go with it. All failures are HostException. One thread
/// at a time.
class WorkingCopy {
    /// Only this class makes objects of itself.
    struct Made {};

public:
    /// A new one without a version, below `documents`, which is made when it isn't there.
    static std::unique_ptr<WorkingCopy> Create(const std::filesystem::path& documents, CopySource source);
    /// Takes over what an earlier run left. Null when another program has done so meanwhile.
    static std::unique_ptr<WorkingCopy> Adopt(const LeftCopy& left);
    /// What no running program holds: copies with unsaved changes, oldest first. The others that nobody holds are removed.
    static std::vector<LeftCopy> Left(const std::filesystem::path& documents);
    /// Removes what an earlier run left, unless another program has it.
    static void Discard(const LeftCopy& left);

    WorkingCopy(Made, std::filesystem::path folder, FileDescriptor lock, CopySource source, CopyState state);
    ~WorkingCopy();
    WorkingCopy(const WorkingCopy&) = delete;
    WorkingCopy& operator=(const WorkingCopy&) = delete;

    const CopySource& Source() const noexcept { return m_source; }
    const CopyState& State() const noexcept { return m_state; }
    std::filesystem::path VersionFile(int version) const;
    /// An empty file for a version, open for writing.
    FileDescriptor MakeVersion(int version) const;
    void RemoveVersion(int version) const noexcept;

    /// Writes down at once what a later run needs to know.
    void SetSource(CopySource source);
    void SetState(CopyState state);
    /// With true, the files stay when this object goes: a later run offers them.
    void Keep(bool is_kept) noexcept { m_is_kept = is_kept; }

private:
    void WriteFacts() const;

    std::filesystem::path m_folder;
    FileDescriptor m_lock;
    CopySource m_source;
    CopyState m_state;
    bool m_is_kept = false;
};
