#include "workbench/core/host.h"

#include <cstdio>

#include "platform/errors.h"
#include "platform/modules.h"
#include "platform/text.h"
#include "workbench/core/boxes.h"
#include "workbench/core/cab.h"
#include "workbench/core/cache_folder.h"
#include "workbench/core/cipher.h"
#include "workbench/core/commands.h"
#include "workbench/core/documents.h"
#include "workbench/core/event_server.h"
#include "workbench/core/extensions.h"
#include "workbench/core/file_types.h"
#include "workbench/core/host_windows.h"
#include "workbench/core/module_file.h"
#include "workbench/core/state_folder.h"
#include "workbench/core/strings.h"
#include "workbench/core/timers.h"

namespace {

constexpr ULONG MaxStringTable = ULONG{4} << 20;
/// The one kind of timer.
constexpr DWORD once = 1;
constexpr DWORD app_type_editor = 1;

void Check(HRESULT result, const std::string& what) {
    if (FAILED(result)) {
        throw HostException(result, what + ": " + Utf8FromWide(FailureText(result, nullptr)));
    }
}

std::string ReadStream(IStream& stream) {
    std::string bytes;
    char buffer[16384];
    for (;;) {
        ULONG count = 0;
        const HRESULT result = stream.Read(buffer, sizeof(buffer), &count);
        Check(result, "A stream can't be read");
        bytes.append(buffer, count);
        if (bytes.size() > MaxStringTable) {
            throw HostException(HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE), "A stream is too long");
        }
        if (count < sizeof(buffer)) {
            return bytes;
        }
    }
}

/// By way of the one function type to which all others may be converted and back.
template <class Function>
Function FunctionOf(FARPROC address) {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(address));
}

