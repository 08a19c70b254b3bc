#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QUrl>

#include "platform/text.h"
#include "workbench/core/program_paths.h"
#include "workbench/desktop/ask.h"
#include "workbench/desktop/desk_settings.h"
#include "workbench/desktop/desk_window.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/pages/appearance_page.h"
#include "workbench/desktop/pages/preferences_window.h"
#include "workbench/desktop/places_window.h"
#include "workbench/desktop/text_dialog.h"
#include "workbench/desktop/theme/icons.h"

namespace {

std::string UserName() {
    const QString name = qEnvironmentVariable("USER", qEnvironmentVariable("LOGNAME"));
    return name.toStdString();
}

} // namespace

std::vector<HostCommand> DeskWindow::CommandTable() {
    const auto can_save = WithTab([](DocumentTab& tab) { return !tab.IsBusy() && (tab.IsModified() || tab.Place().isEmpty()); });
    const auto can_close = WithTab([](DocumentTab& tab) { return !tab.IsBusy(); });
    const auto can_undo = WithTab([](DocumentTab& tab) { return tab.MayUndo() && tab.Pdf().CanUndo(); });
    const auto can_redo = WithTab([](DocumentTab& tab) { return tab.MayUndo() && tab.Pdf().CanRedo(); });
    const auto has_pages = WithTab([](DocumentTab& tab) { return tab.Pages().PageCount() > 0; });
    const auto can_delete = WithTab([](DocumentTab& tab) { return tab.MayChangePages() && tab.Pages().PageCount() > 1; });
    using Key = QKeySequence;
    return {
        {L"cmd.open", L"&Open\u2026", L"Open a document of this computer", "open", Key::Open, [this] { OpenFiles(); }, {}},
        {L"cmd.openFromURL",
         L"&Address\u2026",
         L"Open a document by its address",
         "cmd.openFromURL",
         {},
         [this] { OpenAddress(); },
         {}},
        {L"cmd.save", L"&Save", L"Save the document where it lies", "save", Key::Save,
         [this] { m_workplace.Save(*Active(), [](bool) {}); }, can_save},
        {L"cmd.saveAs", L"Save &As\u2026", L"Save the document on this computer", "saveAs", Key::SaveAs,
         [this] { m_workplace.SaveAs(*Active(), [](bool) {}); }, can_close},
        {L"cmd.places", L"&Places\u2026", L"Saved places on servers", "places", {}, [this] { ShowPlaces(); }, {}},
        {L"cmd.preferences", L"Pr&eferences\u2026", L"Settings", "settings", Key::Preferences, [this] { ShowPreferences(); }, {}},
        {L"cmd.close", L"&Close", L"Close the document", "close", Key::Close,
         [this] { m_workplace.Close(*Active(), [](bool) {}); }, can_close},
        {L"cmd.quit", L"&Quit", L"Close all documents and end", nullptr, Key("Ctrl+Q"), [this] { close(); }, {}},
        {L"cmd.undo", L"&Undo", L"Take back the last change", "undo", Key::Undo,
         [this] { Edit([](PdfDocument& pdf) { pdf.Undo(); }); }, can_undo},
        {L"cmd.redo", L"&Redo", L"Make the change again", "redo", Key::Redo,
         [this] { Edit([](PdfDocument& pdf) { pdf.Redo(); }); }, can_redo},
        {L"cmd.rotatePage", L"R&otate Page", L"Turn the page clockwise", "rotate", Key("Ctrl+R"),
         [this] { ChangePage([](int page) {
                      return RotatePage{page, 90};
                  }); }, WithTab(&DocumentTab::MayChangePages)},
        {L"cmd.deletePage", L"&Delete Page", L"Delete the page", "deletePage", Key("Ctrl+Del"),
         [this] { ChangePage([](int page) { return DeletePage{page}; }); }, can_delete},
        {L"cmd.addNote", L"Add &Note\u2026", L"Put a note on the page", "note", Key("Ctrl+M"), [this] { AddNoteToPage(); },
         WithTab(&DocumentTab::MayAnnotate)},
        {L"cmd.zoomIn", L"Zoom &In", L"Show the pages larger", "zoomIn", Key::ZoomIn, [this] { Active()->Pages().ZoomIn(); },
         has_pages},
        {L"cmd.zoomOut", L"Zoom &Out", L"Show the pages smaller", "zoomOut", Key::ZoomOut,
         [this] { Active()->Pages().ZoomOut(); }, has_pages},
        {L"cmd.fitWidth", L"&Fit Width", L"Show whole lines", nullptr, Key("Ctrl+0"), [this] { Active()->Pages().FitWidth(); },
         has_pages},
        {L"cmd.pageUp", L"&Previous Page", L"Go to the page before", "pageUp", Key("Ctrl+Up"), [this] { TurnPage(-1); },
         has_pages},
        {L"cmd.pageDown", L"&Next Page", L"Go to the page after", "pageDown", Key("Ctrl+Down"), [this] { TurnPage(1); },
         has_pages},
        {L"cmd.logFolder",
         L"&Log Folder",
         L"Show the folder with the module's logs",
         "ico.logFile",
         {},
         [this] { ShowLogs(); },
         {}},
        {L"cmd.about", L"&About", L"What this program is", "info", {}, [this] { ShowAbout(); }, {}},
    };
}

