#include "server/trial/journal.h"

#include "server/wire/http_text.h"

#include <openssl/evp.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <stdexcept>

namespace trial {
namespace {

constexpr std::size_t longest_body = 64 * 1024;

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

// Bytes that aren't UTF-8 are shown as the characters of the same number, since a line has to be text.
void WriteText(Writer& writer, const std::string& text) {
    if (IsValidUtf8(text)) {
        writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        return;
    }
    std::string widened;
    for (unsigned char c : text) {
        if (c < 0x80) {
            widened.push_back(static_cast<char>(c));
        } else {
            widened.push_back(static_cast<char>(0xC0 | c >> 6));
            widened.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    writer.String(widened.data(), static_cast<rapidjson::SizeType>(widened.size()));
}

std::string LineOf(const JournalEntry& entry) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key("method");
    WriteText(writer, entry.method);
    writer.Key("target");
    WriteText(writer, entry.target);
    writer.Key("headers");
    writer.StartArray();
    for (const Header& header : entry.headers) {
        writer.StartArray();
        WriteText(writer, header.name);
        WriteText(writer, header.value);
        writer.EndArray();
    }
    writer.EndArray();
    if (entry.body_sha256.empty()) {
        writer.Key(IsValidUtf8(entry.body) ? "body" : "body_base64");
        WriteText(writer, IsValidUtf8(entry.body) ? entry.body : EncodeBase64(entry.body));
    } else {
        writer.Key("body_size");
        writer.Uint64(entry.body_size);
        writer.Key("body_sha256");
        WriteText(writer, entry.body_sha256);
    }
    writer.Key("status");
    writer.Int(entry.status);
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize());
}

} // namespace

struct BodyRecord::Hash {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context{EVP_MD_CTX_new(), EVP_MD_CTX_free};
};

BodyRecord::BodyRecord() = default;

BodyRecord::~BodyRecord() = default;

void BodyRecord::Add(std::string_view bytes) {
    m_size += bytes.size();
    if (!m_hash && m_size <= longest_body) {
        m_text.append(bytes);
        return;
    }
    if (!m_hash) {
        m_hash = std::make_unique<Hash>();
        EVP_DigestInit_ex(m_hash->context.get(), EVP_sha256(), nullptr);
        EVP_DigestUpdate(m_hash->context.get(), m_text.data(), m_text.size());
        m_text.clear();
    }
    EVP_DigestUpdate(m_hash->context.get(), bytes.data(), bytes.size());
}

void BodyRecord::FinishInto(JournalEntry& entry) {
    entry.body = m_text;
    entry.body_size = m_size;
    if (!m_hash)
        return;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_DigestFinal_ex(m_hash->context.get(), digest, &length);
    entry.body_sha256 = HexText(digest, length);
}

Journal::Journal(const std::string& file, bool keep) : m_keep(keep) {
    if (file.empty())
        return;
    m_file.open(file, std::ios::app | std::ios::binary);
    if (!m_file)
        throw std::runtime_error(file + ": the journal can't be written");
}

void Journal::Record(JournalEntry entry) {
    const std::lock_guard guard(m_mutex);
    if (m_file.is_open())
        m_file << LineOf(entry) << '\n' << std::flush;
    if (m_keep)
        m_entries.push_back(std::move(entry));
}

std::vector<JournalEntry> Journal::Entries() const {
    const std::lock_guard guard(m_mutex);
    return m_entries;
}

void Journal::Clear() {
    const std::lock_guard guard(m_mutex);
    m_entries.clear();
}

} // namespace trial
