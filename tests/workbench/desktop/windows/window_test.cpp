// The life of a window: its events in their order, its end, what is posted to it, what it remembers.

#include <thread>

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QToolBar>

#include "desk.h"
#include "platform/windows_messages.h"
#include "workbench/desktop/commands/command_bar.h"

namespace {

constexpr UINT posted = 6548;

HWND HandleOf(Module& module) {
    HWND window = nullptr;
    EXPECT_EQ(module.Object().get_WndHandle(&window), S_OK);
    return window;
}

class Monitor final : public cCoClassUnknownT<KOV::IUIX_EventLoopMonitor> {
public:
    std::vector<std::pair<HWND, LONGLONG>> keys;
    bool takes = false;

private:
    HRESULT OnEventLoopMonitor(HWND window, KOV::IUIX_Event* io_event) override {
        DWORD code = 0;
        LONGLONG key = 0;
        EXPECT_EQ(io_event->get_Code(&code), S_OK);
        EXPECT_EQ(code, WM_KEYDOWN);
        EXPECT_EQ(io_event->get_Param1(&key), S_OK);
        keys.emplace_back(window, key);
        return takes ? io_event->put_Handled(VARIANT_TRUE) : S_OK;
    }
};

} // namespace

using WindowTest = DeskTest;

TEST_F(WindowTest, LivesInTheOrderOfItsEvents) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    EXPECT_EQ(m_heard, Heard({"created"}));
    module->hears_sizes = true;
    module->on["size"] = [&] { EXPECT_TRUE(WidgetOfModule(*module)->isVisible()); };
    module->on["show"] = [&] { Soon([&] { QTest::mouseClick(Find(*module, "btn.ok"), Qt::LeftButton); }); };
    module->on["3 btn.ok"] = [&] { EXPECT_EQ(module->Object().EndModal(1), S_OK); };
    module->on["end 1"] = [&] {
        EXPECT_FALSE(WidgetOfModule(*module)->isVisible());
        EXPECT_EQ(module->Dialog().SetItemText(L"ed.name", L"late"), S_OK) << "controls are alive, and nobody hears of them";
    };
    EXPECT_EQ(Run(*module), 1);
    EXPECT_EQ(m_heard, Heard({"created", "size", "show", "3 btn.ok", "pre 1", "end 1", "gone"}));
    EXPECT_FALSE(module->HasObject());
}

TEST_F(WindowTest, EndsWithEscapeAndTheCloseButtonAsWithCancel) {
    const std::function<void(QWidget&)> ways[] = {
        [](QWidget& window) { QTest::keyClick(window.focusWidget(), Qt::Key_Escape); },
        [](QWidget& window) { window.close(); },
    };
    for (const auto& way : ways) {
        m_heard.clear();
        const ComPtr<Module> module = CreateModule(L"OpenDialog");
        module->on["show"] = [&] { Soon([&] { way(*WidgetOfModule(*module)); }); };
        EXPECT_EQ(Run(*module), 2);
        EXPECT_EQ(m_heard, Heard({"created", "show", "pre 2", "end 2", "gone"}));
    }
}

TEST_F(WindowTest, RemembersAnEndBeforeItsLoop) {
    for (const char* const when : {"size", "show"}) {
        m_heard.clear();
        const ComPtr<Module> module = CreateModule(L"OpenDialog");
        module->on[when] = [&] {
            EXPECT_EQ(module->Object().EndModal(7), S_OK);
            EXPECT_EQ(module->Object().EndModal(8), S_FALSE) << "the first one wins";
        };
        EXPECT_EQ(Run(*module), 7) << when;
        EXPECT_EQ(m_heard.back(), "gone");
        EXPECT_EQ(m_heard[m_heard.size() - 2], "end 7");
    }
}

TEST_F(WindowTest, GivesAFailureAsItsResultWithItsSign) {
    const ComPtr<Module> module = CreateModule(L"WebBrowserDialog");
    module->on["show"] = [&] { (void)module->Object().EndModal(E_UNEXPECTED); };
    EXPECT_EQ(Run(*module), LONGLONG{E_UNEXPECTED});
}