/// Makes a text for the caller.
template <class Text>
HRESULT GiveText(BSTR* out_text, Text&& text) {
    if (out_text == nullptr) {
        return E_POINTER;
    }
    *out_text = nullptr;
    return AtBorder(nullptr, [&] {
        *out_text = Bstr(std::wstring_view(text())).Detach();
        return *out_text != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

std::wstring SettingsName(KOV::IKOV_Plugin& plugin) {
    GUID id{};
    Check(plugin.get__GUID(&id), "The module can't tell what it is");
    char text[64];
    std::snprintf(text, sizeof(text), "plugin:{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1, id.Data2, id.Data3,
                  id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return WideFromUtf8(text);
}

} // namespace

Host::Host(HostOptions options, MainLoop& loop)
    : m_options(std::move(options)), m_loop(loop), m_strings(std::make_unique<Strings>()), m_name_ids(NameIds::OfProcess()),
      m_documents(std::make_unique<Documents>()), m_timers(std::make_unique<Timers>(loop)),
      m_events(MakeObject<EventServer>(m_name_ids)), m_commands(MakeObject<CommandCollection>(m_name_ids, loop)) {
    const std::filesystem::path folder = MakePrivateFolder(m_options.state_folder);
    m_store = std::make_shared<Store>(folder / "store.sqlite");
    m_cipher = std::make_shared<Cipher>(folder / "key");
    m_cache_folder = std::make_shared<CacheFolder>(folder, m_store);
    m_afs = MakeObject<AfsExtension>(m_cache_folder, m_loop, m_options.windows);
    m_aux = MakeAuxExtension();
    m_uix = m_options.windows != nullptr ? m_options.windows->MakeUixExtension(*this) : MakeUixExtension(m_commands);
}

// Sessions that outlive their module hold local copies, and these hold the sessions.
Host::~Host() {
    DropWhatTheModuleLeft();
    m_afs->DropAll();
}

void Host::Load() {
    CheckModuleIsWhole(m_options.module_path);
    m_module = LoadLibraryW(std::filesystem::absolute(m_options.module_path).wstring().c_str());
    if (m_module == nullptr) {
        throw HostException(HRESULT_FROM_WIN32(GetLastError()),
                            "The module can't be loaded: " + Utf8FromWide(GetModuleLoadError()));
    }
    m_loop.RefuseCalls(false);
    try {
        RunStartOfModule();
    } catch (...) {
        Unload();
        throw;
    }
}

void Host::RunStartOfModule() {
    const auto get_plugin = FunctionOf<KOVE_GetPluginFunction>(GetProcAddress(m_module, "KOVE_GetPlugin"));
    if (get_plugin == nullptr) {
        throw HostException(HRESULT_FROM_WIN32(GetLastError()),
                            "'" + m_options.module_path.string() + "' isn't a module for this program");
    }
    Check(get_plugin(nullptr, nullptr, &m_plugin), "The module gives no root object");
    Check(m_plugin->Setup(this), "The module's setup failed");
    Check(m_plugin->RegisterExts(), "The module can't register what it offers");
    Check(m_plugin->FinalizeRegistering(), "The module can't register what it offers");
    {
        Store::Transaction transaction(*m_store);
        Check(m_plugin->Init(), "The module's start failed");
        transaction.Commit();
    }
    if (Provider() == nullptr) {
        throw HostException(E_FAIL, "The module offers no file system");
    }
}

void Host::Unload() {
    if (m_module == nullptr) {
        return;
    }
    m_loop.RefuseCalls(true);
    // A command holds its handler, and that one the module's root.
    m_commands->Clear();
    if (!m_plugin.IsNull()) {
        m_plugin->Unload();
    }
    // Whatever of the module is still held goes before its code does.
    m_loop.Drain();
    DropWhatTheModuleLeft();
    m_afs->DropAll();
    {
        const std::scoped_lock hold(m_lock);
        m_info_bars.clear();
        m_settings.clear();
    }
    m_plugin.Release();
    FreeLibrary(std::exchange(m_module, nullptr));
}

void Host::DropWhatTheModuleLeft() {
    m_commands->Clear();
    m_timers->Clear();
    m_events->Clear();
    m_documents->Clear();
}

KOV::IAFS_FileSys* Host::Provider() const noexcept { return m_afs->FirstProvider(); }

ComPtr<KOV::IAUX_Cab> Host::Settings() {
    ComPtr<KOV::IAUX_Cab> settings;
    Check(GetPluginSettings(m_plugin, VARIANT_TRUE, &settings), "The settings can't be read");
    return settings;
}

Accounts Host::SavedAccounts() {
    if (Provider() == nullptr) {
        throw HostException(E_UNEXPECTED, "No module is loaded");
    }
    return {m_store, Provider()};
}

UnsavedCopies Host::Unsaved() { return UnsavedCopies(m_cache_folder); }

void Host::ObserveUploads(std::function<void(LONGLONG sent)> observer) { m_cache_folder->ObserveUploads(std::move(observer)); }

std::vector<InfoBarKind> Host::InfoBars() {
    const std::scoped_lock hold(m_lock);
    return m_info_bars;
}

DWORD Host::IdOfName(std::wstring_view name) { return *m_name_ids.Find(name, true); }

std::wstring Host::Resolve(const std::wstring& text) const { return m_strings->Resolve(text); }

HRESULT Host::GetExtension(LPCWSTR name, IUnknown** out_extension) {
    if (out_extension == nullptr || name == nullptr) {
        return E_POINTER;
    }
    *out_extension = nullptr;
    const std::wstring_view wanted = name;
    if (wanted == L"AFS") {
        *out_extension = ComPtr<AfsExtension>(m_afs).Detach();
    } else if (wanted == L"AUX") {
        *out_extension = ComPtr<KOV::IAUX_Inst>(m_aux).Detach();
    } else if (wanted == L"UIX") {
        *out_extension = ComPtr<KOV::IUIX_Inst>(m_uix).Detach();
    }
    return *out_extension != nullptr ? S_OK : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
}

HRESULT Host::LoadLocalizationStream(IStream* stream) {
    if (stream == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        m_strings->Load(ReadStream(*stream));
        return S_OK;
    });
}

HRESULT Host::GetLocalStr(LPCWSTR key, BSTR* out_text) {
    if (key == nullptr || out_text == nullptr) {
        return E_POINTER;
    }
    *out_text = nullptr;
    return AtBorder(nullptr, [&] {
        const auto text = m_strings->Text(key);
        if (!text) {
            return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
        }
        *out_text = Bstr(std::wstring_view(*text)).Detach();
        return *out_text != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT Host::Str2ID(LPCWSTR name, VARIANT_BOOL create, DWORD* out_id) {
    if (name == nullptr || out_id == nullptr) {
        return E_POINTER;
    }
    *out_id = 0;
    return AtBorder(nullptr, [&] {
        const auto id = m_name_ids.Find(name, create != VARIANT_FALSE);
        *out_id = id.value_or(0);
        return id ? S_OK : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    });
}

HRESULT Host::RegisterInfoBar(LPCWSTR name, LPCWSTR title_id, LPCWSTR description_id, LONG priority, DWORD color,
                              KOV::IKOV_MultiSizeImage* icon) {
    if (name == nullptr || title_id == nullptr || description_id == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        InfoBarKind kind{name, m_strings->Resolve(title_id), m_strings->Resolve(description_id), priority, color, icon};
        const std::scoped_lock hold(m_lock);
        m_info_bars.push_back(std::move(kind));
        return S_OK;
    });
}

HRESULT Host::GetPluginSettings(KOV::IKOV_Plugin* plugin, VARIANT_BOOL create, KOV::IAUX_Cab** out_settings) {
    if (out_settings == nullptr) {
        return E_POINTER;
    }
    *out_settings = nullptr;
    if (plugin == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        const std::wstring name = SettingsName(*plugin);
        {
            const std::scoped_lock hold(m_lock);
            if (const auto known = m_settings.find(name); known != m_settings.end()) {
                known->second.CopyTo(out_settings);
                return S_OK;
            }
        }
        // Outside the lock: whoever holds the store may ask for the settings meanwhile.
        const auto root = FindStoredCab(*m_store, name, create != VARIANT_FALSE);
        if (!root) {
            return S_OK;
        }
        auto settings = MakeCab(MakeStoredCabStorage(m_store), *root);
        const std::scoped_lock hold(m_lock);
        m_settings.try_emplace(name, settings).first->second.CopyTo(out_settings);
        return *out_settings != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT Host::GetCryptKey(KOV::IKOV_Plugin*, VARIANT_BOOL, KOV::IKOV_CryptKey** out_key) {
    if (out_key == nullptr) {
        return E_POINTER;
    }
    *out_key = MakeCryptKey(m_cipher).Detach();
    return *out_key != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Host::CreateStdBindContext(KOV::IAFS_BindContext** out_context) {
    if (out_context == nullptr) {
        return E_POINTER;
    }
    *out_context = MakeBindContext(m_options.account_prompt).Detach();
    return *out_context != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Host::GetDlgOwnerWnd(DWORD, HWND* out_window) {
    if (out_window == nullptr) {
        return E_POINTER;
    }
    *out_window = m_options.windows != nullptr ? m_options.windows->DialogOwner() : nullptr;
    return S_OK;
}

HRESULT Host::ShowMsgBox(const KOV::MessageBoxParameters* parameters, DWORD* out_check_state, DWORD* out_radio_id,
                         BSTR* out_edit_text, DWORD* out_button_id) {
    if (parameters == nullptr || out_button_id == nullptr) {
        return E_POINTER;
    }
    *out_button_id = 0;
    return AtBorder(nullptr, [&] {
        const TranslatedBox translated = ReadBoxRecord(*parameters, *m_strings, m_name_ids);
        BoxAnswer answer = UnansweredBox(translated.box);
        if (m_options.questions != nullptr) {
            answer = m_options.questions->Ask(translated.box);
        }
        BoxResults results = WriteBoxAnswer(translated, answer);
        if (out_check_state != nullptr) {
            *out_check_state = results.check_state;
        }
        if (out_radio_id != nullptr) {
            *out_radio_id = results.radio_id;
        }
        if (out_edit_text != nullptr) {
            *out_edit_text = results.edit_text.Detach();
        }
        *out_button_id = results.button_id;
        return S_OK;
    });
}

HRESULT Host::ThreadSafeCall(KOV::IKOV_ThreadSafeCallback* callback, LONG timeout) {
    if (callback == nullptr) {
        return E_INVALIDARG;
    }
    const ComPtr<KOV::IKOV_ThreadSafeCallback> held = callback;
    return AtBorder(nullptr, [&] { return m_loop.Call([held] { return held->OnCallback(); }, timeout); });
}

HRESULT Host::FindDocumentOfFile(KOV::IAFS_File* file, KOV::IKOV_Document** out_document) {
    if (out_document == nullptr) {
        return E_POINTER;
    }
    *out_document = nullptr;
    return AtBorder(nullptr, [&] {
        *out_document = m_documents->Find(file).Detach();
        return S_OK;
    });
}

HRESULT Host::ReloadDocument(KOV::IKOV_Document* document, IUnknown*, DWORD mode, IUnknown*) {
    return AtBorder(nullptr, [&] { return m_documents->ReloadDocument(document, mode); });
}

HRESULT Host::get_EventServer(KOV::IKOV_EventServer** out_server) {
    if (out_server == nullptr) {
        return E_POINTER;
    }
    *out_server = ComPtr<EventServer>(m_events).Detach();
    return S_OK;
}

HRESULT Host::StartTimer(KOV::IKOV_TimerHandler* handler, DWORD milliseconds, DWORD kind, DWORD* out_timer_id) {
    if (out_timer_id == nullptr) {
        return E_POINTER;
    }
    if (handler == nullptr || kind != once) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        m_timers->Start(handler, milliseconds, out_timer_id);
        return S_OK;
    });
}

HRESULT Host::StopTimer(DWORD timer_id) { return m_timers->Stop(timer_id) ? S_OK : S_FALSE; }

HRESULT Host::get_ProgressMon(KOV::IKOV_ProgressMon** out_monitor) {
    if (out_monitor == nullptr) {
        return E_POINTER;
    }
    *out_monitor = nullptr;
    return AtBorder(nullptr, [&] {
        if (m_options.windows != nullptr) {
            *out_monitor = m_options.windows->MakeProgressMonitor().Detach();
        }
        return S_OK;
    });
}

HRESULT Host::get_DocsCount(ULONG* out_count) {
    if (out_count == nullptr) {
        return E_POINTER;
    }
    *out_count = m_documents->Count();
    return S_OK;
}

HRESULT Host::get_Doc(ULONG index, KOV::IKOV_Document** out_document) {
    if (out_document == nullptr) {
        return E_POINTER;
    }
    *out_document = m_documents->At(index).Detach();
    return *out_document != nullptr ? S_OK : E_INVALIDARG;
}

HRESULT Host::GetDocViewFromUIObj(KOV::IUIX_Obj* object, VARIANT_BOOL, KOV::IKOV_DocumentView** out_view) {
    if (out_view == nullptr) {
        return E_POINTER;
    }
    *out_view = nullptr;
    if (object == nullptr) {
        return E_INVALIDARG;
    }
    if (FAILED(object->_QueryImpl(out_view))) {
        *out_view = nullptr;
    }
    return S_OK;
}

HRESULT Host::GetFileFilter(LPCWSTR token, LONG mode, BSTR* out_filter) {
    if (token == nullptr) {
        return E_INVALIDARG;
    }
    return GiveText(out_filter, [&] { return FileFilterOf(token, mode != 0); });
}

HRESULT Host::FormatFileSize(ULONGLONG size, LONG unit, BSTR* out_text) {
    return GiveText(out_text, [&] { return FileSizeText(size, unit); });
}

HRESULT Host::get_AppType(DWORD* out_type) {
    if (out_type == nullptr) {
        return E_POINTER;
    }
    *out_type = app_type_editor;
    return S_OK;
}
