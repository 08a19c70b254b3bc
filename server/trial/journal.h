// What was asked: one record a request, as a JSON line in a file and, for tests, in memory.
#pragma once

#include "server/wire/message.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace trial {

struct JournalEntry {
    std::string method;
    std::string target;
    std::vector<Header> headers;
    std::string body; ///< Empty above 64 KiB; then length and hash stand for it.
    std::uint64_t body_size = 0;
    std::string body_sha256;
    int status = 0;
};

/// Gathers a request's body as it goes by.
class BodyRecord {
public:
    BodyRecord();
    ~BodyRecord();
    void Add(std::string_view bytes);
    void FinishInto(JournalEntry& entry);

private:
    struct Hash;
    std::string m_text;
    std::uint64_t m_size = 0;
    std::unique_ptr<Hash> m_hash;
};

class Journal {
public:
    /// An empty file name writes none. Throws std::runtime_error when the file can't be written.
    Journal(const std::string& file, bool keep);
    bool IsOn() const { return m_keep || m_file.is_open(); }
    void Record(JournalEntry entry);
    std::vector<JournalEntry> Entries() const;
    void Clear();

private:
    bool m_keep;
    std::ofstream m_file;
    mutable std::mutex m_mutex;
    std::vector<JournalEntry> m_entries;
};

} // namespace trial
