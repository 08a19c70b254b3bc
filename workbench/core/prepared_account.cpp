#include "workbench/core/prepared_account.h"

#include <fstream>

#include "platform/text.h"

std::wstring ReadPasswordFile(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return WideFromUtf8(line);
}

PreparedAccount::PreparedAccount(std::optional<std::string> user, std::optional<std::filesystem::path> password_file)
    : m_user(std::move(user)), m_password_file(std::move(password_file)) {}

void PreparedAccount::SetUrlAccount(std::wstring user, std::wstring password) {
    const std::scoped_lock hold(m_lock);
    if (!user.empty()) {
        m_url_account = AccountAnswer{std::move(user), std::move(password)};
    }
}

std::optional<AccountAnswer> PreparedAccount::AnswerTo(const AccountDemand& demand) {
    const std::scoped_lock hold(m_lock);
    if (!m_answered_hosts.insert(demand.host).second) {
        return std::nullopt;
    }
    if (m_url_account) {
        return m_url_account;
    }
    if (!m_user || !m_password_file) {
        return std::nullopt;
    }
    return AccountAnswer{WideFromUtf8(*m_user), ReadPasswordFile(*m_password_file)};
}

bool PreparedAccount::WasAsked(const std::wstring& host) {
    const std::scoped_lock hold(m_lock);
    return m_answered_hosts.contains(host);
}
