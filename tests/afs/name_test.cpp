// Names and texts: what becomes a name, where it lies, and how names relate.

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "frame/diagnostics/diagnostics.h"

namespace {

class NameTest : public ProviderTest {
protected:
    NameTest() {
        server->Put("sites/x/Docs/a.pdf", "abc");
        server->Put("sites/x/sub/Docs/b.pdf", "abc");
    }

    std::wstring UrlOf(KOV::IAFS_Name* name) { return name == nullptr ? L"null" : fs->GetName(name)->GetUrl(); }
};

TEST_F(NameTest, TheRootIsTheWebAtOrAboveTheGivenUrl) {
    struct Row {
        const char* path;
        const char* web;
    };
    constexpr Row rows[] = {
        {"sites/x", "sites/x"}, {"sites/x/Docs/a.pdf", "sites/x"}, {"sites/x/sub/Docs/none.pdf", "sites/x/sub"}, {"", ""}};
    for (const Row& row : rows) {
        const ComPtr<Name> root = Bind(row.path);
        ASSERT_FALSE(root.IsNull()) << row.path;
        const std::wstring expected = *row.web == '\0' ? root->GetSession()->GetPath() : Url(row.web);
        EXPECT_EQ(root->GetUrl(), expected) << row.path;
        EXPECT_EQ(root->m_attributes, DWORD{KOV::AFS_FileAttribute_Folder});
        EXPECT_TRUE(root->GetParent().IsNull());
    }
}

TEST_F(NameTest, TextsBecomeNamesBelowTheirParent) {
    const ComPtr<Name> root = Bind();
    const ComPtr<Name> docs = At(root, L"Docs");
    const std::wstring unc = L"\\\\127.0.0.1@" + std::to_wstring(server->Port());
    struct Row {
        std::wstring text;
        HRESULT result;
        std::wstring url;
    };
    const Row rows[] = {
        {L"report.pdf", S_OK, Url("sites/x/Docs/report.pdf")},
        {L"/report.pdf", S_OK, Url("sites/x/Docs/report.pdf")},
        {L"sub folder/r\u00e9port #1.pdf", S_OK, Url("sites/x/Docs") + L"/sub folder/r\u00e9port #1.pdf"},
        {L"a:b.pdf", MakeHResult(0x803D0020), L"null"},
        {L"a?b", MakeHResult(0x803D0020), L"null"},
        {Url("sites/x"), S_OK, Url("sites/x")},
        {Url("sites/x/Other/c.pdf"), S_OK, Url("sites/x/Other/c.pdf")},
        {Url("sites/y/c.pdf"), E_INVALIDARG, L"null"},
        {L"http://elsewhere.example/sites/x/c.pdf", E_INVALIDARG, L"null"},
        {unc + L"\\sites\\x\\Docs\\a.pdf", S_OK, Url("sites/x/Docs/a.pdf")},
        // A sharing link is held against the server alone.
        {Url("") + L"/:w:/r/sites/y/doc.docx", S_OK, Url("") + L"/:w:/r/sites/y/doc.docx"},
    };
    for (const Row& row : rows) {
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(fs->StringToName(row.text.c_str(), 0, docs, &name), row.result) << Utf8FromWide(row.text);
        EXPECT_EQ(UrlOf(name), row.url) << Utf8FromWide(row.text);
    }
}

TEST_F(NameTest, FlagsDecideWhatStringToNameDoes) {
    const ComPtr<Name> docs = At(Bind(), L"Docs");
    const std::wstring known = Url("sites/x/Docs/a.pdf");
    struct Row {
        const wchar_t* text;
        DWORD flags;
        KOV::IAFS_Name* parent;
        HRESULT result;
        bool gives_name;
    };
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    const Row rows[] = {
        {L"a.pdf", 0, docs, S_OK, true},
        {L"a.pdf", 1, docs, S_OK, true},
        {L"a.pdf", 0, nullptr, E_INVALIDARG, false},
        {L"a.pdf", 0, foreign, E_INVALIDARG, false},
        {nullptr, 0, docs, E_INVALIDARG, false},
        {known.c_str(), 2, docs, E_INVALIDARG, false},
        {known.c_str(), 3, nullptr, E_INVALIDARG, false},
        {known.c_str(), 4, nullptr, S_OK, false},
        {known.c_str(), 6, docs, S_OK, false},
        {L"no location", 4, nullptr, E_INVALIDARG, false},
        {L"a.pdf", 8, docs, S_OK, false},
    };
    for (const Row& row : rows) {
        auto* name = reinterpret_cast<KOV::IAFS_Name*>(1);
        EXPECT_EQ(fs->StringToName(row.text, row.flags, row.parent, &name), row.result) << row.flags;
        EXPECT_EQ(name != nullptr, row.gives_name) << row.flags;
        ComPtr<KOV::IAFS_Name>::Attach(name);
    }
    EXPECT_EQ(fs->StringToName(L"a.pdf", 0, docs, nullptr), E_POINTER);
    ComPtr<KOV::IAFS_Name> same;
    EXPECT_EQ(fs->StringToName((docs->GetUrl() + L"/").c_str(), 0, docs, &same), S_OK);
    EXPECT_EQ(same.Get(), docs.Get()) << "a text that is the parent's own URL gives the parent itself";
}

TEST_F(NameTest, NamesBecomeTexts) {
    const ComPtr<Name> root = Bind();
    const ComPtr<Name> docs = At(root, L"Docs");
    const ComPtr<Name> file = At(docs, L"a b.pdf");
    const ComPtr<Name> folder = At(docs, L"sub/");
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    struct Row {
        KOV::IAFS_Name* name;
        DWORD flags;
        KOV::IAFS_Name* parent;
        HRESULT result;
        std::wstring text;
    };
    const Row rows[] = {
        {file, 0, nullptr, S_OK, Url("sites/x/Docs") + L"/a b.pdf"},
        {file, 0, docs, S_OK, L"a b.pdf"},
        {file, 2, docs, S_OK, L"a b.pdf"},
        {file, 0, root, S_OK, L"Docs/a b.pdf"},
        {file, 2, nullptr, S_OK, L"Docs/a b.pdf"},
        {folder, 0, docs, S_OK, L"sub"},
        {folder, 0, nullptr, S_OK, Url("sites/x/Docs/sub")},
        {docs, 0, docs, E_INVALIDARG, L""},
        {docs, 0, file, E_INVALIDARG, L""},
        {root, 2, nullptr, E_INVALIDARG, L""},
        {nullptr, 0, docs, E_INVALIDARG, L""},
        {foreign, 0, docs, E_INVALIDARG, L""},
        {file, 0, foreign, E_INVALIDARG, L""},
    };
    for (const Row& row : rows) {
        Bstr text;
        EXPECT_EQ(fs->NameToString(row.name, row.flags, row.parent, &text), row.result) << Utf8FromWide(row.text);
        EXPECT_EQ(text.Text(), row.text);
    }
    EXPECT_EQ(fs->NameToString(file, 0, nullptr, nullptr), E_POINTER);
}

TEST_F(NameTest, ParentsLeadUpwardWithoutAskingTheServer) {
    ComPtr<Name> name = At(Bind(), L"Docs/sub/a.pdf");
    const std::size_t requests = server->Count("*");
    for (const char* path : {"sites/x/Docs/sub", "sites/x/Docs", "sites/x", "sites"}) {
        ComPtr<KOV::IAFS_Name> parent;
        ASSERT_EQ(fs->NameGetParent(name, &parent), S_OK);
        EXPECT_EQ(UrlOf(parent), Url(path));
        name = fs->GetName(parent);
    }
    name = name->GetParent();
    ASSERT_FALSE(name.IsNull());
    EXPECT_TRUE(name->GetParent().IsNull()) << "above the server's root";
    EXPECT_EQ(server->Count("*"), requests);
    ComPtr<KOV::IAFS_Name> parent;
    EXPECT_EQ(fs->NameGetParent(nullptr, &parent), E_INVALIDARG);
    EXPECT_EQ(fs->NameGetParent(name, nullptr), E_POINTER);
}

TEST_F(NameTest, ABoundNameAsksTheServerOnlyWhenToldTo) {
    const ComPtr<Name> file = At(Bind(), L"Docs/A.PDF");
    using Type = SharePoint::Web::BindObjectType;
    EXPECT_EQ(file->GetObject(), nullptr);
    EXPECT_NE(file->BindObject(Type::file), nullptr);
    EXPECT_EQ(file->GetUrl(), Url("sites/x/Docs/a.pdf")) << "a bound name has the server's spelling";
    const std::size_t requests = server->Count("*");
    EXPECT_NE(file->BindObject(), nullptr);
    EXPECT_EQ(file->BindObject(Type::folder), nullptr);
    EXPECT_EQ(server->Count("*"), requests);
    EXPECT_THROW(file->BindObject(Type::folder, false), HResultException);
    EXPECT_GT(server->Count("*"), requests);
    EXPECT_NE(file->GetObject(), nullptr) << "a failed bind changes nothing";
}

TEST_F(NameTest, ARelativeTextInAFileThatIsNotThereFails) {
    const ComPtr<Name> missing = At(Bind(), L"none");
    ComPtr<KOV::IAFS_Name> name;
    EXPECT_LT(fs->StringToName(L"a.pdf", 0, missing, &name), 0);
    EXPECT_TRUE(name.IsNull());
}

TEST_F(NameTest, ChildrenLieBelowTheParentAndInItsWeb) {
    const ComPtr<Name> root = Bind();
    const ComPtr<Name> other_session = Bind();
    const ComPtr<Name> docs = At(root, L"Docs");
    const ComPtr<Name> bound_file = At(root, L"Docs/a.pdf");
    bound_file->BindObject();
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    struct Row {
        const char* what;
        KOV::IAFS_Name* name;
        KOV::IAFS_Name* parent;
        HRESULT result;
        bool is_child;
    };
    const ComPtr<Name> unbound_file = At(root, L"Docs/a.pdf");
    const ComPtr<Name> missing = At(root, L"Docs/none.pdf");
    const Row rows[] = {
        {"bound", bound_file, docs, S_OK, true},
        {"unbound", unbound_file, root, S_OK, true},
        {"missing", missing, root, S_OK, false},
        {"itself", docs, docs, S_OK, false},
        {"upside down", docs, bound_file, S_OK, false},
        {"another session", bound_file, other_session, S_OK, false},
        {"no parent", bound_file, nullptr, S_OK, false},
        {"no name", nullptr, docs, E_INVALIDARG, false},
        {"foreign name", foreign, docs, E_INVALIDARG, false},
        {"foreign parent", docs, foreign, E_INVALIDARG, false},
    };
    for (const Row& row : rows) {
        VARIANT_BOOL is_child = VARIANT_TRUE;
        EXPECT_EQ(fs->NameIsChildOf(row.name, row.parent, &is_child), row.result) << row.what;
        if (row.name != nullptr) {
            EXPECT_EQ(is_child != VARIANT_FALSE, row.is_child) << row.what;
        }
    }
    EXPECT_NE(unbound_file->GetObject(), nullptr) << "the question binds the child";
    EXPECT_EQ(fs->NameIsChildOf(docs, root, nullptr), E_POINTER);
}

TEST_F(NameTest, NamesAreEqualByTheirUrl) {
    const ComPtr<Name> root = Bind();
    const ComPtr<Name> other_session = Bind();
    const ComPtr<Name> docs = At(root, L"Docs");
    const ComPtr<Name> docs_elsewhere = At(other_session, L"docs/");
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    struct Row {
        KOV::IAFS_Name* name1;
        KOV::IAFS_Name* name2;
        HRESULT result;
        bool equal;
    };
    const Row rows[] = {
        {docs, docs, S_OK, true},
        {docs, docs_elsewhere, S_OK, true},
        {root, docs, S_OK, false},
        {nullptr, nullptr, S_OK, true},
        {docs, nullptr, S_OK, false},
        {nullptr, docs, S_OK, false},
        {docs, foreign, E_INVALIDARG, false},
        {foreign, docs, E_INVALIDARG, false},
        {foreign, foreign, S_OK, true},
    };
    for (const Row& row : rows) {
        VARIANT_BOOL equal = VARIANT_FALSE;
        EXPECT_EQ(fs->NamesAreEqual(row.name1, row.name2, &equal), row.result);
        EXPECT_EQ(equal != VARIANT_FALSE, row.equal);
    }
    EXPECT_EQ(fs->NamesAreEqual(docs, docs, nullptr), E_POINTER);
}

} // namespace
