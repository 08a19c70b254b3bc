// Naming a file in the Save dialog, on real widgets over a real server.

#include "dialog/dialog_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t replace = 0;
constexpr std::size_t cancel = 1;

class SaveDialog : public DialogTest {
protected:
    SaveDialog() {
        server.Put("sites/x/Docs/taken.pdf", "x");
        server.Put("sites/x/Docs/README", "x");
        server.MakeFolder("sites/x/Docs/Deep");
        docs = At(Bind(), L"Docs");
        NewParameters();
    }

    ComPtr<Name> docs;
};

TEST_F(SaveDialog, MakesANameInTheFolderThatIsShownAndKeepsWhatWasTypedOnTheWay) {
    SetParameter(L"InitialFileName", L"Plan");
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Name().text(), "Plan");
        EXPECT_TRUE(ShownDialog::IsEnabled("btn.ok"));
        ShownDialog::DoubleClick(L"Deep");
        EXPECT_FALSE(ShownDialog::IsEnabled("btn.ok")) << "on its way";
    });
    person.Then([&] {
        EXPECT_EQ(ShownDialog::Name().text(), "Plan");
        EXPECT_TRUE(ShownDialog::IsEnabled("btn.ok"));
        ShownDialog::Name().clear();
        EXPECT_FALSE(ShownDialog::IsEnabled("btn.ok"));
        ShownDialog::Type("New plan");
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Save(docs), {Url("sites/x/Docs/Deep/New plan.pdf")});
    EXPECT_FALSE(server.Exists("sites/x/Docs/Deep/New plan.pdf")) << "it is only a name";
}

TEST_F(SaveDialog, FitsATypedNameToItsTypeOrItsDefault) {
    struct Row {
        std::int32_t flags;
        const char* typed;
        int filter;
        const char* result;
    };
    const Row rows[] = {
        {4, "plan", 0, "plan.pdf"},      {4, "plan.pdf", 1, "plan.fdf"}, {4, "plan", 2, "plan.txt"},
        {4, "v1.2", 0, "v1.2.pdf"},      {16, "plan", 0, "plan.txt"},    {16, "plan.pdf", 0, "plan.pdf.txt"},
        {16, "plan.TXT", 1, "plan.TXT"},
    };
    for (const Row& row : rows) {
        NewParameters();
        SetParameter(L"Flags", row.flags);
        SetParameter(L"DefaultExt", L"txt");
        SetParameter(L"FileFilterIndex", row.filter);
        person.Then([&] {
            ShownDialog::Type(row.typed);
            ShownDialog::Press("btn.ok");
        });
        ExpectChosen(Save(docs), {Url("sites/x/Docs/" + std::string(row.result))});
    }
}

TEST_F(SaveDialog, ChangesTheExtensionOfTheNameWithItsType) {
    person.Then([&] {
        ShownDialog::Type("plan.pdf");
        ShownDialog::ChooseFilter(1);
        EXPECT_EQ(ShownDialog::Name().text(), "plan.fdf");
        ShownDialog::ChooseFilter(0);
        EXPECT_EQ(ShownDialog::Name().text(), "plan.pdf");
        ShownDialog::Press("btn.cancel");
    });
    ExpectCanceled(Save(docs));
}

TEST_F(SaveDialog, AsksBeforeATypedNameReplacesAFile) {
    Answer(cancel);
    Answer(replace);
    person.Then([&] {
        ShownDialog::Type("TAKEN.pdf");
        ShownDialog::Press("btn.ok");
        EXPECT_EQ(LastBox().text, L"The file <b>taken.pdf</b> already exists. Do you want to replace it?");
        EXPECT_EQ(LastBox().icon, BoxIcon::question);
        EXPECT_EQ(LastBox().default_button, cancel);
        EXPECT_TRUE(ShownDialog::IsIdle());
        EXPECT_EQ(ShownDialog::Name().text(), "TAKEN.pdf");
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Save(docs), {Url("sites/x/Docs/taken.pdf")});
}

TEST_F(SaveDialog, ReplacesATypedNameUnaskedWithoutTheFlagButNeverADoubleClickedOne) {
    SetParameter(L"Flags", 2);
    person.Then([&] {
        ShownDialog::Type("taken.pdf");
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Save(docs), {Url("sites/x/Docs/taken.pdf")});
    EXPECT_THAT(BoxTexts(), IsEmpty());

    NewParameters();
    SetParameter(L"Flags", 2);
    Answer(cancel);
    Answer(replace);
    person.Then([&] {
        ShownDialog::DoubleClick(L"taken.pdf");
        EXPECT_TRUE(ShownDialog::IsIdle());
        EXPECT_EQ(Module().user.shown.size(), 1u);
        ShownDialog::DoubleClick(L"taken.pdf");
    });
    ExpectChosen(Save(docs), {Url("sites/x/Docs/taken.pdf")});
}

TEST_F(SaveDialog, RefusesNamesThatAServerWouldTakeForSomethingElse) {
    for (const char* const typed : {"a/b", "..\\c", "x?", "*", "a:b", R"("two" "names")", "a>b", "a|b"}) {
        NewParameters();
        Answer(0);
        person.Then([&] {
            ShownDialog::Type(typed);
            ShownDialog::Press("btn.ok");
            EXPECT_TRUE(ShownDialog::IsIdle()) << typed;
            EXPECT_EQ(LastBox().text,
                      L"<b>" + WideFromUtf8(typed) +
                          L".pdf</b> is not a valid file name. File name cannot contain characters <b>?*:\"|<>\\/</b>");
            ShownDialog::Press("btn.cancel");
        });
        ExpectCanceled(Save(docs));
    }
}

TEST_F(SaveDialog, LooksForTheNameWithItsExtension) {
    // With all files, what is selected is still completed: README is looked for, and made, as README.pdf.
    SetParameter(L"DefaultExt", L"pdf");
    SetParameter(L"FileFilterIndex", 2);
    person.Then([&] {
        ShownDialog::Click(L"README");
        EXPECT_EQ(ShownDialog::Name().text(), "README");
        ShownDialog::Press("btn.ok");
    });
    ExpectChosen(Save(docs), {Url("sites/x/Docs/README.pdf")});
}

} // namespace
