#include "workbench/core/accounts.h"

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/cab.h"
#include "workbench/core/errors.h"

namespace {

void Check(HRESULT result, const char* what) {
    if (FAILED(result)) {
        throw HostException(result, what);
    }
}

std::wstring UrlOf(KOV::IAFS_AccountData* data) {
    Bstr url;
    Check(data->get_URL(&url), "An account can't tell its URL");
    return url.Text();
}

} // namespace

Accounts::Accounts(std::shared_ptr<Store> store, ComPtr<KOV::IAFS_FileSys> provider)
    : m_store(std::move(store)), m_provider(std::move(provider)) {}

SavedAccount Accounts::LoadAccount(std::int64_t id, std::int64_t cab) const {
    SavedAccount account{id};
    const auto source = MakeCab(MakeStoredCabStorage(m_store), cab);
    Check(m_provider->CreateAccount(nullptr, source, 0, 0, 0, &account.data), "A saved account can't be loaded");
    account.url = UrlOf(account.data);
    Bstr user;
    Check(account.data->get_UserName(&user), "An account can't tell its user");
    account.user = user.Text();
    return account;
}

std::vector<SavedAccount> Accounts::List() const {
    std::vector<std::pair<std::int64_t, std::int64_t>> rows;
    {
        Store::Query query(*m_store, "SELECT id, cab FROM account ORDER BY id");
        while (query.Step()) {
            rows.emplace_back(query.Integer(0), query.Integer(1));
        }
    }
    std::vector<SavedAccount> accounts;
    for (const auto& [id, cab] : rows) {
        accounts.push_back(LoadAccount(id, cab));
    }
    return accounts;
}

std::optional<SavedAccount> Accounts::Find(const std::wstring& url) const {
    std::optional<SavedAccount> best;
    LONG best_result = 0;
    for (SavedAccount& account : List()) {
        LONG result = 0;
        if (FAILED(account.data->VerifyURL(url.c_str(), &result)) || result == 0) {
            continue;
        }
        if (!best || result > best_result || (result == best_result && account.url.size() > best->url.size())) {
            best = std::move(account);
            best_result = result;
        }
    }
    return best;
}

std::int64_t Accounts::SaveToFreshCab(KOV::IAFS_AccountData* data) {
    const std::int64_t root = AddStoredCab(*m_store);
    const auto cab = MakeCab(MakeStoredCabStorage(m_store), root);
    Check(data->SaveTo(cab), "An account can't be saved");
    return root;
}

std::int64_t Accounts::Save(KOV::IAFS_AccountData* data) {
    const std::wstring url = UrlOf(data);
    Store::Transaction transaction(*m_store);
    std::optional<std::int64_t> id;
    {
        Store::Query query(*m_store, "SELECT id FROM account WHERE url=?1");
        if (query.Bind(1, url).Step()) {
            id = query.Integer(0);
        }
    }
    if (id) {
        Update(*id, data);
    } else {
        const std::int64_t cab = SaveToFreshCab(data);
        Store::Query(*m_store, "INSERT INTO account(url, cab) VALUES(?1, ?2)").Bind(1, url).Bind(2, cab).Run();
        id = m_store->LastRowId();
    }
    transaction.Commit();
    return *id;
}

void Accounts::Update(std::int64_t id, KOV::IAFS_AccountData* data) {
    const std::wstring url = UrlOf(data);
    Store::Transaction transaction(*m_store);
    std::optional<std::int64_t> old;
    {
        Store::Query query(*m_store, "SELECT cab FROM account WHERE id=?1");
        if (query.Bind(1, id).Step()) {
            old = query.Integer(0);
        }
    }
    // An account that another program removed meanwhile stays removed.
    if (old) {
        const std::int64_t cab = SaveToFreshCab(data);
        Store::Query(*m_store, "UPDATE account SET url=?2, cab=?3 WHERE id=?1").Bind(1, id).Bind(2, url).Bind(3, cab).Run();
        RemoveStoredCab(*m_store, *old);
    }
    transaction.Commit();
}

void Accounts::ForgetSignIn(const std::wstring& url) {
    Store::Transaction transaction(*m_store);
    Store::Query query(*m_store, "SELECT cab FROM account WHERE url=?1");
    if (query.Bind(1, url).Step()) {
        const auto cab = MakeCab(MakeStoredCabStorage(m_store), query.Integer(0));
        // Where the provider keeps its secrets; one that it doesn't find is one that it asks for.
        for (const wchar_t* const secret : {L"AuthHeader", L"Password"}) {
            Variant key;
            key.vt = VT_BSTR;
            key.bstrVal = Bstr(std::wstring_view(secret)).Detach();
            ComPtr<KOV::IAUX_CabItem> item;
            if (SUCCEEDED(cab->GetItem(&key, &item))) {
                Check(item->put_String(L""), "An account can't be changed");
            }
        }
    }
    transaction.Commit();
}

bool Accounts::Remove(const std::wstring& url) {
    Store::Transaction transaction(*m_store);
    std::vector<std::int64_t> cabs;
    {
        Store::Query query(*m_store, "SELECT cab FROM account WHERE url=?1");
        query.Bind(1, url);
        while (query.Step()) {
            cabs.push_back(query.Integer(0));
        }
    }
    Store::Query(*m_store, "DELETE FROM account WHERE url=?1").Bind(1, url).Run();
    for (const std::int64_t cab : cabs) {
        RemoveStoredCab(*m_store, cab);
    }
    transaction.Commit();
    return !cabs.empty();
}
