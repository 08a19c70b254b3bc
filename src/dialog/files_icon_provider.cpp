#include "dialog/files_icon_provider.h"

#include <utility>

#include "dialog/sort_key.h"
#include "frame/diagnostics/diagnostics.h"

namespace {

/// What the host is asked for an icon by extension: how large and how drawn is its own matter.
constexpr DWORD icon_flags = 3;

} // namespace

namespace Ui {

FilesIconProvider::FilesIconProvider(KOV::IUIX_Inst* ui)
    : m_ui(ui), m_folder_key(FoldedSortKey(folder_key)), m_parent_key(FoldedSortKey(parent_key)) {
    TRACE_ENTER();
}

HRESULT FilesIconProvider::MakeIcon(std::wstring extension, const std::string& key, KOV::IKOV_MultiSizeImage** out_icon) const {
    if (key == m_folder_key) {
        return m_ui->GetIcon(L"ico.folder", out_icon);
    }
    if (key == m_parent_key) {
        return m_ui->GetIcon(L"ico.folder.opened", out_icon);
    }
    return m_ui->CreateFileTypeIcon(extension.data(), icon_flags, out_icon);
}

HRESULT FilesIconProvider::GetIcon(KOV::IKOV_MultiSizeImage** out_icon, LPCWSTR extension) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(out_icon != nullptr, E_INVALIDARG);
    *out_icon = nullptr;
    const LPCWSTR named = extension == nullptr || *extension == 0 ? L"." : extension;
    const std::string key = FoldedSortKey(named);
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    if (const auto found = m_icons.find(key); found != m_icons.end()) {
        icon = found->second;
    } else {
        CHECK_OR_RETURN(MakeIcon(named, key, &icon));
        if (m_icons.size() < most_kept) {
            m_icons.emplace(key, icon);
        }
    }
    *out_icon = icon.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

} // namespace Ui
