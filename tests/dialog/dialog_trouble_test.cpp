// The dialog while a server is slow, refuses, or is gone, and a window that ends in the middle of it.

#include <latch>

#include "dialog/dialog_fixture.h"
#include "dialog/named_folder.h"
#include "dialog/open_save_dialog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::wstring navigate_error =
    L"Failed to navigate to the SharePoint resource. Please check the internet connection, server "
    L"address and access right to the required SharePoint resource.";

class DialogTrouble : public DialogTest {
protected:
    DialogTrouble() {
        server.Put("sites/x/Docs/a.pdf", "x");
        server.Put("sites/x/Docs/Deep/inner.pdf", "x");
        root = Bind();
        docs = At(root, L"Docs");
        NewParameters();
    }

    static bool IsNavigating() { return ShownDialog::Window() != nullptr && !ShownDialog::List().isEnabled(); }
    /// Not shown, whether it is still there or not.
    static bool IsHidden() { return ShownDialog::Window() == nullptr; }
    static QWidget* Busy() {
        for (QWidget* const child : ShownDialog::List().findChildren<QWidget*>()) {
            if (child->accessibleName() == "Busy") {
                return child;
            }
        }
        return nullptr;
    }
    bool IsCommandRunning() const {
        const std::vector<std::wstring> lines = desktop.windows.progress->Lines();
        return !lines.empty() && lines.back() == L"start";
    }

    ComPtr<Name> root;
    ComPtr<Name> docs;
};

TEST_F(DialogTrouble, ShowsThatItWaitsAndLeavesCancelAlone) {
    server.Once("PROPFIND /sites/x/Docs* delay=300");
    bool was_busy = false;
    person.When([&] { return IsNavigating() && Busy() != nullptr && Busy()->isVisible(); },
                [&] {
                    was_busy = true;
                    for (const char* const control : {"lst.files", "ed.name", "cb.filter", "btn.ok", "sp.cmd.createFolder",
                                                      "sp.cmd.delete", "sp.cmd.folder.up"}) {
                        EXPECT_FALSE(ShownDialog::IsEnabled(control)) << control;
                    }
                    EXPECT_TRUE(ShownDialog::IsEnabled("btn.cancel"));
                });
    person.When([&] { return ShownDialog::IsIdle() && !Busy()->isVisible(); },
                [&] {
                    EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a.pdf"));
                    ShownDialog::Press("btn.cancel");
                });
    ExpectCanceled(Open(docs));
    EXPECT_TRUE(was_busy);
}

TEST_F(DialogTrouble, IsGoneAtOnceWhenItIsClosedInTheMiddleOfAFetchAndEndsWithIt) {
    for (const bool by_escape : {false, true}) {
        NewParameters();
        server.Always("PROPFIND * delay=400");
        server.ClearJournal();
        bool was_hidden = false;
        std::size_t asked = 0;
        person.When(IsNavigating, [&] {
            asked = server.Count("*");
            if (by_escape) {
                QTest::keyClick(ShownDialog::Window(), Qt::Key_Escape);
            } else {
                ShownDialog::Press("btn.cancel");
            }
            was_hidden = IsHidden();
        });
        ExpectCanceled(Open(docs));
        EXPECT_TRUE(was_hidden);
        EXPECT_LE(server.Count("*"), asked + 1) << "no call begins after the end";
        server.ClearFaults();
    }
    EXPECT_THAT(BoxTexts(), IsEmpty());
}

TEST_F(DialogTrouble, SurvivesAWindowThatIsDestroyedInTheMiddleOfAFetch) {
    server.Always("PROPFIND * delay=300");
    person.When(IsNavigating, [&] { delete ShownDialog::Window(); });
    ExpectCanceled(Open(docs));
    server.ClearFaults();

    // The next one is as new.
    NewParameters();
    person.Then([&] { ShownDialog::DoubleClick(L"a.pdf"); });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/a.pdf")});
}

TEST_F(DialogTrouble, FallsBackToTheSiteWithoutAWordAndOtherwiseSaysSo) {
    // The folder that it is to start at isn't there: the site itself is shown.
    const ComPtr<Name> none = At(root, L"None");
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Address(), Url("sites/x"));
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Open(none));
    EXPECT_THAT(BoxTexts(), IsEmpty());

    // Nothing can be listed at all: a box, and only Cancel lives.
    NewParameters();
    Answer(0);
    server.Always("PROPFIND * status=500");
    person.When([&] { return IsNavigating() && !Module().user.shown.empty(); },
                [&] {
                    EXPECT_THAT(BoxTexts(), ElementsAre(navigate_error));
                    EXPECT_FALSE(ShownDialog::IsEnabled("ed.name"));
                    ShownDialog::Press("btn.cancel");
                });
    ExpectCanceled(Open(docs));
}

