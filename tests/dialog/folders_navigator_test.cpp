// Moving from folder to folder over a real server.

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "dialog/folders_navigator.h"
#include "frame/diagnostics/diagnostics.h"

namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

bool KeepAll(KOV::IAFS_Name*) { return true; }

class NavigatorTest : public ProviderTest {
protected:
    NavigatorTest() {
        server->Put("sites/x/Docs/a.pdf", "0123456789");
        server->Put("sites/x/Docs/Deep/b.pdf", "x");
        root = Bind();
    }

    std::vector<std::wstring> Titles() const {
        std::vector<std::wstring> titles;
        const std::shared_ptr<const FolderContents> contents = navigator->GetContents();
        for (const FolderItem& item : contents->items) {
            Bstr title;
            titles.push_back(TextOfBstr(item.info->get_Title(&title), title));
        }
        return titles;
    }
    ComPtr<KOV::IAFS_Name> Child(const wchar_t* wanted) const {
        const std::shared_ptr<const FolderContents> contents = navigator->GetContents();
        for (const FolderItem& item : contents->items) {
            Bstr title;
            if (TextOfBstr(item.info->get_Title(&title), title) == wanted) {
                return item.name;
            }
        }
        return nullptr;
    }
    std::wstring UrlOf(KOV::IAFS_Name* name) {
        Bstr url;
        return name == nullptr ? L"none" : TextOfBstr(fs->NameToString(name, 0, nullptr, &url), url);
    }
    void ExpectPlace(std::string_view folder, std::string_view parent) {
        EXPECT_EQ(UrlOf(navigator->GetFolder()), Url(folder));
        EXPECT_EQ(UrlOf(navigator->GetParent()), parent.empty() ? L"none" : Url(parent));
        const std::shared_ptr<const FolderContents> contents = navigator->GetContents();
        EXPECT_EQ(contents->rows_result, S_OK);
        EXPECT_EQ(contents->rows == nullptr ? 0 : contents->rows->rows.size(), contents->items.size());
    }

    ComPtr<Name> root;
    // By itself: the fixture's reference to the provider comes after what the test begins with.
    std::unique_ptr<FoldersNavigator> navigator = std::make_unique<FoldersNavigator>(fs);
};

TEST_F(NavigatorTest, AnUnrelatedFolderIsReadWithItsParent) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs/Deep"), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs/Deep", "sites/x/Docs");
    EXPECT_THAT(Titles(), UnorderedElementsAre(L"b.pdf"));
    // What the window will ask of the two needs no server.
    server->ClearJournal();
    ComPtr<KOV::IAFS_FileInfo> info;
    EXPECT_EQ(fs->GetFileInfo(navigator->GetParent(), nullptr, nullptr, &info), S_OK);
    EXPECT_EQ(fs->GetFileInfo(navigator->GetFolder(), nullptr, nullptr, &info), S_OK);
    EXPECT_EQ(server->Count("*"), 0u);
}

TEST_F(NavigatorTest, AChildFolderAndTheWayBackTakeOneRequestEach) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    const ComPtr<KOV::IAFS_Name> docs = navigator->GetFolder();
    server->ClearJournal();
    ASSERT_EQ(navigator->SetFolder(Child(L"Deep"), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs/Deep", "sites/x/Docs");
    EXPECT_EQ(navigator->GetParent().Get(), docs.Get());
    EXPECT_EQ(server->Count("*"), 1u);
}

TEST_F(NavigatorTest, TheRootOfASiteHasNoParent) {
    ASSERT_EQ(navigator->SetFolder(root, KeepAll), S_OK);
    ExpectPlace("sites/x", "");
    EXPECT_FALSE(Child(L"Docs").IsNull());
}

TEST_F(NavigatorTest, AParentThatCannotBeReadCountsAsNone) {
    server->Always("PROPFIND /sites/x/Docs status=403");
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs/Deep"), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs/Deep", "");
    // Until it can be read again.
    server->ClearFaults();
    ASSERT_EQ(navigator->SetFolder(navigator->GetFolder(), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs/Deep", "sites/x/Docs");
}

TEST_F(NavigatorTest, WhoHoldsContentsKeepsThemWhileItMovesOn) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    const std::shared_ptr<const FolderContents> contents = navigator->GetContents();
    std::size_t seen = 0;
    EXPECT_EQ(navigator->SetFolder(Child(L"Deep"),
                                   [&](KOV::IAFS_Name*) {
                                       seen = navigator->GetContents()->items.size();
                                       return true;
                                   }),
              S_OK);
    EXPECT_EQ(seen, 2u) << "the old folder, until the new one is read whole";
    EXPECT_EQ(contents->items.size(), 2u);
    ExpectPlace("sites/x/Docs/Deep", "sites/x/Docs");
}

TEST_F(NavigatorTest, AFileLeadsToItsFolder) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs/a.pdf"), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs", "sites/x");
    // A file of the folder itself reads it again.
    server->Put("sites/x/Docs/later.pdf", "x");
    ASSERT_EQ(navigator->SetFolder(Child(L"a.pdf"), KeepAll), S_OK);
    ExpectPlace("sites/x/Docs", "sites/x");
    EXPECT_THAT(Titles(), UnorderedElementsAre(L"a.pdf", L"later.pdf", L"Deep"));
}

