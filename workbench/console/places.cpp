#include "workbench/console/places.h"

#include "platform/bstr.h"
#include "platform/text.h"
#include "workbench/console/failure.h"
#include "workbench/console/usage_error.h"

namespace {

ComPtr<KOV::IAFS_Name> NameOf(KOV::IAFS_FileSys* provider, const std::wstring& text, KOV::IAFS_Name* parent) {
    ComPtr<KOV::IAFS_Name> name;
    Check(provider->StringToName(text.c_str(), 0, parent, &name));
    return name;
}

} // namespace

ComPtr<KOV::IAFS_Name> Binder::Bind(const Location& location) {
    UseAccountOf(location);
    const std::optional<SavedAccount> place = m_host.SavedAccounts().Find(location.url);
    return place ? BindSavedPlace(*place) : BindUrl(location.url);
}

ComPtr<KOV::IAFS_Name> Binder::BindSavedPlace(const SavedAccount& place) {
    ComPtr<KOV::IAFS_Name> root;
    Checked(
        [&](KOV::IString* details) { return Provider()->BindToObject(place.data.Get(), nullptr, 0, details, m_cancel, &root); });
    // What the sign-in ended with stands in the account now.
    m_host.SavedAccounts().Update(place.id, place.data);
    return root;
}

ComPtr<KOV::IAFS_Name> Binder::BindUrl(const std::wstring& url) {
    ComPtr<KOV::IAFS_BindContext> context;
    Check(m_host.CreateStdBindContext(&context));
    ComPtr<KOV::IAFS_Name> root;
    Checked([&](KOV::IString* details) { return Provider()->BindToPath(url.c_str(), context, 0, details, m_cancel, &root); });
    return root;
}

ComPtr<KOV::IAFS_Name> CommandLinePlaces::Find(const std::string& text) {
    const Location location = ParseLocation(text);
    if (m_root.IsNull()) {
        m_root = m_binder.Bind(location);
    }
    return NameOf(m_binder.Provider(), location.url, m_root);
}

void ScriptPlaces::Bind(const std::string& url) {
    const Location location = ParseLocation(url);
    const ComPtr<KOV::IAFS_Name> site = m_binder.Bind(location);
    m_root = NameOf(m_binder.Provider(), location.url, site);
}

ComPtr<KOV::IAFS_Name> ScriptPlaces::Find(const std::string& text) {
    if (m_root.IsNull()) {
        throw UsageError("nothing is bound yet: a script begins with 'bind URL'");
    }
    if (IsAbsoluteUrl(text)) {
        return NameOf(m_binder.Provider(), ParseLocation(text).url, m_root);
    }
    return text.empty() || text == "." ? m_root : NameOf(m_binder.Provider(), WideFromUtf8(text), m_root);
}

std::wstring UrlOf(KOV::IAFS_FileSys* provider, KOV::IAFS_Name* name) {
    Bstr text;
    Check(provider->NameToString(name, 0, nullptr, &text));
    return text.Text();
}
