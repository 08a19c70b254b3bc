// The window of preferences with the module's real page and its real dialog, on real widgets.

#include "workbench/desktop/pages/preferences_window.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>

#include "preferences/check_boxes.h"
#include "preferences/drop_downs.h"
#include "preferences/preferences_page.h"
#include "support/in_process_module.h"
#include "workbench/core/document_life.h"
#include "workbench/core/host_windows.h"
#include "workbench/desktop/modal_person.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/pages/appearance_page.h"
#include "workbench/desktop/pages/property_sheets.h"
#include "workbench/desktop/windows/desktop_uix.h"

namespace {

constexpr const char* page_name = "DlgAppPrefs.SharePoint.Name";

struct RealWindows final : HostWindows {
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override {
        uix = MakeObject<DesktopUix>(host, host.Commands(), QString());
        return uix;
    }
    HWND DialogOwner() override { return TopModalWindow(); }
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override { return nullptr; }
    HRESULT ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override { return E_NOTIMPL; }

    ComPtr<DesktopUix> uix;
};

/// A page that only counts.
class CountingPage final : public cCoClassUnknownT<KOV::IUIX_PropSheetPage> {
public:
    HRESULT get_Icon(KOV::IKOV_MultiSizeImage**) override { return E_FAIL; }
    HRESULT get_Name(BSTR* o_name) override { return Give(L"<b>Other</b>", o_name); }
    HRESULT get_Title(BSTR* o_title) override { return Give(L"Other & <i>options</i>", o_title); }
    HRESULT get_Tip(BSTR* o_tip) override { return Give(L"<img src='x'>", o_tip); }
    HRESULT get_HasChanges(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT OnCreateNewUI(IUnknown*, HWND parent, const RECT* rect, KOV::IUIX_Obj**) override {
        ++shown;
        EXPECT_NE(WidgetOf(parent), nullptr);
        EXPECT_GT(rect->right, 0);
        return E_ACCESSDENIED;
    }
    HRESULT PropSheetPage_Reserved9() override { return S_OK; }
    HRESULT PropSheetPage_Reserved10() override { return S_OK; }
    HRESULT OnApply(IUnknown*, WORD flag) override {
        flags.push_back(flag);
        return apply_result;
    }
    HRESULT PropSheetPage_Reserved12() override { return S_OK; }
    HRESULT PropSheetPage_Reserved13() override { return S_OK; }

    int shown = 0;
    std::vector<WORD> flags;
    HRESULT apply_result = S_OK;

private:
    static HRESULT Give(const wchar_t* text, BSTR* out_text) {
        *out_text = SysAllocString(text);
        return S_OK;
    }
};

struct PreferencesDesk : testing::Test {
    /// Shows the window over the host's page and the module's.
    void Show(ModalPerson::Turn turn) {
        person.Next(std::move(turn));
        HostPage appearance{"appearance", "Appearance", "Appearance", {}, new AppearancePage({}), [this] { ++applied; }};
        ShowPreferences(windows.uix->Around(), places, &main_window, {appearance}, [this](KOV::IUIX_PropSheets* sheets) {
            EXPECT_EQ(RaiseSheetsBuilt(*module.host, sheets), S_OK);
            if (!other.IsNull()) {
                EXPECT_EQ(sheets->InsertPage(other, L"other", nullptr, nullptr), S_OK);
            }
        });
    }
    /// Goes to the module's page by the list.
    static QWidget& OpenPage(QDialog& window, int row = 1) {
        auto& list = Child<QListWidget>(window, "pages");
        QTest::keyClick(&list, Qt::Key_Home);
        for (int i = 0; i < row; ++i) {
            QTest::keyClick(&list, Qt::Key_Down);
        }
        return window;
    }
    static void Press(QWidget& window, const char* button) { Child<QPushButton>(window, button).click(); }
    Preferences Current() { return module.plugin->m_preferences_manager.Snapshot(); }
    Preferences Stored() {
        PreferencesManager manager(module.plugin);
        manager.Load();
        return manager.Snapshot();
    }

