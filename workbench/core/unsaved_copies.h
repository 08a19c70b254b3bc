#pragma once

/// What a crash or a refused save left behind: local copies with bytes that never reached their server, and uploads that
/// were never checked in.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/types.h"

class CacheFolder;

/// By what two states of one server file are told apart.
struct Stamp {
    /// 100 ns units since 1601-01-01 UTC.
    ULONGLONG last_write_time = 0;
    LONGLONG size = 0;

    friend bool operator==(const Stamp&, const Stamp&) = default;
};

struct UnsavedCopy {
    std::int64_t id = 0;
    /// Decoded, as the provider spells it.
    std::wstring url;
    std::filesystem::path path;
    LONGLONG size = 0;
    /// The server's file that the copy began from; nothing when it began as a new one.
    std::optional<Stamp> stamp;
    /// The writer had handed over all bytes, since it had asked for them to be saved. Otherwise it was ended in between.
    bool is_complete = false;
};

/// The list of them in one state folder. Any thread.
class UnsavedCopies {
public:
    explicit UnsavedCopies(std::shared_ptr<CacheFolder> folder) : m_folder(std::move(folder)) {}

    /// Those that nobody has open now, oldest first, in this program or another.
    std::vector<UnsavedCopy> List() const;
    /// The newest one of a URL, whose letter case doesn't count.
    std::optional<UnsavedCopy> Find(const std::wstring& url) const;
    /// Forgets the copy and removes its file. The user's word.
    void Discard(std::int64_t id);

    /// Was the file uploaded and neither checked in nor discarded since?
    bool WasUploaded(const std::wstring& url) const;
    /// After a check-in, or after the check-out was discarded.
    void ForgetUpload(const std::wstring& url);

private:
    std::shared_ptr<CacheFolder> m_folder;
};