std::function<bool()> DeskWindow::WithTab(bool (DocumentTab::*may)() const) const {
    return [this, may] { return Active() != nullptr && (Active()->*may)(); };
}

std::function<bool()> DeskWindow::WithTab(std::function<bool(DocumentTab&)> may) const {
    return [this, may = std::move(may)] { return Active() != nullptr && may(*Active()); };
}

void DeskWindow::OpenFiles() {
    QFileDialog dialog(this, tr("Open"));
    dialog.setObjectName("dlg.open");
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setNameFilters({tr("PDF documents (*.pdf)"), tr("All files (*)")});
    if (dialog.exec() == QDialog::Accepted) {
        for (const QString& path : dialog.selectedFiles()) {
            m_workplace.OpenLocal(path);
        }
    }
}

void DeskWindow::OpenAddress() {
    TextDialog dialog("dlg.address", tr("Open from an Address"), tr("&Address of the document:"), tr("&Open"),
                      TextDialog::Lines::one, this);
    if (const std::optional<QString> address = dialog.Ask()) {
        m_workplace.Open(*address);
    }
}

void DeskWindow::ChangePage(const std::function<PdfEdit(int page)>& edit) {
    Edit([&](PdfDocument& pdf) { pdf.Apply(edit(Active()->Pages().CurrentPage())); });
}

void DeskWindow::Edit(const std::function<void(PdfDocument&)>& change) {
    DocumentTab* const tab = Active();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const Outcome outcome = OutcomeOf([&] { change(tab->Pdf()); });
    QApplication::restoreOverrideCursor();
    if (!outcome.HasSucceeded()) {
        TellFailure(m_services.questions, L"<b>" + ToWide(tab->Title()) + L"</b> isn't changed.", outcome.message);
    }
}

void DeskWindow::AddNoteToPage() {
    TextDialog dialog("dlg.note", tr("Add Note"), tr("&Note on this page:"), tr("A&dd"), TextDialog::Lines::several, this);
    if (const std::optional<QString> text = dialog.Ask()) {
        ChangePage([&](int page) { return AddNote{page, text->toStdString(), UserName()}; });
    }
}

void DeskWindow::TurnPage(int direction) {
    PageView& pages = Active()->Pages();
    pages.GoToPage(pages.CurrentPage() + direction);
}

void DeskWindow::ShowPlaces() {
    PlacesWindow window(m_services, this);
    window.exec();
}

void DeskWindow::ShowPreferences() {
    DeskSettings& settings = m_services.settings;
    const Appearance before{settings.HasRibbon(), settings.Colors()};
    auto* const page = new AppearancePage(before);
    const auto apply = [this, page, &settings] {
        const Appearance chosen = page->Chosen();
        if (chosen.colors != settings.Colors()) {
            SetColors(chosen.colors);
        }
        if (chosen.has_ribbon != settings.HasRibbon()) {
            SetRibbon(chosen.has_ribbon);
        }
    };
    ::ShowPreferences(m_services.surroundings, m_services.places, this,
                      {{"page.appearance", tr("Appearance"), tr("How the program looks"), GetIcon("settings"), page, apply}},
                      [this](KOV::IUIX_PropSheets* sheets) { RaiseSheetsBuilt(m_services.host, sheets); });
}

void DeskWindow::ShowLogs() {
    const std::filesystem::path folder = LogFolder();
    if (!std::filesystem::exists(folder)) {
        Choose(m_services.questions, L"There are no logs: the module writes them when its preference for that is on.",
               {{L"btn.close", L"&Close"}});
        return;
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder.string())));
}

void DeskWindow::ShowAbout() {
    Choose(m_services.questions,
           L"<b>kov-desk " KOV_WIDE_VERSION L"</b>\nA small PDF editor that hosts the module SharePoint.kvp.",
           {{L"btn.close", L"&Close"}});
}
