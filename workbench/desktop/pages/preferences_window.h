#pragma once

/// The window of preferences: a list of pages, the host's own and those of modules. Main thread.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QDialog>
#include <QIcon>

#include "host/property_sheets.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/windows/window_places.h"

class ModulePage;
class QLabel;
class QListWidget;
class QStackedWidget;

/// A page of the program's own.
struct HostPage {
    /// Its object name.
    QString id;
    QString name;
    QString title;
    QIcon icon;
    /// The window takes it over.
    QWidget* widget = nullptr;
    /// Puts into effect what the page shows, at OK and Apply.
    std::function<void()> apply;
};

/// Shows the preferences over `parent` and comes back when they are closed. `add_pages` lets modules add theirs before. A
/// module's page makes its controls when it is first shown; OK and Apply tell every page, Cancel, Escape and the close button
/// none. The window stands where `places`, which outlives it, knows it from.
void ShowPreferences(const Surroundings& surroundings, const WindowPlaces& places, QWidget* parent,
                     std::vector<HostPage> host_pages, const std::function<void(KOV::IUIX_PropSheets* sheets)>& add_pages);

class PreferencesWindow final : public QDialog {
public:
    PreferencesWindow(const Surroundings& surroundings, const WindowPlaces& places, QWidget* parent);
    /// Destroys what the modules' pages made and releases the pages.
    ~PreferencesWindow() override;

    void AddPage(HostPage page);
    void AddPage(ComPtr<KOV::IUIX_PropSheetPage> page, const QString& id);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void AddEntry(const QString& id, const QString& name, const QString& title, const QIcon& icon, const QString& tip,
                  QWidget* page);
    void ShowPage(int index);
    QSize InLetters(const QSize& size) const;
    /// Grows, as far as the screen allows, until a page of this size fits; a window that a person left as it is stays so.
    void MakeRoomFor(const QSize& page);
    /// False, and told in the window, when a page couldn't.
    bool Apply();

    const WindowPlaces& m_places;
    bool m_was_placed = false;
    const std::shared_ptr<WindowCore> m_core;
    std::optional<ModalScope> m_modality;
    std::vector<std::function<void()>> m_host_pages;
    std::vector<ModulePage*> m_module_pages;
    std::vector<QString> m_titles;
    QListWidget* m_list;
    QLabel* m_title;
    QStackedWidget* m_stack;
    QLabel* m_failure;
};