TEST_F(WindowTest, IsHiddenAndLetsTheProgramGoOnWhileItsEndIsVetoed) {
    QWidget main_window;
    const std::shared_ptr<WindowCore> core = WindowCore::Create(&main_window, m_uix->Around());
    m_parent = core->Handle();
    main_window.show();
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    bool is_working = true;
    module->vetoes = [&](LONGLONG) { return is_working; };
    module->on["show"] = [&] {
        EXPECT_EQ(TopModalWindow(), HandleOf(*module));
        EXPECT_EQ(QApplication::activeModalWidget(), WidgetOfModule(*module));
        Soon([&] { WidgetOfModule(*module)->close(); });
    };
    module->on["pre 2"] = [&] {
        if (is_working) {
            PostMessageW(HandleOf(*module), posted, 1, 0); // the worker's last act
        }
    };
    module->on["message 6548 1"] = [&] {
        EXPECT_FALSE(WidgetOfModule(*module)->isVisible());
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(TopModalWindow(), nullptr);
        is_working = false;
        EXPECT_EQ(module->Object().EndModal(2), S_OK);
    };
    EXPECT_EQ(Run(*module), 2);
    EXPECT_EQ(m_heard, Heard({"created", "show", "pre 2", "message 6548 1", "pre 2", "end 2", "gone"}));
    core->Destroy();
}

TEST_F(WindowTest, IsAskedWhenTheProgramEndsAndTurnsUntilItsEndIsNotVetoed) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    bool is_working = true;
    std::thread worker;
    module->vetoes = [&](LONGLONG) { return is_working; };
    module->on["show"] = [&] { Soon([] { QCoreApplication::exit(0); }); };
    module->on["pre 2"] = [&] {
        if (is_working) {
            worker = std::thread([window = HandleOf(*module)] { PostMessageW(window, posted, 1, 0); });
        }
    };
    module->on["message 6548 1"] = [&] {
        is_working = false;
        EXPECT_EQ(module->Object().EndModal(2), S_OK);
    };
    LONGLONG result = 0;
    Soon([&] { result = Run(*module); });
    QCoreApplication::exec();
    worker.join();
    EXPECT_EQ(result, 2);
    EXPECT_EQ(m_heard, Heard({"created", "show", "pre 2", "message 6548 1", "pre 2", "end 2", "gone"}));
}

TEST_F(WindowTest, OwnsTheWindowsThatOpenOverIt) {
    const ComPtr<Module> outer = CreateModule(L"OpenDialog");
    outer->on["show"] = [&] {
        Soon([&] {
            m_parent = TopModalWindow();
            EXPECT_EQ(m_parent, HandleOf(*outer));
            Heard heard_inside;
            const ComPtr<Module> inner = MakeObject<Module>(*m_host.Get(), heard_inside);
            ASSERT_EQ(Create(inner, L"AdvancedPreferencesDialog"), S_OK);
            EXPECT_EQ(WidgetOfModule(*inner)->parentWidget(), WidgetOfModule(*outer));
            inner->on["show"] = [&] {
                EXPECT_EQ(TopModalWindow(), HandleOf(*inner));
                // The outer one ends first, and comes back only after the inner one.
                Soon([&] { EXPECT_EQ(outer->Object().EndModal(1), S_OK); });
                Soon([&] { EXPECT_EQ(inner->Object().EndModal(3), S_OK); });
            };
            EXPECT_EQ(Run(*inner), 3);
            EXPECT_EQ(heard_inside, Heard({"created", "show", "pre 3", "end 3", "gone"}));
        });
    };
    EXPECT_EQ(Run(*outer), 1);
    EXPECT_EQ(TopModalWindow(), nullptr);
    EXPECT_EQ(m_heard, Heard({"created", "show", "pre 1", "end 1", "gone"}));
}

