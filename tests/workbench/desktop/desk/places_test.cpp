#include <QTreeView>
#include <QTreeWidget>

#include "workbench/desktop/desk/desk_fixture.h"

namespace {

/// The rooms of a server as a person gets to them: places, and the module's own dialog over them.
class InPlaces : public Desk {
protected:
    InPlaces() { Start(); }

    /// By the window of places, in which the module asks for the address.
    void AddPlace() {
        person.Next([this](QDialog& places) {
            person.Next([this](QDialog& box) {
                Child<QLineEdit>(box, "sp.lb.sharePointPlaceUrl").setText(QString::fromStdString(server.Url()));
                Child<QAbstractButton>(box, "sp.btn.connect").click();
            });
            Child<QAbstractButton>(places, "btn.add").click();
            auto& list = Child<QTreeWidget>(places, "lst.places");
            ASSERT_EQ(list.topLevelItemCount(), 1);
            EXPECT_EQ(list.topLevelItem(0)->text(1), "ann");
            Child<QAbstractButton>(places, "btn.close").click();
        });
        Action("cmd.places")->trigger();
    }

    QString PlaceUrl() { return ToQString(server.WideUrl()); }

    /// In the dialog of the module: goes into the library, then names a file.
    void Pick(const char* file) {
        person.Next([file](QDialog& dialog) {
            const auto is_idle = [&] { return Child<QTreeView>(dialog, "lst.files").isEnabled(); };
            auto& name = Child<QLineEdit>(dialog, "ed.name");
            ASSERT_TRUE(QTest::qWaitFor(is_idle, patience_ms));
            const QString suggested = name.text();
            name.setText("Shared Documents");
            Child<QAbstractButton>(dialog, "btn.ok").click();
            ASSERT_TRUE(QTest::qWaitFor(is_idle, patience_ms));
            name.setText(file != nullptr ? QString(file) : suggested);
            Child<QAbstractButton>(dialog, "btn.ok").click();
        });
    }
};

} // namespace

TEST_F(InPlaces, APlaceIsSavedAndADocumentOpenedFromIt) {
    AddPlace();
    Pick("plan.pdf");
    Place().OpenFrom(PlaceUrl());
    ASSERT_TRUE(QTest::qWaitFor([&] { return Place().Tabs().size() == 1; }, patience_ms));
    EXPECT_EQ(Place().Tabs().at(0)->Pages().PageCount(), 3);
}

TEST_F(InPlaces, ALocalDocumentMovesToTheServer) {
    AddPlace();
    const std::filesystem::path file = MakePdf(folder / "mine.pdf", 2);
    Place().Open(QString::fromStdString(file.string()));
    DocumentTab* const tab = Place().Tabs().at(0).get();
    // The dialog suggests the document's own name.
    Pick(nullptr);
    std::optional<bool> is_done;
    Place().SaveTo(*tab, PlaceUrl(), [&](bool done) { is_done = done; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return is_done.has_value(); }, patience_ms));
    EXPECT_TRUE(*is_done);
    EXPECT_EQ(server.Read("Shared Documents/mine.pdf"), BytesOf(file));
    EXPECT_FALSE(tab->IsModified());
    EXPECT_TRUE(tab->Place().endsWith("Shared Documents/mine.pdf"));
    AwaitBar(*tab, L"checked out to you");
    // From now on it is a document of the server's.
    Choose("cmd.rotatePage", *tab);
    EXPECT_TRUE(Save(*tab));
    EXPECT_NE(server.Read("Shared Documents/mine.pdf"), BytesOf(file));
}

TEST_F(InPlaces, ADialogThatIsGivenUpChangesNothing) {
    AddPlace();
    bool is_given_up = false;
    person.Next([&](QDialog& dialog) {
        ASSERT_TRUE(QTest::qWaitFor([&] { return Child<QTreeView>(dialog, "lst.files").isEnabled(); }, patience_ms));
        QTest::keyClick(&dialog, Qt::Key_Escape);
        is_given_up = true;
    });
    Place().OpenFrom(PlaceUrl());
    EXPECT_TRUE(QTest::qWaitFor([&] { return is_given_up; }, patience_ms));
    EXPECT_TRUE(Place().Tabs().empty());
}

TEST_F(InPlaces, WhoSignedOutOfAPlaceIsAskedForTheAccountAgain) {
    AddPlace();
    person.Next([this](QDialog& places) {
        // There is no hosted sign-in service to tell it to.
        Answer("You are signed out", "btn.close");
        Child<QAbstractButton>(places, "btn.sign_out").click();
        Child<QAbstractButton>(places, "btn.close").click();
    });
    Action("cmd.places")->trigger();
    bool is_asked = false;
    person.Next([&](QDialog& prompt) {
        EXPECT_EQ(Child<QLineEdit>(prompt, "ed.user").text(), "ann");
        is_asked = true;
        prompt.reject();
    });
    Place().OpenFrom(PlaceUrl());
    EXPECT_TRUE(QTest::qWaitFor([&] { return is_asked; }, patience_ms));
}

TEST_F(InPlaces, APlaceIsRemovedByThePersonsWord) {
    AddPlace();
    person.Next([this](QDialog& places) {
        Answer("Remove the place", "btn.cancel");
        Child<QAbstractButton>(places, "btn.remove").click();
        EXPECT_EQ(Child<QTreeWidget>(places, "lst.places").topLevelItemCount(), 1);
        Answer("Remove the place", "btn.remove");
        Child<QAbstractButton>(places, "btn.remove").click();
        EXPECT_EQ(Child<QTreeWidget>(places, "lst.places").topLevelItemCount(), 0);
        Child<QAbstractButton>(places, "btn.close").click();
    });
    Action("cmd.places")->trigger();
}
