#pragma once

#include <map>

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>

#include "workbench/desktop/documents/working_copy.h"
#include "workbench/desktop/services.h"

class Workplace;

/// A copy with changes that were never saved, whatever left it.
struct LeftDocument {
    LeftCopy copy;
    /// The bytes that a refused or interrupted save left, which no working copy holds.
    std::optional<UnsavedCopy> upload;

    std::filesystem::path Content() const { return upload ? upload->path : copy.Content(); }
};

/// Everything that earlier runs left and no running program holds, oldest first. Throws HostException.
std::vector<LeftDocument> FindLeftDocuments(const DeskServices& services);

/// Shows what earlier runs left, when there is anything: modeless, so that work can go on.
void OfferLeftDocuments(const DeskServices& services, Workplace& workplace);

/// Each of them can be opened, saved elsewhere, discarded, or left for later. Main thread.
class RecoveryWindow final : public QDialog {
    Q_OBJECT

public:
    RecoveryWindow(const DeskServices& services, Workplace& workplace, std::vector<LeftDocument> left, QWidget* parent);
    ~RecoveryWindow() override;

private:
    void AddRow(const LeftDocument& left);
    void AskServer(const LeftDocument& left, QTreeWidgetItem& row);
    QPushButton* AddButton(class QLayout& row, const char* name, const QString& title, void (RecoveryWindow::*pressed)());
    LeftDocument* Chosen();
    void TakeOut();
    void Open();
    void SaveAs();
    void Discard();

    const DeskServices& m_services;
    Workplace& m_workplace;
    QTreeWidget* m_list;
    std::map<QTreeWidgetItem*, LeftDocument> m_left;
    std::vector<QPushButton*> m_buttons;
};
