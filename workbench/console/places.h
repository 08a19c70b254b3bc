#pragma once

/// Turns what a user names into names of the module's provider.

#include <string>

#include "host/file_system.h"
#include "workbench/console/terminal.h"
#include "workbench/core/location.h"
#include "workbench/core/server_files.h"

/// Binds locations: by the saved place at or above it, else with the host's own prompts. Throws Failure.
class Binder {
public:
    Binder(Host& host, AccountSource& accounts, KOV::IKOV_Flag* cancel) : m_access{host, cancel}, m_accounts(accounts) {}

    /// The root of the site that the location lies in.
    ComPtr<KOV::IAFS_Name> Bind(const Location& location);
    /// The account in the URL, if any, answers the first demand for one.
    void UseAccountOf(const Location& location) { m_accounts.SetUrlAccount(location.user, location.password); }
    const ServerAccess& Access() const { return m_access; }

private:
    const ServerAccess m_access;
    AccountSource& m_accounts;
};

/// Where the commands find their locations. Throws Failure or UsageError.
class Places {
public:
    virtual ~Places() = default;
    virtual ComPtr<KOV::IAFS_Name> Find(const std::string& text) = 0;
};

/// On the command line: absolute URLs; the first one binds, others lie in the same site.
class CommandLinePlaces final : public Places {
public:
    explicit CommandLinePlaces(Binder& binder) : m_binder(binder) {}
    ComPtr<KOV::IAFS_Name> Find(const std::string& text) override;

private:
    Binder& m_binder;
    ComPtr<KOV::IAFS_Name> m_root;
};

/// In a script: what `Bind` bound, paths below it as they stand, and absolute URLs in the same site.
class ScriptPlaces final : public Places {
public:
    explicit ScriptPlaces(Binder& binder) : m_binder(binder) {}
    void Bind(const std::string& url);
    ComPtr<KOV::IAFS_Name> Find(const std::string& text) override;

private:
    Binder& m_binder;
    ComPtr<KOV::IAFS_Name> m_root;
};
