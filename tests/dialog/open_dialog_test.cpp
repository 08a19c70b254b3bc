// Picking files in the Open dialog, on real widgets over a real server.

#include "dialog/dialog_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OpenDialog : public DialogTest {
protected:
    OpenDialog() {
        server.Put("sites/x/Docs/a2.pdf", std::string(2048, 'x'));
        server.Put("sites/x/Docs/a10.pdf", "x");
        server.Put("sites/x/Docs/b.fdf", "x");
        server.Put("sites/x/Docs/readme", "x");
        server.Put("sites/x/Docs/Deep/inner.pdf", "x");
        root = Bind();
        docs = At(root, L"Docs");
        NewParameters();
    }

    ComPtr<Name> root;
    ComPtr<Name> docs;
};

TEST_F(OpenDialog, ShowsTheFolderAndGivesTheFileThatIsPicked) {
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Address(), Url("sites/x/Docs"));
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a2.pdf", L"a10.pdf"));
        EXPECT_EQ(ShownDialog::Cell(2, 4), L"2.0 KB");
        EXPECT_NE(ShownDialog::Cell(2, 3), L"");
        EXPECT_EQ(ShownDialog::Cell(0, 2) + ShownDialog::Cell(0, 3) + ShownDialog::Cell(0, 4), L"");
        EXPECT_FALSE(ShownDialog::IsEnabled("btn.ok"));
        for (const char* const hidden : {"cb.url", "btn.navigate", "btn.signOut"}) {
            EXPECT_FALSE(ShownDialog::Control<QWidget>(hidden).isVisible()) << hidden;
        }
        EXPECT_FALSE(ShownDialog::IsEnabled("btn.settings"));
        ShownDialog::Click(L"a10.pdf");
        EXPECT_EQ(ShownDialog::Name().text(), "a10.pdf");
        EXPECT_TRUE(ShownDialog::IsEnabled("btn.ok"));
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/a10.pdf")});
    EXPECT_EQ(CabNode(parameters)[L"FileFilterIndex"].GetInt(), 0);
}

TEST_F(OpenDialog, GoesDownByDoubleClickAndUpByTheFirstRowByOkAndByTheCommand) {
    const auto expect_at = [&](std::string_view path) { EXPECT_EQ(ShownDialog::Address(), Url(path)); };
    person.Then([&] { ShownDialog::DoubleClick(L"Deep"); });
    person.Then([&] {
        expect_at("sites/x/Docs/Deep");
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"inner.pdf"));
        ShownDialog::Click(L"..");
        EXPECT_TRUE(ShownDialog::IsEnabled("btn.ok"));
        ShownDialog::Press("btn.ok");
    });
    person.Then([&] {
        expect_at("sites/x/Docs");
        ShownDialog::Type("DEEP");
        ShownDialog::Press("btn.ok");
    });
    person.Then([&] {
        expect_at("sites/x/Docs/Deep");
        EXPECT_EQ(ShownDialog::Name().text(), "") << "the name of a folder that was entered";
        ShownDialog::DoubleClick(L"..");
    });
    // The state of a command comes at a turn of the loop.
    const auto can_go_up = [] { return ShownDialog::IsEnabled("sp.cmd.folder.up"); };
    person.When([=] { return ShownDialog::IsIdle() && can_go_up(); },
                [&] {
                    expect_at("sites/x/Docs");
                    ShownDialog::Use("sp.cmd.folder.up");
                });
    person.When([=] { return ShownDialog::IsIdle() && !can_go_up(); },
                [&] {
                    expect_at("sites/x");
                    EXPECT_NE(ShownDialog::Titles().front(), L"..") << "the root of the site has no parent";
                    ShownDialog::Press("btn.cancel");
                });
    server.ClearJournal();
    ExpectCanceled(Open(docs));
    EXPECT_EQ(CabNode(parameters)[L"FileFilterIndex"].GetInt(), 0);
}

TEST_F(OpenDialog, OpensWhatIsTypedWhateverItsLetterCaseAndSaysWhatIsNotThere) {
    SetParameter(L"Flags", 1);
    Answer(0);
    person.Then([&] {
        ShownDialog::Type("none.pdf");
        ShownDialog::Press("btn.ok");
        EXPECT_EQ(LastBox().text, L"The file <b>none.pdf</b> was not found in the current folder.");
        EXPECT_EQ(LastBox().icon, BoxIcon::error);
        EXPECT_TRUE(ShownDialog::IsIdle());
        ShownDialog::Type("  A2.PDF ");
        QTest::keyClick(&ShownDialog::Name(), Qt::Key_Return);
    });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/a2.pdf")});
}

