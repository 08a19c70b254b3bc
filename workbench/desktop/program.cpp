#include "workbench/desktop/program.h"

#include <QEvent>
#include <QFile>
#include <QTimer>

#include "platform/wininet_settings.h"
#include "workbench/core/state_folder.h"
#include "workbench/desktop/recovery_window.h"
#include "workbench/desktop/theme/color_scheme.h"
#include "workbench/desktop/windows/layout.h"
#include "workbench/desktop/windows/module_layouts.h"

namespace {

QString PathText(const std::filesystem::path& path) { return QFile::decodeName(path.c_str()); }

} // namespace

std::optional<AccountAnswer> DeskAccountPrompt::Ask(const AccountDemand& demand) {
    std::optional<AccountAnswer> prepared = m_prepared.AnswerTo(demand);
    return prepared ? prepared : m_person.Ask(demand);
}

DeskProgram::DeskProgram(QApplication& application, const DeskOptions& options)
    : m_options(options), m_pump(m_loop), m_main_window([this] { return m_window.get(); }), m_questions(m_loop, m_main_window),
      m_person(m_loop, m_main_window), m_account(options.user, options.password_file), m_prompt(m_account, m_person),
      m_settings(MakePrivateFolder(options.state)),
      m_host(MakeObject<Host>(HostOptions{options.state, options.module, &m_questions, &m_prompt, this}, m_loop)),
      m_binds(std::make_unique<Binds>(m_loop)),
      m_services(std::make_unique<DeskServices>(DeskServices{*m_host, m_loop, m_questions, m_account, *m_binds, m_settings,
                                                             m_uix->Around(), m_uix->Places(), options.state / "documents",
                                                             m_main_window})),
      m_browser({WidgetOf, options.connect_to, options.certificate_file.value_or(std::filesystem::path()).string()}) {
    if (options.has_ribbon) {
        m_settings.SetRibbon(*options.has_ribbon);
    }
    ApplyColorScheme(application, m_settings.Colors());
    wininet::SetCookieFile((options.state / "cookies").string());
    m_host->Load();
    const std::span<const BYTE> layouts = ModuleLayouts(m_host->Plugin());
    (void)ReadLayouts(layouts.data(), layouts.size()); // a broken one is told now, not when somebody opens its window
    m_window = std::make_unique<DeskWindow>(*m_services);
    m_frame = m_window->Handle();
    m_window->BuildLayout();
}

DeskProgram::~DeskProgram() {
    m_frame = nullptr;
    m_gallery.reset();
    // Workers that wait for this thread would be waited for by it.
    m_loop.RefuseCalls(true);
    wininet::AbortTransfers(true);
    m_binds->End();
    m_window.reset();
    // Closed documents wait for the loop to be deleted.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_binds->Clear();
    m_host->Unload();
    wininet::AbortTransfers(false);
}

void DeskProgram::Show() {
    if (m_options.shows_gallery) {
        m_gallery = std::make_unique<Gallery>(*m_uix.Get(), ModuleLayouts(m_host->Plugin()));
        QApplication::setQuitOnLastWindowClosed(true);
        m_gallery->show();
        return;
    }
    m_window->show();
    QTimer::singleShot(0, m_window.get(), [this] {
        OfferLeftDocuments(*m_services, m_window->Place());
        for (const std::string& document : m_options.documents) {
            m_window->Place().Open(QString::fromStdString(document));
        }
    });
}

ComPtr<KOV::IUIX_Inst> DeskProgram::MakeUixExtension(Host& host) {
    m_uix = MakeObject<DesktopUix>(host, host.Commands(), PathText(m_options.state / "windows.ini"));
    return m_uix;
}

HWND DeskProgram::DialogOwner() {
    const HWND modal = TopModalWindow();
    return modal != nullptr ? modal : m_frame.load();
}

ComPtr<KOV::IKOV_ProgressMon> DeskProgram::MakeProgressMonitor() { return MakeObject<ProgressMonitor>(m_loop, m_main_window); }

HRESULT DeskProgram::ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) {
    // The program opens and saves through the provider's own dialog, and nobody picks a folder.
    return E_NOTIMPL;
}