    const QTemporaryDir folder;
    const WindowPlaces places{folder.filePath("windows.ini")};
    RealWindows windows;
    InProcessModule module{&windows};
    MessagePump pump{module.host->Loop()};
    QWidget main_window;
    ModalPerson person;
    ComPtr<CountingPage> other;
    int applied = 0;
};

TEST_F(PreferencesDesk, PagesStandInTheListAndOpenWhenTheyAreFirstShown) {
    other = MakeObject<CountingPage>();
    Show([&](QDialog& window) {
        auto& list = Child<QListWidget>(window, "pages");
        ASSERT_EQ(list.count(), 3);
        EXPECT_EQ(list.item(0)->text(), "Appearance");
        EXPECT_EQ(list.item(1)->text(), "SharePoint");
        EXPECT_FALSE(list.item(1)->icon().isNull());
        EXPECT_EQ(list.item(2)->text(), "<b>Other</b>");
        EXPECT_FALSE(list.item(2)->toolTip().contains("<img"));
        EXPECT_TRUE(list.hasFocus());
        EXPECT_EQ(window.findChild<QComboBox*>("cb.afterSave"), nullptr);
        EXPECT_EQ(other->shown, 0);

        OpenPage(window);
        EXPECT_EQ(Child<QLabel>(window, "title").text(), "SharePoint Options");
        EXPECT_TRUE(Child<QComboBox>(window, "cb.afterSave").isVisible());
        OpenPage(window, 2);
        EXPECT_EQ(Child<QLabel>(window, "title").text(), "Other & <i>options</i>");
        OpenPage(window, 1);
        OpenPage(window, 2);
        EXPECT_EQ(other->shown, 1);
        window.reject();
    });
}

TEST_F(PreferencesDesk, TheWindowComesBackAsItWasLeft) {
    const QSize small(600, 450);
    Show([&](QDialog& window) {
        OpenPage(window);
        EXPECT_GT(window.width(), small.width()) << "the first time there is room for the page";
        window.resize(small);
        window.reject();
    });
    Show([&](QDialog& window) {
        OpenPage(window);
        EXPECT_EQ(window.size(), small);
        window.reject();
    });
}

TEST_F(PreferencesDesk, OkAndApplyTellEveryPageAndCancelNone) {
    other = MakeObject<CountingPage>();
    Show([&](QDialog& window) { Press(window, "btn.cancel"); });
    Show([&](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); });
    EXPECT_EQ(applied, 0);
    EXPECT_EQ(other->flags, std::vector<WORD>{});
    Show([&](QDialog& window) {
        Press(window, "btn.apply");
        EXPECT_TRUE(window.isVisible());
        Press(window, "btn.ok");
    });
    EXPECT_EQ(applied, 2);
    EXPECT_EQ(other->flags, (std::vector<WORD>{1, 1}));
}

TEST_F(PreferencesDesk, APageThatCantBeAppliedKeepsTheWindowOpenAndSaysWhy) {
    other = MakeObject<CountingPage>();
    other->apply_result = E_OUTOFMEMORY;
    Show([&](QDialog& window) {
        Press(window, "btn.ok");
        EXPECT_TRUE(window.isVisible());
        EXPECT_TRUE(Child<QLabel>(window, "failure").text().contains("<b>Other</b>"));
        other->apply_result = S_OK;
        Press(window, "btn.ok");
    });
}

TEST_F(PreferencesDesk, EveryChoiceOfEveryListIsWrittenThroughAtOnce) {
    Show([&](QDialog& window) {
        OpenPage(window);
        for (const PreferencesUi::DropDown& row : PreferencesUi::page_drop_downs) {
            auto& combo = Child<QComboBox>(window, ToQString(row.control).toUtf8());
            ASSERT_EQ(static_cast<std::size_t>(combo.count()), row.choices.size());
            for (int i = 0; i < combo.count(); ++i) {
                SCOPED_TRACE(combo.itemText(i).toStdString());
                EXPECT_FALSE(combo.itemText(i).startsWith("$$$"));
                QTest::keyClick(&combo, Qt::Key_End);
                QTest::keyClick(&combo, Qt::Key_Home);
                for (int down = 0; down < i; ++down) {
                    QTest::keyClick(&combo, Qt::Key_Down);
                }
                EXPECT_EQ(Stored().*row.field & row.mask, row.choices[static_cast<std::size_t>(i)].value);
                EXPECT_EQ(combo.currentIndex(), i);
            }
        }
        Press(window, "btn.cancel");
    });
    EXPECT_EQ(Stored().on_after_save, 1u) << "Cancel took back what was finished";
}

TEST_F(PreferencesDesk, EveryCheckBoxIsWrittenThroughAtOnce) {
    Show([&](QDialog& window) {
        OpenPage(window);
        for (const PreferencesUi::CheckBox& row : PreferencesUi::page_check_boxes) {
            auto& check = Child<QAbstractButton>(window, ToQString(row.control).toUtf8());
            SCOPED_TRACE(check.objectName().toStdString());
            const std::uint32_t before = Current().*row.field;
            EXPECT_EQ(check.isChecked(), (before & row.bit) != 0);
            QTest::keyClick(&check, Qt::Key_Space);
            EXPECT_EQ(Stored().*row.field, before ^ row.bit);
        }
        Press(window, "btn.cancel");
    });
}

TEST_F(PreferencesDesk, ACommentIsWrittenWhenItIsLeftAndAnEmptiedOneComesBack) {
    Show([&](QDialog& window) {
        OpenPage(window);
        QWidget& edit = Child<QWidget>(window, "ed.defaultCheckInComment");
        edit.setFocus();
        QTest::keyClicks(&edit, "by <b>me</b> & you");
        EXPECT_EQ(Stored().default_check_in_message, L"");
        Child<QPushButton>(window, "btn.ok").setFocus();
        EXPECT_EQ(Stored().default_check_in_message, L"by <b>me</b> & you");
        edit.setFocus();
        QTest::keyClick(&edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&edit, Qt::Key_Delete);
        Child<QPushButton>(window, "btn.ok").setFocus();
        EXPECT_EQ(edit.property("plainText").toString(), "by <b>me</b> & you");
        Press(window, "btn.cancel");
    });
    EXPECT_EQ(Stored().default_check_in_message, L"by <b>me</b> & you");
}

TEST_F(PreferencesDesk, AResetIsLostByCancelAndKeptByOk) {
    module.plugin->m_preferences_manager.Change([](Preferences& io_current) { io_current.on_after_save = 8; });
    const auto reset_and = [&](const char* button) {
        Show([&](QDialog& window) {
            OpenPage(window);
            Press(window, "btn.resetPreferences");
            EXPECT_EQ(Child<QComboBox>(window, "cb.afterSave").currentIndex(), 3);
            EXPECT_EQ(Current().on_after_save, 8u);
            Press(window, button);
        });
    };
    reset_and("btn.cancel");
    EXPECT_EQ(Current().on_after_save, 8u);
    reset_and("btn.ok");
    EXPECT_EQ(Current().on_after_save, 1u);
}

TEST_F(PreferencesDesk, TheAdvancedDialogStandsOverThePageAndItsAnswerWaitsForTheNextApply) {
    Show([&](QDialog& window) {
        OpenPage(window);
        person.Next([&](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), "Advanced SharePoint Preferences");
            auto& paths = Child<QWidget>(dialog, "ed.hiddenPaths");
            EXPECT_EQ(paths.property("plainText").toString().count('\n'), 23);
            paths.setFocus();
            QTest::keyClick(&paths, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClicks(&paths, "  one ");
            QTest::keyClick(&paths, Qt::Key_Return);
            QTest::keyClicks(&paths, "*/two.aspx");
            Child<QAbstractButton>(dialog, "check.hidePaths").click();
            Press(dialog, "btn.ok");
        });
        Press(window, "btn.advancedPreferences");
        EXPECT_EQ(Current().hidden_paths.size(), 24u);
        Press(window, "btn.apply");
        EXPECT_EQ(Stored().hidden_paths, (std::vector<std::wstring>{L"one", L"*/two.aspx"}));
        EXPECT_TRUE(Stored().hide_paths);
        person.Next([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
        Press(window, "btn.advancedPreferences");
        Press(window, "btn.cancel");
    });
}

TEST_F(PreferencesDesk, DaysAreDigitsFrom0To999) {
    const struct {
        const char* typed;
        std::uint32_t days;
    } rows[] = {{"7", 7}, {"a1-2.3e", 123}, {"999", 999}, {"1000", 100}, {"0", 0}};
    Show([&](QDialog& window) {
        OpenPage(window);
        for (const auto& row : rows) {
            SCOPED_TRACE(row.typed);
            person.Next([&](QDialog& dialog) {
                auto& days = Child<QLineEdit>(dialog, "ed.numberOfDaysToStoreLogs");
                days.setFocus();
                days.selectAll();
                QTest::keyClicks(&days, row.typed);
                Press(dialog, "btn.ok");
            });
            Press(window, "btn.advancedPreferences");
            Press(window, "btn.apply");
            EXPECT_EQ(Stored().days_to_store_logs, row.days);
        }
        Press(window, "btn.cancel");
    });
}

TEST_F(PreferencesDesk, APageIsCutFromItsControlsWhenTheWindowGoes) {
    ComPtr<KOV::IUIX_PropSheetPage> page;
    person.Next([&](QDialog& window) {
        OpenPage(window, 0);
        Press(window, "btn.cancel");
    });
    ShowPreferences(windows.uix->Around(), places, &main_window, {}, [&](KOV::IUIX_PropSheets* sheets) {
        page = Ui::CreatePreferencesPage(module.plugin);
        sheets->InsertPage(page, L"page", nullptr, nullptr);
    });
    module.plugin->m_preferences_manager.Change([](Preferences& io_current) { io_current.on_after_save = 16; });
    EXPECT_EQ(page->OnApply(nullptr, 1), S_OK);
    EXPECT_EQ(Current().on_after_save, 16u) << "it collected from controls that are gone";
    EXPECT_EQ(page->AddRef(), 2u) << "somebody else holds the page";
    page->Release();
}

TEST(PropertySheets, TakeNoPageOnceTheWindowIsBuilt) {
    const auto sheets = MakeObject<PropertySheets>();
    Bstr id;
    EXPECT_EQ(sheets->get_ID(&id), S_OK);
    EXPECT_EQ(id.View(), L"DlgAppPrefs");
    EXPECT_EQ(sheets->InsertPage(nullptr, L"x", nullptr, nullptr), E_POINTER);
    EXPECT_EQ(sheets->InsertPage(MakeObject<CountingPage>(), nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(sheets->Finish().size(), 1u);
    EXPECT_EQ(sheets->InsertPage(MakeObject<CountingPage>(), L"x", nullptr, nullptr), E_UNEXPECTED);
}

TEST(AppearancePage, ShowsAndGivesWhatIsChosen) {
    for (const Appearance& appearance : {Appearance{true, ColorScheme::dark}, Appearance{false, ColorScheme::desktop}}) {
        AppearancePage page(appearance);
        EXPECT_EQ(page.Chosen(), appearance);
        Child<QRadioButton>(page, "appearance.light").click();
        EXPECT_EQ(page.Chosen(), (Appearance{appearance.has_ribbon, ColorScheme::light}));
    }
}

} // namespace