TEST_F(OpenDialog, TakesSeveralQuotedNamesUnderItsFlagAlone) {
    struct Row {
        std::int32_t flags;
        std::vector<std::wstring> urls;
        std::vector<std::wstring> boxes;
    };
    const Row rows[] = {
        {1, {Url("sites/x/Docs/a2.pdf"), Url("sites/x/Docs/a10.pdf")}, {}},
        {0, {Url("sites/x/Docs/a2.pdf"), Url("sites/x/Docs/a10.pdf")}, {}}, // the Open dialog's default
        {2, {}, {L"The file <b>\"a2.pdf\" \"A10.pdf\".pdf</b> was not found in the current folder."}},
    };
    for (const Row& row : rows) {
        NewParameters();
        SetParameter(L"Flags", row.flags);
        Module().user.shown.clear();
        for (std::size_t i = 0; i < row.boxes.size(); ++i) {
            Answer(0);
        }
        person.Then([&] {
            ShownDialog::Type(R"("a2.pdf" "A10.pdf")");
            ShownDialog::Press("btn.ok");
            if (row.urls.empty()) {
                ShownDialog::Press("btn.cancel");
            }
        });
        const Outcome outcome = Open(docs);
        EXPECT_EQ(outcome.urls, row.urls) << row.flags;
        EXPECT_EQ(BoxTexts(), row.boxes) << row.flags;
    }
}

TEST_F(OpenDialog, GivesSeveralFilesThatArePickedInTheList) {
    person.Then([&] {
        ShownDialog::Click(L"a2.pdf");
        ShownDialog::Click(L"a10.pdf", Qt::ControlModifier);
        EXPECT_EQ(ShownDialog::Name().text(), R"("a2.pdf" "a10.pdf")");
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/a2.pdf"), Url("sites/x/Docs/a10.pdf")});
}

TEST_F(OpenDialog, EntersAFolderThatIsSelectedBesideFiles) {
    person.Then([&] {
        ShownDialog::Click(L"a2.pdf");
        ShownDialog::Click(L"Deep", Qt::ControlModifier);
        ShownDialog::Press("btn.ok");
    });
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Address(), Url("sites/x/Docs/Deep"));
        ShownDialog::DoubleClick(L"inner.pdf");
    });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/Deep/inner.pdf")});
}

TEST_F(OpenDialog, ListsTheChosenTypeOfFilesAndTellsTheHostWhichItWas) {
    SetParameter(L"FileFilterIndex", 1);
    person.Then([&] {
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"b.fdf"));
        server.ClearJournal();
        ShownDialog::ChooseFilter(2);
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a2.pdf", L"a10.pdf", L"b.fdf", L"readme"));
        ShownDialog::ChooseFilter(0);
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a2.pdf", L"a10.pdf"));
        ShownDialog::ChooseFilter(2);
        EXPECT_EQ(server.Count("*"), 0u);
        ShownDialog::DoubleClick(L"readme");
    });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/readme")});
    EXPECT_EQ(CabNode(parameters)[L"FileFilterIndex"].GetInt(), 2);
}

TEST_F(OpenDialog, SortsByTheColumnWhoseHeadIsClickedAndForgetsTheSelection) {
    person.Then([&] {
        ShownDialog::ChooseFilter(2);
        ShownDialog::Click(L"a2.pdf");
        ShownDialog::ClickHeader(0);
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"readme", L"b.fdf", L"a10.pdf", L"a2.pdf"));
        EXPECT_FALSE(ShownDialog::List().selectionModel()->hasSelection());
        ShownDialog::ClickHeader(4);
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a10.pdf", L"b.fdf", L"readme", L"a2.pdf"));
        ShownDialog::ClickHeader(4);
        EXPECT_THAT(ShownDialog::Titles().at(2), L"a2.pdf");
        ShownDialog::ClickHeader(1);
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"readme", L"b.fdf", L"a2.pdf", L"a10.pdf"));
        ShownDialog::DoubleClick(L"Deep");
    });
    person.Then([&] {
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"inner.pdf"));
        QTest::keyClick(ShownDialog::Window(), Qt::Key_Escape);
    });
    ExpectCanceled(Open(docs));
}

