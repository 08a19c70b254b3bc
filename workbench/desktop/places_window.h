#pragma once

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>

#include "workbench/desktop/services.h"

/// The saved places: add, sign out, remove. Main thread.
class PlacesWindow final : public QDialog {
    Q_OBJECT

public:
    PlacesWindow(const DeskServices& services, QWidget* parent);
    ~PlacesWindow() override;

private:
    QPushButton* AddButton(class QLayout& row, const char* name, const QString& title, void (PlacesWindow::*pressed)());
    void Fill();
    void ShowButtons();
    /// Decoded; empty when none is chosen.
    std::wstring ChosenUrl() const;
    void Add();
    void SignOut();
    void Remove();

    const DeskServices& m_services;
    QTreeWidget* m_list;
    QPushButton* m_sign_out = nullptr;
    QPushButton* m_remove = nullptr;
};
