#pragma once

#include <string>
#include <vector>

#include "host/user_interface.h"

namespace Ui {

/// Icons of folders and of types of files, each asked of the host once. Main thread.
class FilesIconProvider {
public:
    static constexpr LPCWSTR folder_key = L"./";
    static constexpr LPCWSTR parent_key = L"../";

    explicit FilesIconProvider(KOV::IUIX_Inst* ui);

    /// A counted reference, null where the host has no such icon. `extension` begins with its dot, or is one of the two keys
    /// above; null and empty stand for files without. Letter case doesn't count. A failure isn't remembered.
    HRESULT GetIcon(KOV::IKOV_MultiSizeImage** out_icon, LPCWSTR extension);

private:
    struct Entry {
        std::wstring key;
        ComPtr<KOV::IKOV_MultiSizeImage> icon;
    };

    ComPtr<KOV::IUIX_Inst> m_ui;
    std::vector<Entry> m_icons;
};

} // namespace Ui
