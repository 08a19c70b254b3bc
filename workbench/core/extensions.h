#pragma once

/// The host's extensions and small services behind `IKOV_Inst`.

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/auxiliary.h"
#include "host/file_system.h"
#include "host/instance.h"
#include "host/object_bases.h"
#include "host/user_interface.h"
#include "workbench/core/cache_folder.h"
#include "workbench/core/cipher.h"
#include "workbench/core/questions.h"

class CacheMapCore;
class CommandCollection;
class HostWindows;
class MainLoop;

/// "AFS": the providers and the caches of their sessions. Any thread.
class AfsExtension final : public cCoClassUnknownT<KOV::IAFS_Inst> {
public:
    /// `loop` and `windows`, which is null for a host without windows, outlive the extension.
    AfsExtension(std::shared_ptr<CacheFolder> folder, MainLoop& loop, HostWindows* windows)
        : m_folder(std::move(folder)), m_loop(loop), m_windows(windows) {}

    HRESULT RegisterFileSys(KOV::IAFS_FileSys* file_system) override;
    HRESULT UnregisterFileSys(KOV::IAFS_FileSys* file_system) override;
    HRESULT CreateFileCachesMap(KOV::IAFS_FileSys* file_system, KOV::IAFS_FileCachesMap** out_map) override;
    HRESULT CreateDlgDefaultParams(DWORD i_dialog_type, KOV::IAUX_Cab** o_dialog_parameters) override;
    HRESULT ShowDefaultDlg(DWORD i_dialog_type, KOV::IAFS_Name* initial_folder, KOV::IAUX_Cab* dialog_parameters,
                           HWND i_parent_window, KOV::IAFS_NamesCollection** o_names, DWORD* o_user_choise) override;

    /// The first one that is registered, uncounted; null when there is none.
    KOV::IAFS_FileSys* FirstProvider() const;
    /// Releases all that is held of the module.
    void DropAll();

private:
    const std::shared_ptr<CacheFolder> m_folder;
    MainLoop& m_loop;
    HostWindows* const m_windows;
    mutable std::mutex m_lock;
    std::vector<ComPtr<KOV::IAFS_FileSys>> m_providers;
    std::vector<std::weak_ptr<CacheMapCore>> m_maps;
};

/// "AUX". Any thread.
ComPtr<KOV::IAUX_Inst> MakeAuxExtension();
/// "UIX" of a host without windows. Any thread.
ComPtr<KOV::IUIX_Inst> MakeUixExtension(CommandCollection* commands);

/// A key object on the cipher of the state folder.
ComPtr<KOV::IKOV_CryptKey> MakeCryptKey(std::shared_ptr<Cipher> cipher);

/// Asks through `prompt`, which is null for a host without a user and outlives the context. Without leave to show something
/// the host knows no account: one that the user gave for a demand isn't handed to every server that is looked at.
ComPtr<KOV::IAFS_BindContext> MakeBindContext(AccountPrompt* prompt);