TEST_F(WindowTest, GetsPostedMessagesInOrderOverNestedLoopsAndThreads) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    const HWND window = HandleOf(*module);
    std::thread worker;
    module->on["show"] = [&] {
        worker = std::thread([&] {
            for (WPARAM number = 1; number <= 5; ++number) {
                EXPECT_TRUE(PostMessageW(window, posted, number, 0));
                m_loop.Post([&, number] { m_heard.push_back("task " + std::to_string(number)); });
            }
        });
    };
    module->on["message 6548 2"] = [&] {
        QEventLoop nested; // a message box, say
        m_loop.Post([&] { nested.quit(); });
        nested.exec();
        m_heard.push_back("back");
    };
    module->on["message 6548 5"] = [&] { Soon([&] { (void)module->Object().EndModal(1); }); };
    EXPECT_EQ(Run(*module), 1);
    worker.join();
    Heard messages;
    for (const std::string& text : m_heard) {
        if (text.starts_with("message") || text.starts_with("task")) {
            messages.push_back(text.substr(text.rfind(' ') + 1));
        }
    }
    EXPECT_EQ(messages, Heard({"1", "1", "2", "2", "3", "3", "4", "4", "5", "5"}));
    EXPECT_NE(std::find(m_heard.begin(), m_heard.end(), "back"), m_heard.end());
}

TEST_F(WindowTest, ThatIsGoneGetsNothing) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    const HWND window = HandleOf(*module);
    EXPECT_TRUE(PostMessageW(window, posted, 1, 0));
    ASSERT_EQ(module->Object().Destroy(), S_OK);
    EXPECT_FALSE(PostMessageW(window, posted, 2, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_heard, Heard({"created", "gone"}));
    EXPECT_EQ(WindowOf(window), nullptr);
}

TEST_F(WindowTest, MayBeDestroyedFromItsOwnNotification) {
    const ComPtr<Module> page = CreateModule(L"DlgAppPrefs.SharePoint.Name", 0);
    QWidget* const widget = WidgetOfModule(*page);
    widget->show();
    page->on["3 btn.resetPreferences"] = [&] { EXPECT_EQ(page->Object().Destroy(), S_OK); };
    QTest::mouseClick(Find(*page, "btn.resetPreferences"), Qt::LeftButton);
    EXPECT_EQ(m_heard, Heard({"created", "3 btn.resetPreferences", "gone"}));
}

TEST_F(WindowTest, TakesItsTitleFromTheLayoutAndThenFromTheModule) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    EXPECT_EQ(WidgetOfModule(*module)->windowTitle(), "Open File");
    EXPECT_TRUE(SetWindowTextW(HandleOf(*module), L"<b>Mine</b>"));
    QCoreApplication::processEvents();
    EXPECT_EQ(WidgetOfModule(*module)->windowTitle(), "<b>Mine</b>");
    EXPECT_EQ(module->Object().Destroy(), S_OK);
}

TEST_F(WindowTest, PressesWithEnterWhatAPersonWouldExpect) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    std::vector<std::string> pressed;
    module->on["3 btn.ok"] = [&] { pressed.push_back("ok"); };
    module->on["3 btn.cancel"] = [&] { pressed.push_back("cancel"); };
    module->on["show"] = [&] {
        Soon([&] {
            QWidget* const window = WidgetOfModule(*module);
            EXPECT_EQ(window->focusWidget(), Find(*module, "ed.name")) << "a name can be typed at once";
            QTest::keyClick(window->focusWidget(), Qt::Key_Return);
            EXPECT_EQ(pressed, std::vector<std::string>({"ok"})) << "the default button";
            for (const wchar_t* const id : {L"ed.name", L"cb.filter", L"lst.files", L"btn.settings", L"btn.ok", L"cb.url",
                                            L"btn.navigate", L"btn.signOut"}) {
                EXPECT_EQ(module->Dialog().EnableItem(id, VARIANT_FALSE), S_OK);
            }
            EXPECT_EQ(window->focusWidget(), Find(*module, "btn.cancel")) << "the only one left";
            QTest::keyClick(window->focusWidget(), Qt::Key_Return);
            EXPECT_EQ(pressed, std::vector<std::string>({"ok"})) << "nobody chose Cancel";
            EXPECT_EQ(module->Dialog().EnableItem(L"ed.name", VARIANT_TRUE), S_OK);
            EXPECT_EQ(window->focusWidget(), Find(*module, "ed.name"));
            Find(*module, "btn.cancel")->setFocus();
            QTest::keyClick(window->focusWidget(), Qt::Key_Return);
            EXPECT_EQ(pressed, std::vector<std::string>({"ok", "cancel"}));
            (void)module->Object().EndModal(2);
        });
    };
    (void)Run(*module);
}

