#include "support/trial_server.h"

#include "server/server.h"
#include "server/wire/http_text.h"
#include "support/test_certificate.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

using namespace trial;

namespace {

const Writer setup{{}, {}, true};

constexpr AuthMode modes[] = {AuthMode::none, AuthMode::basic, AuthMode::ntlm, AuthMode::forms};

std::string Plain(std::string_view path) {
    while (path.starts_with('/'))
        path.remove_prefix(1);
    while (path.ends_with('/'))
        path.remove_suffix(1);
    return std::string(path);
}

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kov-trial-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        m_path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

ServerOptions OptionsOf(const TrialOptions& given, const std::string& folder) {
    ServerOptions options;
    options.root = folder + "/root";
    options.sample = given.sample;
    options.auth = modes[static_cast<int>(given.auth)];
    for (const TrialUser& user : given.users)
        options.accounts.push_back({user.name, user.password, user.rights == TrialRights::write});
    options.sites = given.sites;
    options.version_header = given.version_header;
    options.keep_journal = true;
    options.rewrite_uploads = given.rewrite_uploads;
    options.require_check_out = given.require_check_out;
    options.latency_ms = given.latency_ms;
    options.bytes_per_second = given.bytes_per_second;
    // A test outlives no power failure, and waiting for the disk would be most of its time.
    options.durable = false;
    if (given.tls) {
        options.certificate_file = folder + "/certificate.pem";
        options.key_file = folder + "/key.pem";
        WriteTestCertificate(options.certificate_file, options.key_file);
    }
    return options;
}

void AddToTree(Store& store, const std::string& folder, std::map<std::string, std::uint64_t>& tree) {
    for (const Entry& entry : store.List(folder)) {
        tree.emplace(entry.is_folder ? entry.path + "/" : entry.path, entry.size);
        if (entry.is_folder)
            AddToTree(store, entry.path, tree);
    }
}

void PutContent(Store& store, const std::string& path, std::string_view bytes, const Writer& writer) {
    const auto upload = store.BeginUpload();
    upload->Write(bytes);
    store.Commit(*upload, path, writer);
}

} // namespace

struct TrialServer::State {
    explicit State(const TrialOptions& given) : options(OptionsOf(given, folder.Path())) { Start(); }

    void Start() {
        server = std::make_unique<Server>(options);
        options.port = server->Port();
    }
    Store& Tree() { return server->GetStore(); }

    TemporaryFolder folder;
    ServerOptions options;
    std::unique_ptr<Server> server;
};

std::string SeenRequest::Header(std::string_view name) const {
    for (const auto& [each, value] : headers) {
        if (EqualNoCase(each, name))
            return value;
    }
    return {};
}

TrialServer::TrialServer(TrialOptions options) : m_state(std::make_unique<State>(options)) {}

TrialServer::~TrialServer() = default;

std::uint16_t TrialServer::Port() const { return m_state->server->Port(); }

std::string TrialServer::Origin() const { return m_state->server->Origin(); }

std::string TrialServer::Url(std::string_view path) const {
    return path.empty() ? Origin() : Origin() + "/" + EncodePath(Plain(path));
}

std::wstring TrialServer::WideUrl(std::string_view path) const {
    const std::string url = path.empty() ? Origin() : Origin() + "/" + Plain(path);
    std::wstring wide;
    for (std::size_t i = 0; i < url.size();) {
        const auto lead = static_cast<unsigned char>(url[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        wchar_t code = length == 1 ? lead : lead & (0xFF >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            code = code << 6 | (static_cast<unsigned char>(url.at(i + k)) & 0x3F);
        wide.push_back(code);
        i += length;
    }
    return wide;
}

std::string TrialServer::CertificateFile() const { return m_state->options.certificate_file; }

std::string TrialServer::Root() const { return m_state->options.root; }

void TrialServer::Put(std::string_view path, std::string_view bytes) {
    const std::string plain = Plain(path);
    m_state->Tree().MakeFolders(ParentOf(plain));
    PutContent(m_state->Tree(), plain, bytes, setup);
}

void TrialServer::MakeFolder(std::string_view path) { m_state->Tree().MakeFolders(Plain(path)); }

void TrialServer::Remove(std::string_view path) { m_state->Tree().Remove(Plain(path), setup); }

std::string TrialServer::Read(std::string_view path) const {
    const Store::OpenedFile opened = m_state->Tree().Open(Plain(path));
    std::string bytes(opened.entry.size, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            ::pread(opened.file->Get(), bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(filled));
        if (count <= 0)
            throw std::runtime_error("the file can't be read: " + std::string(path));
        filled += static_cast<std::size_t>(count);
    }
    return bytes;
}

bool TrialServer::Exists(std::string_view path) const { return m_state->Tree().Find(Plain(path)).has_value(); }

std::map<std::string, std::uint64_t> TrialServer::Tree() const {
    std::map<std::string, std::uint64_t> tree;
    AddToTree(m_state->Tree(), {}, tree);
    return tree;
}

void TrialServer::Touch(std::string_view path, std::string_view bytes) {
    PutContent(m_state->Tree(), Plain(path), bytes, {Login("other"), {}, true});
}

void TrialServer::SetHolder(std::string_view path, std::string_view user) {
    m_state->Tree().SetHolder(Plain(path), user.empty() ? std::string() : Login(user));
}

std::string TrialServer::Holder(std::string_view path) const {
    const auto entry = m_state->Tree().Find(Plain(path));
    return entry ? entry->holder.substr(entry->holder.find('\\') + 1) : std::string();
}

std::string TrialServer::Login(std::string_view user) { return LoginOf(user); }

std::string TrialServer::SignIn(std::string_view user) {
    const auto [fed_auth, rt_fa] = m_state->server->GetAccounts().SignIn(std::string(user));
    return fed_auth + "; " + rt_fa;
}

void TrialServer::ForgetSignIns() { m_state->server->GetAccounts().ForgetSignIns(); }

std::string TrialServer::CheckInComment(std::string_view path) const {
    const auto versions = m_state->Tree().Versions(Plain(path));
    return versions.empty() ? std::string() : versions.back().comment;
}

std::size_t TrialServer::Versions(std::string_view path) const { return m_state->Tree().Versions(Plain(path)).size(); }

void TrialServer::Once(std::string_view fault) { Times(1, fault); }

void TrialServer::Times(std::size_t count, std::string_view fault) { m_state->server->GetFaults().Add(ParseFault(fault, count)); }

void TrialServer::Always(std::string_view fault) { Times(Fault::unlimited, fault); }

void TrialServer::ClearFaults() { m_state->server->GetFaults().Clear(); }

std::size_t TrialServer::Count(std::string_view method) const {
    const auto entries = m_state->server->GetJournal().Entries();
    return static_cast<std::size_t>(std::count_if(
        entries.begin(), entries.end(), [method](const JournalEntry& entry) { return method == "*" || entry.method == method; }));
}

std::size_t TrialServer::Connections() const { return m_state->server->Connections(); }

std::vector<SeenRequest> TrialServer::Journal() const {
    std::vector<SeenRequest> seen;
    for (JournalEntry& entry : m_state->server->GetJournal().Entries()) {
        SeenRequest request{entry.method, entry.target, {}, entry.body, entry.body_size, entry.body_sha256, entry.status};
        for (const trial::Header& header : entry.headers)
            request.headers.emplace_back(header.name, header.value);
        seen.push_back(std::move(request));
    }
    return seen;
}

void TrialServer::ClearJournal() { m_state->server->GetJournal().Clear(); }

void TrialServer::Restart() {
    m_state->server.reset();
    m_state->Start();
}
