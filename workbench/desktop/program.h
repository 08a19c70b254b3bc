#pragma once

/// The program from start to end: the loop, the host with its module, the window.

#include <atomic>
#include <memory>

#include <QApplication>

#include "workbench/core/host_windows.h"
#include "workbench/desktop/boxes/desktop_questions.h"
#include "workbench/desktop/browser/register_browser.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/desk_window.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/options.h"
#include "workbench/desktop/services.h"
#include "workbench/desktop/windows/desktop_uix.h"
#include "workbench/desktop/windows/gallery.h"

/// Answers the first demand of a host with what the options or an address gave, all others by asking.
class DeskAccountPrompt final : public AccountPrompt {
public:
    DeskAccountPrompt(PreparedAccount& prepared, AccountPrompt& person) : m_prepared(prepared), m_person(person) {}
    std::optional<AccountAnswer> Ask(const AccountDemand& demand) override;

private:
    PreparedAccount& m_prepared;
    AccountPrompt& m_person;
};

/// Main thread, after `QApplication`.
class DeskProgram final : private HostWindows {
public:
    /// Loads the module and makes the window. Throws HostException.
    DeskProgram(QApplication& application, const DeskOptions& options);
    /// Ends what is left. When something is open still or under way, unsaved changes are offered at the next start.
    ~DeskProgram() override;

    DeskWindow& Window() noexcept { return *m_window; }
    /// Shows the window, offers what an earlier run left, and opens the documents of the command line; or the gallery alone, when
    /// the options ask for it.
    void Show();

private:
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override;
    HWND DialogOwner() override;
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override;
    HRESULT ShowDefaultDialog(DWORD dialog_type, KOV::IAFS_Name* initial_folder, HWND parent_window,
                              KOV::IAFS_NamesCollection** out_names, DWORD* out_user_choice) override;

    const DeskOptions m_options;
    MainLoop m_loop;
    MessagePump m_pump;
    const MainWindow m_main_window;
    DesktopQuestions m_questions;
    DesktopAccountPrompt m_person;
    PreparedAccount m_account;
    DeskAccountPrompt m_prompt;
    DeskSettings m_settings;
    ComPtr<DesktopUix> m_uix;
    ComPtr<Host> m_host;
    std::unique_ptr<Binds> m_binds;
    std::unique_ptr<DeskServices> m_services;
    BrowserRegistration m_browser;
    std::unique_ptr<DeskWindow> m_window;
    std::unique_ptr<Gallery> m_gallery;
    std::atomic<HWND> m_frame{nullptr};
};
