#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "workbench/core/questions.h"

/// The account that the user gave with a URL or an option, for the first demand of each host. Any thread.
class PreparedAccount {
public:
    /// The password is the file's first line; without a file there is no account of the user's.
    PreparedAccount(std::optional<std::string> user, std::optional<std::filesystem::path> password_file);

    /// The account of a URL that was just read; empty texts mean none.
    void SetUrlAccount(std::wstring user, std::wstring password);
    /// Nothing when none was given, or when this host has had it before.
    std::optional<AccountAnswer> AnswerTo(const AccountDemand& demand);
    /// Has this host demanded an account before? It refused what it got then.
    bool WasAsked(const std::wstring& host);

private:
    const std::optional<std::string> m_user;
    const std::optional<std::filesystem::path> m_password_file;
    std::mutex m_lock;
    std::optional<AccountAnswer> m_url_account;
    std::set<std::wstring> m_answered_hosts;
};

/// The first line of a file with a password, without its end.
std::wstring ReadPasswordFile(const std::filesystem::path& file);