TEST_F(NavigatorTest, TheSameFolderIsReadAgainAndKeepsItsParent) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    const ComPtr<KOV::IAFS_Name> parent = navigator->GetParent();
    server->Remove("sites/x/Docs/a.pdf");
    server->ClearJournal();
    ASSERT_EQ(navigator->SetFolder(navigator->GetFolder(), KeepAll), S_OK);
    EXPECT_EQ(navigator->GetParent().Get(), parent.Get());
    EXPECT_THAT(Titles(), UnorderedElementsAre(L"Deep"));
    EXPECT_EQ(server->Count("*"), 1u);
}

TEST_F(NavigatorTest, TheFilterDecidesWhatIsKept) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), [&](KOV::IAFS_Name* name) { return UrlOf(name).ends_with(L".pdf"); }),
              S_OK);
    EXPECT_THAT(Titles(), UnorderedElementsAre(L"a.pdf"));
    ASSERT_EQ(navigator->SetFolder(navigator->GetFolder(), nullptr), S_OK);
    EXPECT_THAT(Titles(), IsEmpty());
    ExpectPlace("sites/x/Docs", "sites/x");
}

TEST_F(NavigatorTest, AFailureLeavesAllAsItWas) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    EXPECT_TRUE(FAILED(navigator->SetFolder(At(root, L"None"), KeepAll)));
    for (const char* const fault : {"PROPFIND * status=500", "PROPFIND * reset", "PROPFIND * truncate", "PROPFIND * garbage"}) {
        server->Always(fault);
        EXPECT_TRUE(FAILED(navigator->SetFolder(Child(L"Deep"), KeepAll))) << fault;
        server->ClearFaults();
        ExpectPlace("sites/x/Docs", "sites/x");
        EXPECT_THAT(Titles(), UnorderedElementsAre(L"a.pdf", L"Deep")) << fault;
    }
}

TEST_F(NavigatorTest, NoItemIsNoPlace) {
    EXPECT_EQ(navigator->SetFolder(nullptr, KeepAll), S_FALSE);
    EXPECT_TRUE(navigator->GetFolder().IsNull());
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    EXPECT_EQ(navigator->SetFolder(nullptr, KeepAll), S_FALSE);
    ExpectPlace("sites/x/Docs", "");
    EXPECT_THAT(Titles(), IsEmpty());
}

TEST_F(NavigatorTest, StopEndsItAtTheNextStepAndForGood) {
    ASSERT_EQ(navigator->SetFolder(At(root, L"Docs"), KeepAll), S_OK);
    // In the middle of the items.
    EXPECT_EQ(navigator->SetFolder(Child(L"Deep"),
                                   [&](KOV::IAFS_Name*) {
                                       navigator->Stop();
                                       return true;
                                   }),
              E_CANCELED);
    ExpectPlace("sites/x/Docs", "sites/x");
    server->ClearJournal();
    EXPECT_EQ(navigator->SetFolder(root, KeepAll), E_CANCELED);
    EXPECT_EQ(server->Count("*"), 0u);
    ExpectPlace("sites/x/Docs", "sites/x");
}

} // namespace
