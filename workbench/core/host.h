#pragma once

/// The stand-in host: loads the module and answers what it asks. Begin here.
///
///     MainLoop loop;
///     ComPtr<Host> host = MakeObject<Host>(HostOptions{...}, loop);
///     host->Load();
///     host->Provider()->BindToObject(...);
///     host->Unload();

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/host_interfaces.h"
#include "host/object_bases.h"
#include "workbench/core/accounts.h"
#include "workbench/core/errors.h"
#include "workbench/core/main_loop.h"
#include "workbench/core/questions.h"
#include "workbench/core/unsaved_copies.h"
#include "workbench/core/value_objects.h"

class AfsExtension;
class CacheFolder;
class Cipher;
class CommandCollection;
class Documents;
class EventServer;
class NameIds;
class Store;
class Strings;
class Timers;

class HostWindows;

struct HostOptions {
    /// Made with mode 0700 when it isn't there.
    std::filesystem::path state_folder;
    std::filesystem::path module_path;
    /// Both outlive the host.
    Questions* questions = nullptr;
    AccountPrompt* account_prompt = nullptr;
    /// Null for a host without windows.
    HostWindows* windows = nullptr;
};

/// A kind of info bar that the module made known.
struct InfoBarKind {
    std::wstring name;
    std::wstring title;
    std::wstring description;
    LONG priority = 0;
    DWORD color = 0;
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
};

class Host final : public cCoClassUnknownT<KOV::IKOV_Inst> {
public:
    /// Opens the state folder and its store. Throws `HostException`. `loop` outlives the host.
    Host(HostOptions options, MainLoop& loop);

    /// Loads the module and runs its start, up to `Init`. Throws `HostException`; what was loaded is unloaded again then. Main
    /// thread.
    void Load();
    /// Deletes all commands, ends the module and unloads it; calls from other threads to the main thread end with `E_ABORT` from
    /// then on. All objects of the module that the caller holds are released before. Harmless when nothing is loaded. Main
    /// thread.
    void Unload();

    /// The provider that the module registered; null when nothing is loaded.
    KOV::IAFS_FileSys* Provider() const noexcept;
    KOV::IKOV_Plugin* Plugin() const noexcept { return m_plugin; }
    /// The module's settings, as `GetPluginSettings` gives them to the module itself.
    ComPtr<KOV::IAUX_Cab> Settings();
    /// The saved places of the provider. Throws when nothing is loaded.
    Accounts SavedAccounts();
    UnsavedCopies Unsaved();
    /// Is told while the calling thread sends a document how many bytes are gone, on that thread; null ends it.
    void ObserveUploads(std::function<void(LONGLONG sent)> observer);
    Documents& OpenDocuments() noexcept { return *m_documents; }
    CommandCollection& Commands() noexcept { return *m_commands; }
    /// See document_life.h for what is raised when.
    EventServer& Events() noexcept { return *m_events; }
    /// The number of a name, which is made when it is new. Any thread.
    DWORD IdOfName(std::wstring_view name);
    Store& StateStore() noexcept { return *m_store; }
    MainLoop& Loop() noexcept { return m_loop; }
    std::vector<InfoBarKind> InfoBars();

    /// The text behind "$$$.key", or the text itself.
    std::wstring Resolve(const std::wstring& text) const;

    HRESULT GetExtension(LPCWSTR name, IUnknown** out_extension) override;
    HRESULT LoadLocalizationStream(IStream* stream) override;
    HRESULT GetLocalStr(LPCWSTR key, BSTR* out_text) override;
    HRESULT Str2ID(LPCWSTR name, VARIANT_BOOL create, DWORD* out_id) override;
    HRESULT RegisterInfoBar(LPCWSTR name, LPCWSTR title_id, LPCWSTR description_id, LONG priority, DWORD color,
                            KOV::IKOV_MultiSizeImage* icon) override;
    HRESULT GetPluginSettings(KOV::IKOV_Plugin* plugin, VARIANT_BOOL create, KOV::IAUX_Cab** out_settings) override;
    HRESULT GetCryptKey(KOV::IKOV_Plugin* plugin, VARIANT_BOOL reserved, KOV::IKOV_CryptKey** out_key) override;
    HRESULT CreateStdBindContext(KOV::IAFS_BindContext** out_context) override;
    HRESULT GetDlgOwnerWnd(DWORD reserved, HWND* out_window) override;
    HRESULT ShowMsgBox(const KOV::MessageBoxParameters* parameters, DWORD* out_check_state, DWORD* out_radio_id,
                       BSTR* out_edit_text, DWORD* out_button_id) override;
    HRESULT ThreadSafeCall(KOV::IKOV_ThreadSafeCallback* callback, LONG timeout) override;
    HRESULT FindDocumentOfFile(KOV::IAFS_File* file, KOV::IKOV_Document** out_document) override;
    HRESULT ReloadDocument(KOV::IKOV_Document* document, IUnknown* reserved, DWORD mode, IUnknown* parameters) override;
    HRESULT get_EventServer(KOV::IKOV_EventServer** out_server) override;
    HRESULT StartTimer(KOV::IKOV_TimerHandler* handler, DWORD milliseconds, DWORD kind, DWORD* out_timer_id) override;
    HRESULT StopTimer(DWORD timer_id) override;
    HRESULT get_ProgressMon(KOV::IKOV_ProgressMon** out_monitor) override;
    HRESULT get_DocsCount(ULONG* out_count) override;
    HRESULT get_Doc(ULONG index, KOV::IKOV_Document** out_document) override;
    HRESULT GetDocViewFromUIObj(KOV::IUIX_Obj* object, VARIANT_BOOL reserved, KOV::IKOV_DocumentView** out_view) override;
    HRESULT GetFileFilter(LPCWSTR token, LONG mode, BSTR* out_filter) override;
    HRESULT FormatFileSize(ULONGLONG size, LONG unit, BSTR* out_text) override;
    HRESULT get_AppType(DWORD* out_type) override;

private:
    ~Host() override;

    void RunStartOfModule();
    void DropWhatTheModuleLeft();

    const HostOptions m_options;
    MainLoop& m_loop;
    std::shared_ptr<Store> m_store;
    std::shared_ptr<CacheFolder> m_cache_folder;
    std::shared_ptr<Cipher> m_cipher;
    std::unique_ptr<Strings> m_strings;
    NameIds& m_name_ids;
    std::unique_ptr<Documents> m_documents;
    std::unique_ptr<Timers> m_timers;
    ComPtr<EventServer> m_events;
    ComPtr<CommandCollection> m_commands;
    ComPtr<AfsExtension> m_afs;
    ComPtr<KOV::IAUX_Inst> m_aux;
    ComPtr<KOV::IUIX_Inst> m_uix;
    std::mutex m_lock;
    std::vector<InfoBarKind> m_info_bars;
    /// By the module's name. One cab object a module: it holds the schema that the module gave it.
    std::map<std::wstring, ComPtr<KOV::IAUX_Cab>> m_settings;
    ComPtr<KOV::IKOV_Plugin> m_plugin;
    void* m_module = nullptr;
};
