#include "dialog/files_icon_provider.h"

#include <algorithm>

#include "frame/diagnostics/diagnostics.h"
#include "platform/text.h"

namespace {

/// What the host is asked for an icon by extension: how large and how drawn is its own matter.
constexpr DWORD icon_flags = 3;

bool SameKey(const std::wstring& a, LPCWSTR b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.c_str(), -1, b, -1) == CSTR_EQUAL;
}

HRESULT MakeIcon(KOV::IUIX_Inst* ui, std::wstring extension, KOV::IKOV_MultiSizeImage** out_icon) {
    if (extension == Ui::FilesIconProvider::folder_key) {
        return ui->GetIcon(L"ico.folder", out_icon);
    }
    if (extension == Ui::FilesIconProvider::parent_key) {
        return ui->GetIcon(L"ico.folder.opened", out_icon);
    }
    return ui->CreateFileTypeIcon(extension.data(), icon_flags, out_icon);
}

} // namespace

namespace Ui {

FilesIconProvider::FilesIconProvider(KOV::IUIX_Inst* ui) : m_ui(ui) { TRACE_ENTER(); }

HRESULT FilesIconProvider::GetIcon(KOV::IKOV_MultiSizeImage** out_icon, LPCWSTR extension) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_icon != nullptr, E_INVALIDARG);
    *out_icon = nullptr;
    const LPCWSTR key = extension == nullptr || *extension == 0 ? L"." : extension;
    auto found = std::find_if(m_icons.begin(), m_icons.end(), [&](const Entry& entry) { return SameKey(entry.key, key); });
    if (found == m_icons.end()) {
        ComPtr<KOV::IKOV_MultiSizeImage> icon;
        CHECK_OR_RETURN(MakeIcon(m_ui, key, &icon));
        found = m_icons.insert(m_icons.end(), {key, std::move(icon)});
    }
    found->icon.CopyTo(out_icon);
    TRACE_RETURN(S_OK);
}

} // namespace Ui
