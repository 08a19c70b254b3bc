#pragma once

#include <string>
#include <unordered_map>

#include "host/user_interface.h"

namespace Ui {

/// Icons of folders and of types of files, each asked of the host once, as long as they are fewer than `most_kept`. Main thread.
class FilesIconProvider {
public:
    static constexpr LPCWSTR folder_key = L"./";
    static constexpr LPCWSTR parent_key = L"../";
    /// A folder full of names with dots must not fill the memory for the rest of the module's life.
    static constexpr std::size_t most_kept = 1024;

    explicit FilesIconProvider(KOV::IUIX_Inst* ui);

    /// A counted reference, null where the host has no such icon. `extension` begins with its dot, or is one of the two keys
    /// above; null and empty stand for files without. Letter case doesn't count. A failure isn't remembered.
    HRESULT GetIcon(KOV::IKOV_MultiSizeImage** out_icon, LPCWSTR extension);

private:
    HRESULT MakeIcon(std::wstring extension, const std::string& key, KOV::IKOV_MultiSizeImage** out_icon) const;

    ComPtr<KOV::IUIX_Inst> m_ui;
    const std::string m_folder_key;
    const std::string m_parent_key;
    /// By folded keys.
    std::unordered_map<std::string, ComPtr<KOV::IKOV_MultiSizeImage>> m_icons;
};

} // namespace Ui
