#pragma once

/// Saved places: the accounts that the user keeps, each in a cab of the store.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/file_system.h"
#include "workbench/core/store.h"

struct SavedAccount {
    std::int64_t id = 0;
    std::wstring url;
    std::wstring user;
    ComPtr<KOV::IAFS_AccountData> data;
};

/// The places of one provider. Throws `HostException`. Any thread, one call at a time on one account.
class Accounts {
public:
    Accounts(std::shared_ptr<Store> store, ComPtr<KOV::IAFS_FileSys> provider);

    /// In the order in which they were added.
    std::vector<SavedAccount> List() const;
    /// The place at or above a location: one that is the user's named in the URL before any other, then the longest.
    std::optional<SavedAccount> Find(const std::wstring& url) const;
    /// Saves an account; one with the same URL is replaced. Gives its id. Nothing half saved is ever seen.
    std::int64_t Save(KOV::IAFS_AccountData* data);
    /// Saves it at its old place again, as after each bind, even when its URL became another.
    void Update(std::int64_t id, KOV::IAFS_AccountData* data);
    /// Forgets what signs in to the place: password and cookies. The place and its user's name stay. Nothing happens without one.
    void ForgetSignIn(const std::wstring& url);
    /// False when there is none with this URL.
    bool Remove(const std::wstring& url);

private:
    SavedAccount LoadAccount(std::int64_t id, std::int64_t cab) const;
    std::int64_t SaveToFreshCab(KOV::IAFS_AccountData* data);

    std::shared_ptr<Store> m_store;
    ComPtr<KOV::IAFS_FileSys> m_provider;
};
