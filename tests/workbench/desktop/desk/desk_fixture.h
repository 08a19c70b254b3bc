#pragma once

// The whole program on the off-screen platform, with its module, before a real server.

#include <algorithm>
#include <fstream>
#include <iterator>

#include <QAbstractButton>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/trial_server.h"
#include "workbench/core/event_server.h"
#include "workbench/desktop/documents/sample_pdf.h"
#include "workbench/desktop/modal_person.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/program.h"

class Desk : public testing::Test {
protected:
    static constexpr const char* document = "Shared Documents/plan.pdf";
    static constexpr int patience_ms = 30'000;

    Desk()
        : server({.auth = TrialAuth::basic,
                  .users = {{"ann", "secret"}, {"ben", "secret"}, {"guest", "secret", TrialRights::read}}}) {
        server.Put(document, BytesOf(MakePdf(folder / "plan.pdf", 3)));
        std::ofstream(folder / "password") << "secret\n";
    }

    static std::string BytesOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void Start(const std::string& user = "ann") {
        DeskOptions options;
        options.module = KOV_BIN_DIR "/SharePoint.kvp";
        options.state = folder / "state";
        options.user = user;
        options.password_file = folder / "password";
        program = std::make_unique<DeskProgram>(*qApp, options);
        program->Show();
    }

    /// As a person quits who has nothing that isn't saved, or answers what is asked.
    void Quit() {
        bool has_ended = false;
        QObject::connect(&Place(), &Workplace::Ended, &Place(), [&] { has_ended = true; });
        program->Window().close();
        EXPECT_TRUE(QTest::qWaitFor([&] { return has_ended; }, patience_ms));
        program.reset();
    }

    void TearDown() override {
        if (program != nullptr) {
            Quit();
        }
    }

    Workplace& Place() { return program->Window().Place(); }

    DocumentTab* Open(const char* path = document) {
        const std::size_t before = Place().Tabs().size();
        Place().Open(QString::fromStdString(server.Url(path)));
        if (!QTest::qWaitFor([&] { return Place().Tabs().size() > before; }, patience_ms)) {
            ADD_FAILURE() << "no document opened";
            return nullptr;
        }
        DocumentTab* const tab = Place().Tabs().back().get();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !tab->IsBusy(); }, patience_ms));
        return tab;
    }

    bool Save(DocumentTab& tab) {
        std::optional<bool> is_done;
        Place().Save(tab, [&](bool done) { is_done = done; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return is_done.has_value(); }, patience_ms));
        return is_done.value_or(false);
    }

    bool Close(DocumentTab& tab) {
        std::optional<bool> is_closed;
        Place().Close(tab, [&](bool closed) { is_closed = closed; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return is_closed.has_value(); }, patience_ms));
        return is_closed.value_or(false);
    }

    /// A command as it is chosen from the menu.
    void Trigger(const char* command) {
        QAction* const action = Action(command);
        ASSERT_NE(action, nullptr) << command;
        ASSERT_TRUE(QTest::qWaitFor([&] { return action->isEnabled(); }, patience_ms)) << command;
        action->trigger();
    }

    /// The same; waits until the document is at rest.
    void Choose(const char* command, DocumentTab& tab) {
        Trigger(command);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !tab.IsBusy(); }, patience_ms)) << command;
    }

    QAction* Action(const char* command) {
        for (QAction* const action : ActionsOfMenus() + program->Window().findChildren<QAction*>()) {
            if (action->objectName() == command) {
                return action;
            }
        }
        return nullptr;
    }

    /// Commands stand in the menus of the bar and are owned by none of them.
    QList<QAction*> ActionsOfMenus() {
        QList<QAction*> actions;
        for (const QMenu* const menu : program->Window().findChildren<QMenu*>()) {
            actions += menu->actions();
        }
        return actions;
    }

    /// The window that shows the work under way; null when none does.
    static QWidget* ProgressWindow() {
        const QWidgetList windows = QApplication::topLevelWidgets();
        const auto found = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
            return window->objectName() == "progress" && window->isVisible();
        });
        return found == windows.end() ? nullptr : *found;
    }

    /// The texts of the info bar.
    static std::wstring BarOf(DocumentTab& tab) {
        std::wstring text;
        for (const InfoBarSpan& span : tab.Core().Bar().Spans()) {
            text += span.text;
        }
        return text;
    }

    void AwaitBar(DocumentTab& tab, const wchar_t* part) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return BarOf(tab).find(part) != std::wstring::npos; }, patience_ms))
            << "the bar says: " << testing::PrintToString(BarOf(tab));
    }

    /// The next question is answered by this button; it must hold `part` in its text.
    void Answer(const char* part, const char* button) {
        ++awaited;
        person.Next([this, part = QString(part), button](QDialog& dialog) {
            --awaited;
            EXPECT_TRUE(dialog.accessibleDescription().contains(part))
                << "expected: " << part.toStdString() << "\nasked: " << dialog.accessibleDescription().toStdString();
            Child<QAbstractButton>(dialog, button).click();
        });
    }

    void AwaitAnswers() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return awaited == 0; }, patience_ms));
    }

    int awaited = 0;
    TestFolder folder;
    TrialServer server;
    std::unique_ptr<DeskProgram> program;
    ModalPerson person;
};
