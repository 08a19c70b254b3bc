#pragma once

// The whole dialog: the module in this process, its window on real widgets, a person who follows a script, a real server.

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "afs/file_system.h"
#include "afs/name.h"
#include "dialog/front/dialog_parameters.h"
#include "frame/diagnostics/diagnostics.h"
#include "platform/text.h"
#include "platform/wininet_settings.h"
#include "settings/cab_node.h"
#include "support/in_process_desktop.h"
#include "support/trial_server.h"
#include "workbench/desktop/list/list_model.h"
#include "workbench/desktop/objects/text.h"

/// The window of the dialog that is shown, as a person finds it.
class ShownDialog {
public:
    /// Null while there is none.
    static QDialog* Window() {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            const bool is_ours = widget->objectName() == "OpenDialog" || widget->objectName() == "SaveDialog";
            if (is_ours && widget->isVisible()) {
                return qobject_cast<QDialog*>(widget);
            }
        }
        return nullptr;
    }
    template <class Widget>
    static Widget& Control(const char* name) {
        QDialog* const window = Window();
        auto* const found = window == nullptr ? nullptr : window->findChild<Widget*>(name);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no such control: ") + name);
        }
        return *found;
    }
    /// Shown, and on its way to no folder.
    static bool IsIdle() { return Window() != nullptr && List().isEnabled(); }

    static QTreeView& List() { return Control<QTreeView>("lst.files"); }
    static QLineEdit& Name() { return Control<QLineEdit>("ed.name"); }
    static bool IsEnabled(const char* name) { return Control<QWidget>(name).isEnabled(); }
    static std::wstring Address() { return ToWide(Control<QWidget>("lb.url").property("text").toString()); }

    static std::wstring Cell(int row, int column) { return ToWide(List().model()->index(row, column).data().toString()); }
    static int Rows() {
        static_cast<ListModel*>(List().model())->Settle();
        return List().model()->rowCount();
    }
    /// Names with their extensions from top to bottom.
    static std::vector<std::wstring> Titles() {
        std::vector<std::wstring> titles;
        for (int row = 0, count = Rows(); row < count; ++row) {
            titles.push_back(Title(row));
        }
        return titles;
    }

    static void Press(const char* button) { QTest::mouseClick(&Control<QWidget>(button), Qt::LeftButton); }
    /// Of the bar above the list.
    static void Use(const char* command) { QTest::mouseClick(&Control<QToolButton>(command), Qt::LeftButton); }
    static void Click(const wchar_t* title, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(List().viewport(), Qt::LeftButton, keys, Place(title));
    }
    static void DoubleClick(const wchar_t* title) {
        const QPoint place = Place(title);
        QWidget* const viewport = List().viewport();
        QTest::mouseClick(viewport, Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(viewport, Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, place);
    }
    static void ClickHeader(int column) {
        QHeaderView& header = *List().header();
        const QPoint place(header.sectionViewportPosition(column) + header.sectionSize(column) / 2, header.height() / 2);
        QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }
    static void Type(const QString& text) {
        Name().selectAll();
        QTest::keyClicks(&Name(), text);
    }
    /// As a person chooses it from the drop-down.
    static void ChooseFilter(int index) {
        auto& combo = Control<QComboBox>("cb.filter");
        combo.setFocus();
        while (combo.currentIndex() != index) {
            QTest::keyClick(&combo, combo.currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
        }
    }

private:
    static std::wstring Title(int row) {
        const std::wstring extension = Cell(row, 1);
        return Cell(row, 0) + (extension.empty() ? L"" : L"." + extension);
    }
    static QPoint Place(const wchar_t* title) {
        for (int row = 0, count = Rows(); row < count; ++row) {
            if (Title(row) == title) {
                const QModelIndex index = List().model()->index(row, 0);
                List().scrollTo(index);
                return List().visualRect(index).center();
            }
        }
        throw std::runtime_error("no such row: " + Utf8FromWide(title));
    }
};

/// Does one thing after the other, each as soon as its condition holds. What it can't do ends the dialog and fails the test.
class DialogPerson final : public QObject {
public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    DialogPerson() {
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] { Turn(); });
        m_timer.start(1);
    }
    ~DialogPerson() override { EXPECT_TRUE(m_steps.empty()) << m_steps.size() << " steps were never done"; }

    void When(Condition condition, Action action) { m_steps.push_back({std::move(condition), std::move(action)}); }
    /// As soon as the dialog is at rest.
    void Then(Action action) { When(ShownDialog::IsIdle, std::move(action)); }