TEST_F(WindowTest, NamesItsControlsForThoseWhoCannotSeeThem) {
    const ComPtr<Module> open = CreateModule(L"OpenDialog");
    EXPECT_EQ(Find(*open, "ed.name")->accessibleName(), "Filename:");
    EXPECT_EQ(Find(*open, "lst.files")->accessibleName(), "files");
    EXPECT_EQ(Find<QPushButton>(*open, "btn.ok")->text(), "&Open");
    const ComPtr<Module> advanced = CreateModule(L"AdvancedPreferencesDialog");
    EXPECT_EQ(Find(*advanced, "ed.hiddenPaths")->accessibleName(), "Hide the following folders:");
    EXPECT_EQ(Find(*advanced, "ed.numberOfDaysToStoreLogs")->accessibleName(), "Days to store logs:");
    EXPECT_EQ(open->Object().Destroy(), S_OK);
    EXPECT_EQ(advanced->Object().Destroy(), S_OK);
}

TEST_F(WindowTest, RemembersItsSizeAndGrowsByItsBar) {
    QSize first;
    const auto show = [&](const std::function<void(QWidget&)>& function) {
        const ComPtr<Module> module = CreateModule(L"OpenDialog");
        module->on["show"] = [&] {
            ComPtr<KOV::IUIX_Obj> list;
            ComPtr<KOV::IUIX_Obj> parent;
            ComPtr<KOV::IUIX_ScrollContainer> container;
            ComPtr<KOV::IUIX_CmdPane> pane;
            ComPtr<KOV::IUIX_CmdBar> bar;
            ASSERT_EQ(module->Dialog().GetItem(L"lst.files", 1, &list), S_OK);
            ASSERT_EQ(list->get_Parent(&parent), S_OK);
            ASSERT_EQ(parent->_QueryImpl(&container), S_OK);
            ASSERT_EQ(container->get_CmdPaneTop(&pane), S_OK);
            const RECT rect{};
            ASSERT_EQ(m_uix->CreateCmdBar(parent, &rect, nullptr, nullptr, 0xE44, &bar), S_OK);
            ASSERT_EQ(pane->InsertBar(bar, -1, -1, VARIANT_TRUE), S_OK);
            Soon([&] {
                QCoreApplication::processEvents();
                function(*WidgetOfModule(*module));
                (void)module->Object().EndModal(2);
            });
        };
        (void)Run(*module);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    QSize larger;
    show([&](QWidget& window) {
        first = window.size();
        EXPECT_GT(window.height(), window.findChild<Form*>()->height()) << "the bar has room of its own";
        window.resize(window.width() + 60, window.height() + 40);
        larger = window.size();
    });
    show([&](QWidget& window) { EXPECT_EQ(window.size(), larger); });
    show([&](QWidget& window) { EXPECT_EQ(window.size(), larger) << "it doesn't grow from showing to showing"; });
}

TEST_F(WindowTest, MakesRoomForALongerTitleOfAButton) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    WidgetOfModule(*module)->show();
    ASSERT_EQ(module->Dialog().SetItemText(L"btn.settings", L"Check the very many settings of this place..."), S_OK);
    QCoreApplication::processEvents();
    const QWidget* const button = Find(*module, "btn.settings");
    EXPECT_GE(button->width(), button->sizeHint().width());
    EXPECT_LE(button->geometry().right(), Find(*module, "btn.ok")->geometry().left());
    EXPECT_EQ(module->Object().Destroy(), S_OK);
}