TEST_F(DialogTrouble, KeepsTheLastGoodFolderWhenAServerIsLostInTheMiddle) {
    for (const char* const fault : {"PROPFIND * reset", "PROPFIND * truncate", "PROPFIND * garbage", "PROPFIND * status=404"}) {
        SCOPED_TRACE(fault);
        NewParameters();
        Module().user.shown.clear();
        Answer(0);
        person.Then([&] {
            server.Always(fault);
            ShownDialog::DoubleClick(L"Deep");
        });
        person.When([&] { return ShownDialog::IsIdle() && !Module().user.shown.empty(); },
                    [&] {
                        EXPECT_THAT(BoxTexts(), ElementsAre(navigate_error));
                        EXPECT_EQ(ShownDialog::Address(), Url("sites/x/Docs"));
                        EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"..", L"Deep", L"a.pdf"));
                        EXPECT_TRUE(ShownDialog::List().selectionModel()->isRowSelected(1));
                        server.ClearFaults();
                        ShownDialog::Press("btn.ok");
                    });
        person.When([&] { return ShownDialog::IsIdle() && ShownDialog::Address() == Url("sites/x/Docs/Deep"); },
                    [&] { ShownDialog::Press("btn.cancel"); });
        ExpectCanceled(Open(docs));
    }
}

TEST_F(DialogTrouble, HasNoRowUpWhereTheParentCannotBeRead) {
    server.Always("PROPFIND /sites/x/Docs status=500");
    person.When([] { return ShownDialog::IsIdle() && ShownDialog::Rows() == 1; },
                [&] {
                    EXPECT_THAT(ShownDialog::Titles(), ElementsAre(L"inner.pdf"));
                    EXPECT_FALSE(ShownDialog::IsEnabled("sp.cmd.folder.up"));
                    ShownDialog::Press("btn.cancel");
                });
    ExpectCanceled(Open(At(root, L"Docs/Deep")));
}

TEST_F(DialogTrouble, RefusesASecondWayWhileACommandRuns) {
    // The controls stay enabled during a command, and the worker is the only one.
    server.Always("MKCOL * delay=400");
    Answer(0, L"Made");
    Answer(0);
    person.When([] { return ShownDialog::IsIdle() && ShownDialog::IsEnabled("sp.cmd.createFolder"); },
                [] { ShownDialog::Use("sp.cmd.createFolder"); });
    person.When([&] { return IsCommandRunning(); }, [&] { ShownDialog::DoubleClick(L"Deep"); });
    person.When([&] { return ShownDialog::IsIdle() && ShownDialog::Rows() == 4; },
                [&] {
                    EXPECT_EQ(LastBox().text, navigate_error);
                    EXPECT_EQ(ShownDialog::Address(), Url("sites/x/Docs"));
                    ShownDialog::Press("btn.cancel");
                });
    ExpectCanceled(Open(docs));
    EXPECT_TRUE(server.Exists("sites/x/Docs/Made"));
}

TEST_F(DialogTrouble, ClosedWhileACommandRunsEndsAfterItWithWhatWasChosen) {
    server.Always("MKCOL * delay=400");
    Answer(0, L"Made");
    bool was_hidden = false;
    person.When([] { return ShownDialog::IsIdle() && ShownDialog::IsEnabled("sp.cmd.createFolder"); },
                [] { ShownDialog::Use("sp.cmd.createFolder"); });
    person.When([&] { return IsCommandRunning(); },
                [&] {
                    ShownDialog::DoubleClick(L"a.pdf");
                    was_hidden = IsHidden();
                });
    ExpectChosen(Open(docs), {Url("sites/x/Docs/a.pdf")});
    EXPECT_TRUE(was_hidden);
    EXPECT_TRUE(server.Exists("sites/x/Docs/Made"));
}

/// A provider that breaks its word in the middle of a deletion.
class ThrowingFolder final : public NamedFolder {
public:
    HRESULT Delete(KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*) override {
        is_deleting = true;
        may_throw.wait();
        throw std::bad_alloc();
    }

    std::atomic<bool> is_deleting = false;
    std::latch may_throw{1};
};

TEST_F(DialogTrouble, EndsAfterItWasClosedEvenWhenTheWorkerThrows) {
    const ComPtr<ThrowingFolder> folder = MakeObject<ThrowingFolder>();
    folder->items = {MakeObject<NamedItemInfo>(ItemFacts{.title = L"a.pdf"})};
    Answer(0);
    person.Then([] { ShownDialog::Click(L"a.pdf"); });
    person.When([] { return ShownDialog::IsEnabled("sp.cmd.delete"); }, [] { ShownDialog::Use("sp.cmd.delete"); });
    person.When([&] { return folder->is_deleting.load(); },
                [&] {
                    ShownDialog::Press("btn.cancel");
                    EXPECT_TRUE(IsHidden());
                    folder->may_throw.count_down();
                });
    Ui::OpenSaveDialog dialog(Module().host, folder);
    Ui::DialogParameters wishes;
    wishes.InitialPathName = folder->folder->m_name;
    ComPtr<KOV::IAFS_NamesCollection> names;
    EXPECT_EQ(dialog.ShowOpenSinglePlace(&names, wishes, folder->folder->m_name, nullptr, g_default_preferences), E_CANCELED);
    EXPECT_THAT(desktop.windows.progress->Lines(), testing::Contains(L"stop"));
}

} // namespace
