#include <algorithm>

#include "platform/errors.h"
#include "workbench/core/cab.h"
#include "workbench/core/cache_map.h"
#include "workbench/core/cache_map_core.h"
#include "workbench/core/errors.h"
#include "workbench/core/extensions.h"
#include "workbench/core/host_windows.h"
#include "workbench/core/main_loop.h"

namespace {

/// What a dialog answers that ended without a choice.
constexpr DWORD dialog_canceled = 2;

} // namespace

HRESULT AfsExtension::RegisterFileSys(KOV::IAFS_FileSys* file_system) {
    if (file_system == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        const std::scoped_lock hold(m_lock);
        m_providers.emplace_back(file_system);
        return S_OK;
    });
}

HRESULT AfsExtension::UnregisterFileSys(KOV::IAFS_FileSys* file_system) {
    std::vector<ComPtr<KOV::IAFS_FileSys>> removed;
    const std::scoped_lock hold(m_lock);
    for (ComPtr<KOV::IAFS_FileSys>& provider : m_providers) {
        if (provider.Get() == file_system) {
            removed.push_back(std::exchange(provider, nullptr));
        }
    }
    std::erase_if(m_providers, [](const auto& provider) { return provider.IsNull(); });
    return removed.empty() ? E_INVALIDARG : S_OK;
}

HRESULT AfsExtension::CreateFileCachesMap(KOV::IAFS_FileSys* file_system, KOV::IAFS_FileCachesMap** out_map) {
    if (out_map == nullptr) {
        return E_POINTER;
    }
    *out_map = nullptr;
    if (file_system == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        auto core = MakeCacheMapCore(m_folder, file_system);
        auto map = MakeCacheMap(core);
        if (map.IsNull()) {
            return E_OUTOFMEMORY;
        }
        const std::scoped_lock hold(m_lock);
        std::erase_if(m_maps, [](const auto& known) { return known.expired(); });
        m_maps.push_back(core);
        *out_map = map.Detach();
        return S_OK;
    });
}

KOV::IAFS_FileSys* AfsExtension::FirstProvider() const {
    const std::scoped_lock hold(m_lock);
    return m_providers.empty() ? nullptr : m_providers.front().Get();
}

void AfsExtension::DropAll() {
    std::vector<ComPtr<KOV::IAFS_FileSys>> providers;
    std::vector<std::weak_ptr<CacheMapCore>> maps;
    {
        const std::scoped_lock hold(m_lock);
        providers.swap(m_providers);
        maps.swap(m_maps);
    }
    for (const auto& known : maps) {
        if (const auto core = known.lock()) {
            DropCacheMap(*core);
        }
    }
}

HRESULT AfsExtension::CreateDlgDefaultParams(DWORD, KOV::IAUX_Cab** o_dialog_parameters) {
    if (o_dialog_parameters == nullptr) {
        return E_POINTER;
    }
    *o_dialog_parameters = nullptr;
    return AtBorder(nullptr, [&] {
        *o_dialog_parameters = MakeTransientCab().Detach();
        return *o_dialog_parameters != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT AfsExtension::ShowDefaultDlg(DWORD i_dialog_type, KOV::IAFS_Name* initial_folder, KOV::IAUX_Cab*, HWND i_parent_window,
                                     KOV::IAFS_NamesCollection** o_names, DWORD* o_user_choise) {
    if (o_names == nullptr || o_user_choise == nullptr) {
        return E_POINTER;
    }
    *o_names = nullptr;
    *o_user_choise = dialog_canceled;
    if (m_windows == nullptr) {
        return HRESULT_FROM_WIN32(1459);
    }
    return AtBorder(nullptr, [&] {
        return m_loop.Call(
            [&] {
                return AtBorder(nullptr, [&] {
                    return m_windows->ShowDefaultDialog(i_dialog_type, initial_folder, i_parent_window, o_names, o_user_choise);
                });
            },
            -1);
    });
}
