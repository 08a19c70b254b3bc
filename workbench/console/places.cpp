#include "workbench/console/places.h"

#include "platform/bstr.h"
#include "platform/text.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"

ComPtr<KOV::IAFS_Name> Binder::Bind(const Location& location) {
    UseAccountOf(location);
    return BindUrl(m_access, location.url);
}

ComPtr<KOV::IAFS_Name> CommandLinePlaces::Find(const std::string& text) {
    const Location location = ParseLocation(text);
    if (m_root.IsNull()) {
        m_root = m_binder.Bind(location);
    }
    return NameOf(m_binder.Access(), location.url, m_root);
}

void ScriptPlaces::Bind(const std::string& url) {
    const Location location = ParseLocation(url);
    const ComPtr<KOV::IAFS_Name> site = m_binder.Bind(location);
    m_root = NameOf(m_binder.Access(), location.url, site);
}

ComPtr<KOV::IAFS_Name> ScriptPlaces::Find(const std::string& text) {
    if (m_root.IsNull()) {
        throw UsageError("nothing is bound yet: a script begins with 'bind URL'");
    }
    if (IsAbsoluteUrl(text)) {
        return NameOf(m_binder.Access(), ParseLocation(text).url, m_root);
    }
    return text.empty() || text == "." ? m_root : NameOf(m_binder.Access(), WideFromUtf8(text), m_root);
}
