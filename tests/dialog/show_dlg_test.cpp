// What the host may ask of the provider's dialog, before a window comes into it: this host has none.

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "dialog/front/dialog_parameters.h"
#include "settings/cab_node.h"

namespace {

constexpr HRESULT no_windows = MakeHResult(0x800705B3);

class ShowDlgTest : public ProviderTest {
protected:
    ShowDlgTest() {
        server->MakeFolder("sites/x/Docs");
        root = Bind();
    }

    HRESULT Show(DWORD type, KOV::IAFS_Name* folder, KOV::IAUX_Cab* parameters = nullptr) {
        names = MarkedNames();
        choice = 77;
        return fs->ShowDlg(type, folder, parameters, nullptr, &names, &choice);
    }
    /// No collection, but told from null.
    static KOV::IAFS_NamesCollection* MarkedNames() { return reinterpret_cast<KOV::IAFS_NamesCollection*>(1); }

    ComPtr<KOV::IAUX_Cab> Parameters(IUnknown* initial_path_name) {
        ComPtr<KOV::IAUX_Cab> cab = module.NewCab();
        Ui::DialogParameters parameters;
        EXPECT_EQ(parameters.LoadFromCab(module.plugin->m_aux_inst, cab), S_OK);
        const Variant value(static_cast<IUnknown*>(initial_path_name));
        EXPECT_EQ(CabNode(cab)[L"InitialPathName"].p->put_v(&value), S_OK);
        return cab;
    }

    ComPtr<Name> root;
    KOV::IAFS_NamesCollection* names = nullptr;
    DWORD choice = 0;
};

TEST_F(ShowDlgTest, RefusesWhatItCannotShow) {
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    for (const DWORD type : {0u, 4u}) {
        EXPECT_EQ(Show(type, root), E_INVALIDARG);
        EXPECT_EQ(names, MarkedNames()) << "untouched";
        EXPECT_EQ(choice, 77u);
    }
    for (const DWORD type : {KOV::AFS_Dlg_OpenFiles, KOV::AFS_Dlg_SaveFile}) {
        for (KOV::IAFS_Name* const folder :
             {static_cast<KOV::IAFS_Name*>(nullptr), static_cast<KOV::IAFS_Name*>(foreign.Get())}) {
            EXPECT_EQ(Show(type, folder), E_INVALIDARG);
            EXPECT_EQ(names, nullptr);
            EXPECT_EQ(choice, 2u);
        }
        EXPECT_EQ(fs->ShowDlg(type, root, nullptr, nullptr, nullptr, &choice), E_POINTER);
        EXPECT_EQ(fs->ShowDlg(type, root, nullptr, nullptr, &names, nullptr), E_POINTER);
    }
}

TEST_F(ShowDlgTest, FailsInWordsOfTheHostWhereThereAreNoWindows) {
    for (const DWORD type : {KOV::AFS_Dlg_OpenFiles, KOV::AFS_Dlg_SaveFile}) {
        EXPECT_EQ(Show(type, root), no_windows);
        EXPECT_EQ(names, nullptr);
        EXPECT_EQ(choice, 2u);
    }
}

TEST_F(ShowDlgTest, StartsOnlyOnTheSiteThatItWasGiven) {
    const ComPtr<Name> other_site = Bind("sites/y");
    EXPECT_EQ(Show(KOV::AFS_Dlg_OpenFiles, root, Parameters(other_site)), E_INVALIDARG);
    EXPECT_EQ(Show(KOV::AFS_Dlg_OpenFiles, root, Parameters(MakeObject<ForeignName>())), E_INVALIDARG);
    EXPECT_EQ(Show(KOV::AFS_Dlg_OpenFiles, root, Parameters(At(root, L"Docs"))), no_windows) << "as far as a window";
    EXPECT_EQ(Show(KOV::AFS_Dlg_OpenFiles, root, Parameters(nullptr)), no_windows);
    // Another bind of the same site is the same site.
    EXPECT_EQ(Show(KOV::AFS_Dlg_OpenFiles, root, Parameters(Bind())), no_windows);
}

TEST_F(ShowDlgTest, LeavesFoldersToTheHost) {
    const std::size_t requests = server->Count("*");
    names = MarkedNames();
    EXPECT_EQ(Show(KOV::AFS_Dlg_SelectFolder, root),
              module.plugin->m_afs_inst->ShowDefaultDlg(KOV::AFS_Dlg_SelectFolder, root, nullptr, nullptr, &names, &choice));
    EXPECT_EQ(server->Count("*"), requests);
}

TEST_F(ShowDlgTest, BeginsWithWhatTheHostsOwnDialogBeginsWith) {
    for (const DWORD type : {KOV::AFS_Dlg_OpenFiles, KOV::AFS_Dlg_SaveFile, KOV::AFS_Dlg_SelectFolder}) {
        ComPtr<KOV::IAUX_Cab> expected;
        ComPtr<KOV::IAUX_Cab> cab;
        const HRESULT result = module.plugin->m_afs_inst->CreateDlgDefaultParams(type, &expected);
        EXPECT_EQ(fs->CreateDlgParams(type, &cab), result);
        EXPECT_EQ(cab.IsNull(), expected.IsNull());
    }
}

TEST_F(ShowDlgTest, ReadsItsParametersByTheirTypesAndWritesTheTypeOfFilesAlone) {
    const ComPtr<KOV::IAUX_Cab> cab = Parameters(root);
    const CabNode node(cab);
    node[L"Flags"].SetInt(20);
    node[L"Title"].SetString(L"A title");
    node[L"FileFilterIndex"].SetInt(-1);
    node[L"DefaultExt"].SetString(L"pdf");
    Ui::DialogParameters parameters;
    ASSERT_EQ(parameters.LoadFromCab(module.plugin->m_aux_inst, cab), S_OK);
    EXPECT_EQ(parameters.Flags, Ui::DialogFlag_AddDefaultExt | Ui::DialogFlag_OverwritePrompt);
    EXPECT_EQ(parameters.Title.Text(), L"A title");
    EXPECT_EQ(parameters.FileFilterIndex, -1);
    EXPECT_EQ(parameters.DefaultExt.Text(), L"pdf");
    EXPECT_EQ(parameters.ActionBtnTitle.Text(), L"");
    EXPECT_EQ(parameters.InitialPathName.Get(), static_cast<KOV::IAFS_Name*>(root.Get()));
    EXPECT_TRUE(parameters.SettingsBtnCallbacks.IsNull());

    parameters.FileFilterIndex = 2;
    parameters.Title = Bstr(L"Another title");
    ASSERT_EQ(parameters.SaveToCab(module.plugin->m_aux_inst, cab), S_OK);
    EXPECT_EQ(node[L"FileFilterIndex"].GetInt(), 2);
    EXPECT_EQ(node[L"Title"].GetString().Text(), L"A title");
    EXPECT_EQ(parameters.LoadFromCab(module.plugin->m_aux_inst, nullptr), E_INVALIDARG);
}

} // namespace