private:
    struct Step {
        Condition condition;
        Action action;
    };

    void Turn() {
        if (m_is_acting || m_steps.empty() || !m_steps.front().condition()) {
            return;
        }
        m_is_acting = true;
        const Step step = std::move(m_steps.front());
        m_steps.pop_front();
        try {
            step.action();
        } catch (const std::exception& failure) {
            ADD_FAILURE() << failure.what();
            m_steps.clear();
            if (QDialog* const window = ShownDialog::Window()) {
                window->reject();
            }
        }
        m_is_acting = false;
    }

    QTimer m_timer;
    std::deque<Step> m_steps;
    bool m_is_acting = false;
};

class DialogTest : public testing::Test {
protected:
    DialogTest() : server(TrialOptions{.sites = {"sites/x", "sites/y"}}) { fs = desktop.module.plugin->m_file_system; }
    ~DialogTest() override { wininet::ClearCookies(); }

    ComPtr<Name> Bind(std::string_view path = "sites/x") {
        ComPtr<KOV::IAFS_BindContext> context;
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(Module().host->CreateStdBindContext(&context), S_OK);
        EXPECT_EQ(fs->BindToPath(server.WideUrl(path).c_str(), context, 0, nullptr, nullptr, &name), S_OK);
        return fs->GetName(name);
    }
    ComPtr<Name> At(Name* parent, const wchar_t* relative) {
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(fs->StringToName(relative, 0, parent, &name), S_OK);
        return fs->GetName(name);
    }
    std::wstring Url(std::string_view path) const { return server.WideUrl(path); }

    /// What the next dialog is given.
    ComPtr<KOV::IAUX_Cab> NewParameters() {
        parameters = Module().NewCab();
        Ui::DialogParameters schema;
        EXPECT_EQ(schema.LoadFromCab(Module().plugin->m_aux_inst, parameters), S_OK);
        CabNode(parameters)[L"FileFilters"].SetString(L"PDF|*.pdf|Forms|*.fdf;*.xdp|All files|*.*||");
        return parameters;
    }
    void SetParameter(const wchar_t* key, const wchar_t* text) { CabNode(parameters)[key].SetString(text); }
    void SetParameter(const wchar_t* key, std::int32_t number) { CabNode(parameters)[key].SetInt(number); }
    void SetParameter(const wchar_t* key, IUnknown* object) {
        const Variant value(object);
        EXPECT_EQ(CabNode(parameters)[key].p->put_v(&value), S_OK);
    }

    struct Outcome {
        HRESULT result = E_UNEXPECTED;
        DWORD choice = 0;
        std::vector<std::wstring> urls;
    };
    /// Shows a dialog on the main thread until it has ended.
    Outcome Show(DWORD type, KOV::IAFS_Name* folder) {
        Outcome outcome;
        ComPtr<KOV::IAFS_NamesCollection> names;
        outcome.result = fs->ShowDlg(type, folder, parameters, nullptr, &names, &outcome.choice);
        ULONG count = 0;
        if (!names.IsNull()) {
            names->get_Count(&count);
        }
        for (ULONG i = 0; i < count; ++i) {
            ComPtr<KOV::IAFS_Name> name;
            Bstr url;
            EXPECT_EQ(names->get_Item(i, &name), S_OK);
            EXPECT_EQ(fs->NameToString(name, 0, nullptr, &url), S_OK);
            outcome.urls.push_back(url.Text());
        }
        return outcome;
    }
    Outcome Open(KOV::IAFS_Name* folder) { return Show(KOV::AFS_Dlg_OpenFiles, folder); }
    Outcome Save(KOV::IAFS_Name* folder) { return Show(KOV::AFS_Dlg_SaveFile, folder); }

    void ExpectChosen(const Outcome& outcome, const std::vector<std::wstring>& urls) {
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_EQ(outcome.choice, 1u);
        EXPECT_EQ(outcome.urls, urls);
    }
    void ExpectCanceled(const Outcome& outcome) {
        EXPECT_EQ(outcome.result, E_CANCELED);
        EXPECT_EQ(outcome.choice, 2u);
        EXPECT_THAT(outcome.urls, testing::IsEmpty());
    }

    /// What the next box is answered: the index of its button, and what is typed into it.
    void Answer(std::size_t button, std::wstring edit = {}) {
        Module().user.boxes.push_back({.button = button, .edit = std::move(edit)});
    }
    const Box& LastBox() { return Module().user.shown.at(Module().user.shown.size() - 1); }
    std::vector<std::wstring> BoxTexts() {
        std::vector<std::wstring> texts;
        for (const Box& box : Module().user.shown) {
            texts.push_back(box.text);
        }
        return texts;
    }
    InProcessModule& Module() { return desktop.module; }

    TrialServer server;
    InProcessDesktop desktop;
    ComPtr<FileSystem> fs;
    ComPtr<KOV::IAUX_Cab> parameters;
    DialogPerson person;
};