TEST_F(OpenDialog, StartsAtTheFolderOfAFileAndWithItsTexts) {
    SetParameter(L"InitialPathName", static_cast<IUnknown*>(At(root, L"Docs/Deep/inner.pdf").Get()));
    SetParameter(L"Title", L"Pick <b>one</b>");
    SetParameter(L"ActionBtnTitle", L"Take it");
    SetParameter(L"CancelBtnTitle", L"Leave it");
    SetParameter(L"SettingsBtnTitle", L"More");
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Address(), Url("sites/x/Docs/Deep"));
        EXPECT_EQ(ShownDialog::Window()->windowTitle(), "Pick <b>one</b>");
        EXPECT_EQ(ShownDialog::Control<QPushButton>("btn.ok").text(), "Take it");
        EXPECT_EQ(ShownDialog::Control<QPushButton>("btn.cancel").text(), "Leave it");
        EXPECT_EQ(ShownDialog::Control<QPushButton>("btn.settings").text(), "More");
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Open(root));
}

TEST_F(OpenDialog, HasTheHostsTypesWhereItWasGivenNone) {
    parameters.Release();
    person.Then([&] {
        const auto& combo = ShownDialog::Control<QComboBox>("cb.filter");
        ASSERT_EQ(combo.count(), 3);
        EXPECT_EQ(combo.itemText(0), "PDF documents");
        EXPECT_EQ(combo.itemText(2), "All files");
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Open(docs));
}

TEST_F(OpenDialog, HidesThePathsOfThePreferences) {
    Module().plugin->m_preferences_manager.Change([](Preferences& io_preferences) {
        io_preferences.hide_paths = true;
        io_preferences.hidden_paths = {L"*/deep", L"*a1?.pdf"};
    });
    person.Then([&] {
        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"a2.pdf"));
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Open(docs));
}

TEST_F(OpenDialog, ShowsNamesLetterByLetter) {
    const std::string longest(251, 'L');
    for (const std::string& name : {std::string("a & b.pdf"), std::string("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.pdf"),
                                    std::string("\xF0\x9F\x98\x80.pdf"), longest + ".pdf", std::string("&amp;.pdf")}) {
        server.Put("sites/y/Docs/" + name, "x");
    }
    const ComPtr<Name> other = Bind("sites/y");
    const std::wstring longest_title = std::wstring(251, L'L') + L".pdf";
    person.Then([&] {
        EXPECT_THAT(ShownDialog::Titles(), testing::UnorderedElementsAre(L"..", L"a & b.pdf", L"\u05e9\u05dc\u05d5\u05dd.pdf",
                                                                         L"\U0001F600.pdf", longest_title, L"&amp;.pdf"));
        ShownDialog::Click(longest_title.c_str());
        EXPECT_EQ(ToWide(ShownDialog::Name().text()), longest_title);
        ShownDialog::Click(L"a & b.pdf", Qt::ControlModifier);
        ShownDialog::Press("btn.ok");
    });
    const Outcome outcome = Open(At(other, L"Docs"));
    EXPECT_THAT(outcome.urls,
                testing::UnorderedElementsAre(Url("sites/y/Docs/") + L"/" + longest_title, Url("sites/y/Docs/a & b.pdf")));
}

/// Counts what the dialog asks of the host's own settings.
class Settings final : public cCoClassUnknownT<KOV::ISettingsBtnCallbacks> {
public:
    HRESULT GetState(LONG filter, DWORD, WORD* out_state) override {
        *out_state = filter == 2 ? 1 : 0;
        return S_OK;
    }
    HRESULT OnClick(LONG filter, DWORD, HWND window) override {
        clicks.emplace_back(filter, WidgetOf(window) == ShownDialog::Window());
        return S_OK;
    }

    std::vector<std::pair<LONG, bool>> clicks;
};

TEST_F(OpenDialog, HasASettingsButtonOfTheHosts) {
    const ComPtr<Settings> settings = MakeObject<Settings>();
    SetParameter(L"SettingsBtnCallbacks", static_cast<IUnknown*>(settings.Get()));
    person.Then([&] {
        EXPECT_FALSE(ShownDialog::IsEnabled("btn.settings"));
        ShownDialog::ChooseFilter(2);
        EXPECT_TRUE(ShownDialog::IsEnabled("btn.settings"));
        ShownDialog::Press("btn.settings");
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Open(docs));
    EXPECT_EQ(settings->clicks, (std::vector<std::pair<LONG, bool>>{{2, true}}));
}

TEST_F(OpenDialog, MayBeAskedForOnAnyThread) {
    person.Then([&] { ShownDialog::DoubleClick(L"a2.pdf"); });
    Outcome outcome;
    QEventLoop loop;
    std::thread caller([&] {
        outcome = Open(docs);
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    caller.join();
    ExpectChosen(outcome, {Url("sites/x/Docs/a2.pdf")});
}

} // namespace