TEST_F(WindowTest, IsNotMadeFromABrokenLayout) {
    const ComPtr<Module> module = MakeObject<Module>(*m_host.Get(), m_heard);
    EXPECT_EQ(Create(module, L"NoSuchDialog"), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    m_layouts.resize(500);
    EXPECT_EQ(Create(module, L"OpenDialog"), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
    m_layouts.clear();
    EXPECT_TRUE(FAILED(Create(module, L"OpenDialog")));
    EXPECT_FALSE(module->HasObject());
    EXPECT_EQ(m_heard, Heard());
}

TEST_F(WindowTest, ShowsAWaitRingInTheMiddleOfAControl) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    WidgetOfModule(*module)->show();
    ComPtr<KOV::IUIX_Obj> list;
    ASSERT_EQ(module->Dialog().GetItem(L"lst.files", 1, &list), S_OK);
    LONG side = 0;
    ASSERT_EQ(list->ScaleToDevice(48, &side), S_OK);
    KOV::CreateUiObjectParameters parameters{};
    parameters.parent_object = list;
    parameters.kind = KOV::UIX_ObjKind_WaitProgress;
    parameters.flags = 2;
    parameters.rect = {0, 0, side, side};
    parameters.layout_id = L"WaitProgress";
    ComPtr<KOV::IUIX_Obj> object;
    ComPtr<KOV::IUIX_WaitProgress> progress;
    ASSERT_EQ(m_uix->CreateObj(&parameters, &object), S_OK);
    ASSERT_EQ(object->_QueryImpl(&progress), S_OK);
    QWidget* const ring = PartOf(object)->Widget();
    EXPECT_FALSE(ring->isVisible());
    EXPECT_EQ(progress->Start(), S_OK);
    EXPECT_EQ(object->Show(8, -1), S_OK);
    EXPECT_TRUE(ring->isVisible());
    WidgetOfModule(*module)->resize(1000, 800);
    QCoreApplication::processEvents();
    const QPoint middle = ring->parentWidget()->rect().center();
    EXPECT_LE((ring->geometry().center() - middle).manhattanLength(), 2);
    EXPECT_EQ(object->Show(0, -1), S_OK);
    EXPECT_FALSE(ring->isVisible());
    EXPECT_EQ(progress->Stop(), S_OK);
    EXPECT_EQ(module->Object().Destroy(), S_OK);
}

TEST_F(WindowTest, ShowsItsKeysToMonitorsFirst) {
    const ComPtr<Module> module = CreateModule(L"OpenDialog");
    WidgetOfModule(*module)->show();
    QApplication::setActiveWindow(WidgetOfModule(*module));
    auto* const name = Find<QLineEdit>(*module, "ed.name");
    name->setFocus();
    ComPtr<KOV::IUIX_Application> application;
    ASSERT_EQ(module->Object().get_Application(&application), S_OK);
    const ComPtr<Monitor> monitor = MakeObject<Monitor>();
    ASSERT_EQ(application->AddEventLoopMonitor(monitor), S_OK);
    QTest::keyClick(name, Qt::Key_A);
    QTest::keyClick(name, Qt::Key_F5);
    monitor->takes = true;
    QTest::keyClick(name, Qt::Key_B);
    EXPECT_EQ(name->text(), "a") << "a key that was taken doesn't reach the window";
    const HWND window = HandleOf(*module);
    const std::vector<std::pair<HWND, LONGLONG>> expected = {{window, 'A'}, {window, 0x74}, {window, 'B'}};
    EXPECT_EQ(monitor->keys, expected);
    ASSERT_EQ(application->RemoveEventLoopMonitor(monitor), S_OK);
    EXPECT_TRUE(FAILED(application->RemoveEventLoopMonitor(monitor)));
    QTest::keyClick(name, Qt::Key_C);
    EXPECT_EQ(name->text(), "ac");
    QTest::keyPress(name, Qt::Key_Shift);
    EXPECT_LT(GetKeyState(VK_SHIFT), 0);
    QTest::keyRelease(name, Qt::Key_Shift);
    EXPECT_GE(GetKeyState(VK_SHIFT), 0);
    EXPECT_EQ(module->Object().Destroy(), S_OK);
}
