// What the provider does with files and folders, over a real socket.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "afs/provider_fixture.h"
#include "frame/diagnostics/diagnostics.h"
#include "support/unanswered.h"

namespace {

class OperationsTest : public ProviderTest {
protected:
    OperationsTest() {
        server->Put("sites/x/Docs/a.pdf", "0123456789");
        server->MakeFolder("sites/x/Docs/Empty");
        root = Bind();
        docs = At(root, L"Docs");
        file = At(root, L"Docs/a.pdf");
    }

    struct Item {
        std::wstring title;
        DWORD attributes;
        ULONGLONG size;
        bool operator==(const Item&) const = default;
    };
    static Item ItemOf(KOV::IAFS_FileInfo* info) {
        Bstr title;
        Item item = {};
        EXPECT_EQ(info->get_Title(&title), S_OK);
        item.title = title.Text();
        EXPECT_EQ(info->get_Attributes(&item.attributes), S_OK);
        EXPECT_EQ(info->get_Size(&item.size), item.attributes != 0 ? E_INVALIDARG : S_OK);
        return item;
    }
    std::vector<std::pair<Item, std::wstring>> List(KOV::IAFS_EnumFolder* listing) {
        std::vector<std::pair<Item, std::wstring>> items;
        ComPtr<KOV::IAFS_EnumFolderItem> item;
        while (listing->Next(&item) == S_OK) {
            ComPtr<KOV::IAFS_Name> name;
            EXPECT_EQ(item->get_Name(&name), S_OK);
            items.emplace_back(ItemOf(item), fs->GetName(name)->GetUrl());
        }
        EXPECT_TRUE(item.IsNull());
        return items;
    }

    ComPtr<Name> root;
    ComPtr<Name> docs;
    ComPtr<Name> file;
};

TEST_F(OperationsTest, AListingTakesOneRequestAndGivesAllItems) {
    docs->BindObject();
    const std::size_t requests = server->Count("*");
    ComPtr<KOV::IAFS_EnumFolder> listing;
    ASSERT_EQ(fs->EnumFolder(docs, details, nullptr, &listing), S_OK) << Details();
    auto items = List(listing);
    EXPECT_EQ(server->Count("*"), requests + 1);
    std::sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].first, (Item{L"Empty", KOV::AFS_FileAttribute_Folder, 0}));
    EXPECT_EQ(items[0].second, Url("sites/x/Docs/Empty"));
    EXPECT_EQ(items[1].first, (Item{L"a.pdf", 0, 10}));
    EXPECT_EQ(items[1].second, Url("sites/x/Docs/a.pdf"));

    // The snapshot can be read again, and stays what it was.
    server->Put("sites/x/Docs/later.pdf", "x");
    EXPECT_EQ(listing->Reset(0, MakeObject<FlagObject>(true)), E_CANCELED);
    EXPECT_TRUE(List(listing).empty()) << "a refused reset keeps the position";
    EXPECT_EQ(listing->Reset(0, nullptr), S_OK);
    EXPECT_EQ(List(listing).size(), 2u);
    EXPECT_EQ(server->Count("*"), requests + 1);
    EXPECT_EQ(listing->Next(nullptr), E_POINTER);
}

TEST_F(OperationsTest, AnItemAnswersInBothItsRoles) {
    ComPtr<KOV::IAFS_EnumFolder> listing;
    ASSERT_EQ(fs->EnumFolder(docs, nullptr, nullptr, &listing), S_OK);
    ComPtr<KOV::IAFS_EnumFolderItem> item;
    ASSERT_EQ(listing->Next(&item), S_OK);
    const ComPtr<KOV::IAFS_FileInfo> info = item.As<KOV::IAFS_FileInfo>();
    ASSERT_FALSE(info.IsNull());
    EXPECT_EQ(info.As<KOV::IAFS_EnumFolderItem>().Get(), item.Get());
    EXPECT_EQ(item.As<IUnknown>().Get(), info.As<IUnknown>().Get());
    ULONGLONG written = 0;
    ULONGLONG accessed = 1;
    EXPECT_EQ(item->get_LastWriteTime(&written), S_OK);
    EXPECT_EQ(info->get_LastAccessTime(&accessed), S_OK);
    EXPECT_EQ(written, accessed);
    EXPECT_NE(written, 0u);
    EXPECT_EQ(item->get_Prop(L"any", nullptr), E_NOTIMPL);
    EXPECT_EQ(item->get_Title(nullptr), E_POINTER);
}

TEST_F(OperationsTest, WhatIsNoFolderCannotBeListed) {
    struct Row {
        const wchar_t* path;
        bool is_bound;
        const char* fault;
        HRESULT result;
        std::wstring text;
    };
    const std::wstring no_folder = L"Cannot enumerate non-existing folder";
    const Row rows[] = {
        {L"Docs/a.pdf", true, "", E_FAIL, no_folder},
        {L"Docs/a.pdf", false, "", E_FAIL, no_folder},
        {L"None", false, "", E_FAIL, no_folder},
        {L"Docs", false, "PROPFIND * status=500", E_FAIL, L"HTTP 500: "},
    };
    for (const Row& row : rows) {
        const ComPtr<Name> name = At(root, row.path);
        if (row.is_bound) {
            name->BindObject();
        }
        if (*row.fault != '\0') {
            server->Once(row.fault);
        }
        details->Clear();
        ComPtr<KOV::IAFS_EnumFolder> listing;
        EXPECT_EQ(fs->EnumFolder(name, details, nullptr, &listing), row.result) << Utf8FromWide(row.path);
        EXPECT_TRUE(TextOf(details).starts_with(row.text)) << Details();
        EXPECT_TRUE(listing.IsNull());
    }
}

TEST_F(OperationsTest, AnEmptyFolderListsNothing) {
    ComPtr<KOV::IAFS_EnumFolder> listing;
    ASSERT_EQ(fs->EnumFolder(At(root, L"Docs/Empty"), nullptr, nullptr, &listing), S_OK);
    for (int time = 0; time < 2; ++time) {
        auto* item = reinterpret_cast<KOV::IAFS_EnumFolderItem*>(1);
        EXPECT_EQ(listing->Next(&item), S_FALSE);
        EXPECT_EQ(item, nullptr);
    }
}

TEST_F(OperationsTest, FactsOfABoundNameAreThoseOfItsBinding) {
    ComPtr<KOV::IAFS_FileInfo> info;
    ASSERT_EQ(fs->GetFileInfo(file, details, nullptr, &info), S_OK) << Details();
    EXPECT_EQ(ItemOf(info), (Item{L"a.pdf", 0, 10}));
    const std::size_t requests = server->Count("*");
    server->Remove("sites/x/Docs/a.pdf");
    ASSERT_EQ(fs->GetFileInfo(file, details, nullptr, &info), S_OK);
    EXPECT_EQ(ItemOf(info), (Item{L"a.pdf", 0, 10}));
    EXPECT_EQ(server->Count("*"), requests);
    EXPECT_EQ(fs->GetFileInfo(At(root, L"Docs/a.pdf"), details, nullptr, &info), E_INVALIDARG);
    server->Put("sites/x/Docs/b.pdf", "");
    ASSERT_EQ(fs->GetFileInfo(At(root, L"Docs/b.pdf"), details, nullptr, &info), S_OK);
    EXPECT_EQ(ItemOf(info), (Item{L"b.pdf", 0, 0}));
}

TEST_F(OperationsTest, FilesAndFoldersMoveByTheServersHand) {
    using Tree = std::vector<std::string>;
    struct Row {
        const char* what;
        std::function<HRESULT()> run;
        HRESULT result;
        Tree added;
        Tree gone;
    };
    const auto to = [this](const wchar_t* path) { return At(root, path); };
    const ComPtr<Name> empty = At(root, L"Docs/Empty");
    empty->BindObject();
    const Row rows[] = {
        {"create", [&] { return fs->CreateFolder(to(L"New/Deep"), 0, details, nullptr); }, S_OK, {"sites/x/New/Deep"}, {}},
        {"copy", [&] { return fs->Copy(file, to(L"New/b c.pdf"), details, nullptr); }, S_OK, {"sites/x/New/b c.pdf"}, {}},
        {"move",
         [&] { return fs->Move(to(L"New/b c.pdf"), to(L"Docs/#m.pdf"), details, nullptr); },
         S_OK,
         {"sites/x/Docs/#m.pdf"},
         {"sites/x/New/b c.pdf"}},
        {"rename",
         [&] { return fs->Rename(to(L"Docs/#m.pdf"), to(L"Docs/r.pdf"), details, nullptr); },
         S_OK,
         {"sites/x/Docs/r.pdf"},
         {"sites/x/Docs/#m.pdf"}},
        {"move a folder",
         [&] { return fs->Move(empty, to(L"Docs/Full"), details, nullptr); },
         E_INVALIDARG,
         {},
         {"sites/x/Docs/Full"}},
        {"rename a folder",
         [&] { return fs->Rename(empty, to(L"Docs/Full"), details, nullptr); },
         S_OK,
         {"sites/x/Docs/Full"},
         {"sites/x/Docs/Empty"}},
        {"delete", [&] { return fs->Delete(to(L"Docs/r.pdf"), details, nullptr); }, S_OK, {}, {"sites/x/Docs/r.pdf"}},
        {"delete nothing", [&] { return fs->Delete(to(L"Docs/r.pdf"), details, nullptr); }, E_INVALIDARG, {}, {}},
        {"delete a folder",
         [&] { return fs->Delete(to(L"New"), details, nullptr); },
         S_OK,
         {},
         {"sites/x/New", "sites/x/New/Deep"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.run(), row.result) << row.what << ": " << Details();
        for (const std::string& path : row.added) {
            EXPECT_TRUE(server->Exists(path)) << row.what << ' ' << path;
        }
        for (const std::string& path : row.gone) {
            EXPECT_FALSE(server->Exists(path)) << row.what << ' ' << path;
        }
    }
    EXPECT_EQ(server->Read("sites/x/Docs/a.pdf"), "0123456789");
}

TEST_F(OperationsTest, AMovedNameStaysWhereItWasAndTheNewOneBinds) {
    const ComPtr<Name> target = At(root, L"Docs/moved.pdf");
    ASSERT_EQ(fs->Move(file, target, details, nullptr), S_OK) << Details();
    EXPECT_EQ(file->GetUrl(), Url("sites/x/Docs/a.pdf"));
    EXPECT_NE(file->GetObject(), nullptr);
    EXPECT_EQ(target->GetObject(), nullptr);
    EXPECT_NE(target->BindObject(), nullptr);
    EXPECT_THROW(file->BindObject(SharePoint::Web::BindObjectType::any, false), HResultException);
}

TEST_F(OperationsTest, ARefusedWriteSaysWhyAndChangesNothing) {
    file->BindObject();
    server->Once("DELETE * status=409");
    EXPECT_EQ(fs->Delete(file, details, nullptr), E_FAIL);
    EXPECT_NE(TextOf(details).find(L"409"), std::wstring::npos) << Details();
    // A plain refusal might be answered by a sign-in in a browser, for which this host has no window.
    server->Once("DELETE * status=403");
    EXPECT_EQ(fs->Delete(file, details, nullptr), HRESULT_FROM_WIN32(1459));
    EXPECT_NE(TextOf(details).find(L"refuses access"), std::wstring::npos) << Details();
    EXPECT_TRUE(server->Exists("sites/x/Docs/a.pdf"));
}

TEST_F(OperationsTest, BadArgumentsAndACanceledFlagNeverReachTheServer) {
    const ComPtr<FlagObject> canceled = MakeObject<FlagObject>(true);
    const ComPtr<ForeignName> foreign = MakeObject<ForeignName>();
    ComPtr<KOV::IAFS_EnumFolder> listing;
    ComPtr<KOV::IAFS_FileInfo> info;
    ComPtr<KOV::IAFS_File> opened;
    ComPtr<KOV::IAFS_Name> bound;
    using Operation = std::function<HRESULT(KOV::IAFS_Name*, KOV::IKOV_Flag*)>;
    const std::pair<const char*, Operation> operations[] = {
        {"EnumFolder", [&](auto* name, auto* flag) { return fs->EnumFolder(name, nullptr, flag, &listing); }},
        {"GetFileInfo", [&](auto* name, auto* flag) { return fs->GetFileInfo(name, nullptr, flag, &info); }},
        {"OpenFile", [&](auto* name, auto* flag) { return fs->OpenFile(name, 1, nullptr, flag, &opened); }},
        {"CreateFolder", [&](auto* name, auto* flag) { return fs->CreateFolder(name, 0, nullptr, flag); }},
        {"Move", [&](auto* name, auto* flag) { return fs->Move(name, file, nullptr, flag); }},
        {"Move to", [&](auto* name, auto* flag) { return fs->Move(file, name, nullptr, flag); }},
        {"Copy to", [&](auto* name, auto* flag) { return fs->Copy(file, name, nullptr, flag); }},
        {"Rename to", [&](auto* name, auto* flag) { return fs->Rename(file, name, nullptr, flag); }},
        {"Delete", [&](auto* name, auto* flag) { return fs->Delete(name, nullptr, flag); }},
        {"BindFlush", [&](auto* name, auto* flag) { return fs->BindFlush(name, 0, 0, nullptr, flag); }},
        {"Exec", [&](auto* name, auto* flag) { return fs->Exec(name, L"SignOut", nullptr, nullptr, nullptr, flag); }},
    };
    const std::size_t requests = server->Count("*");
    for (const auto& [what, run] : operations) {
        EXPECT_EQ(run(docs, canceled), E_CANCELED) << what;
        EXPECT_EQ(run(nullptr, nullptr), E_INVALIDARG) << what;
        EXPECT_EQ(run(foreign, nullptr), E_INVALIDARG) << what;
    }
    EXPECT_EQ(fs->EnumFolder(docs, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(fs->GetFileInfo(docs, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(fs->OpenFile(file, 1, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(fs->GetVolumeSpace(docs, nullptr, nullptr, nullptr, nullptr, canceled), E_CANCELED);
    EXPECT_EQ(fs->GetVolumeSpace(docs, nullptr, nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(fs->BindToPath(L"https://s", nullptr, 0, nullptr, canceled, &bound), E_CANCELED);
    EXPECT_EQ(fs->BindToPath(nullptr, nullptr, 0, nullptr, nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(fs->BindToPath(L"https://s", nullptr, 0, details, nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(TextOf(details), L"Cannot bind path with null context");
    EXPECT_EQ(fs->BindToObject(nullptr, nullptr, 0, nullptr, nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(fs->BindToObject(details, nullptr, 0, nullptr, nullptr, &bound), E_INVALIDARG);
    EXPECT_EQ(server->Count("*"), requests);
}

TEST_F(OperationsTest, TellsWhetherAFileIsCheckedOutByTheUser) {
    struct Row {
        KOV::IAFS_Name* name;
        const wchar_t* property;
        HRESULT result;
        bool value;
    };
    const ComPtr<Name> folder = At(root, L"Docs/Empty");
    const Row rows[] = {
        {file, L"CheckedOut", S_OK, false},
        {folder, L"CheckedOut", E_INVALIDARG, false},
        {nullptr, L"CheckedOut", E_INVALIDARG, false},
        {nullptr, L"canCREATEcacheOnLocalFile", S_OK, true},
        {file, L"Other", E_INVALIDARG, false},
        {file, nullptr, E_INVALIDARG, false},
    };
    for (const Row& row : rows) {
        Variant value;
        EXPECT_EQ(fs->get_Prop(row.name, row.property, &value), row.result);
        EXPECT_EQ(value.vt, row.result == S_OK ? VT_BOOL : VT_EMPTY);
        EXPECT_EQ(value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE, row.value);
    }
    EXPECT_EQ(fs->get_Prop(file, L"CheckedOut", nullptr), E_POINTER);
    EXPECT_EQ(fs->put_Prop(file, L"CheckedOut", nullptr), E_NOTIMPL);
}

TEST_F(OperationsTest, CacheEntriesAreMadeAndDroppedByName) {
    const auto array = [](std::vector<Variant> elements) {
        Variant arguments;
        arguments.vt = VT_ARRAY | VT_VARIANT;
        arguments.parray = SafeArrayCreateVector(VT_VARIANT, 3, static_cast<ULONG>(elements.size()));
        for (LONG i = 0; i < static_cast<LONG>(elements.size()); ++i) {
            LONG index = 3 + i;
            SafeArrayPutElement(arguments.parray, &index, &elements[static_cast<std::size_t>(i)]);
        }
        return arguments;
    };
    const auto as_variant = [](Name* name) { return Variant(static_cast<IUnknown*>(name)); };
    const ComPtr<Name> elsewhere = At(Bind(), L"Docs/a.pdf");
    file->BindObject();
    struct Row {
        const char* what;
        const wchar_t* operation;
        Variant arguments;
        HRESULT result;
    };
    const Row rows[] = {
        {"other operation", L"Other", {}, E_INVALIDARG},
        {"no arguments", L"DeleteFileCacheEntry", {}, E_INVALIDARG},
        {"empty array", L"DeleteFileCacheEntry", array({}), E_INVALIDARG},
        {"no name", L"DeleteFileCacheEntry", array({Variant(1)}), E_INVALIDARG},
        {"another session", L"DeleteFileCacheEntry", array({as_variant(elsewhere)}), E_INVALIDARG},
        {"nothing kept", L"deleteFILEcacheEntry", array({as_variant(file), Variant(0)}), S_OK},
        {"too few", L"CreateCacheOnLocalFile", array({as_variant(file)}), E_INVALIDARG},
        {"no path", L"CreateCacheOnLocalFile", array({as_variant(file), Variant(1)}), E_INVALIDARG},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(fs->Exec(root, row.operation, &row.arguments, nullptr, nullptr, nullptr), row.result) << row.what;
    }

    const std::filesystem::path local = std::filesystem::temp_directory_path() / ("kov-local-" + std::to_string(server->Port()));
    std::ofstream(local) << "local content";
    const Variant arguments = array({as_variant(file), Variant(local.wstring()), Variant(true)});
    EXPECT_EQ(fs->Exec(root, L"CreateCacheOnLocalFile", &arguments, nullptr, details, nullptr), S_OK) << Details();
    EXPECT_TRUE(std::filesystem::exists(local)) << "the file was to be kept";
    std::filesystem::remove(local);
    // What was put into the cache is what a flush sends.
    EXPECT_EQ(fs->BindFlush(root, 0, 0, details, nullptr), S_OK) << Details();
    EXPECT_EQ(server->Read("sites/x/Docs/a.pdf"), "local content");
}

class Monitor final : public UnansweredProgressMon {};

TEST_F(OperationsTest, EachThreadHasItsProgressMonitor) {
    const ComPtr<Monitor> monitor1 = MakeObject<Monitor>();
    const ComPtr<Monitor> monitor2 = MakeObject<Monitor>();
    ComPtr<KOV::IKOV_ProgressMon> found;
    EXPECT_EQ(fs->SetProgressMon(nullptr), S_FALSE);
    EXPECT_EQ(fs->GetProgressMon(0, &found), S_FALSE);
    EXPECT_EQ(fs->SetProgressMon(monitor1), S_OK);
    EXPECT_EQ(fs->SetProgressMon(monitor2), S_OK);
    EXPECT_EQ(fs->GetProgressMon(0, &found), S_OK);
    EXPECT_EQ(found.Get(), monitor2.Get());
    std::thread([&, main_thread = GetCurrentThreadId()] {
        ComPtr<KOV::IKOV_ProgressMon> seen;
        EXPECT_EQ(fs->GetProgressMon(0, &seen), S_FALSE);
        EXPECT_TRUE(seen.IsNull());
        EXPECT_EQ(fs->GetProgressMon(main_thread, &seen), S_OK);
        EXPECT_EQ(seen.Get(), monitor2.Get());
    }).join();
    EXPECT_EQ(fs->SetProgressMon(nullptr), S_OK);
    EXPECT_EQ(fs->GetProgressMon(0, &found), S_FALSE);
    EXPECT_TRUE(found.IsNull());
    EXPECT_EQ(fs->GetProgressMon(0, nullptr), E_POINTER);
}

TEST_F(OperationsTest, TheProviderSaysWhatItIs) {
    Bstr text;
    EXPECT_EQ(TextOfBstr(fs->get_Name(&text), text), L"SharePoint");
    EXPECT_EQ(TextOfBstr(fs->get_DispName(&text), text), L"SharePoint");
    DWORD features = 0;
    EXPECT_EQ(fs->get_Features(&features), S_OK);
    EXPECT_EQ(features, 0x3000A7FFu);
    EXPECT_EQ(TextOfBstr(fs->get_UserString(&text), text), L"");
    EXPECT_EQ(fs->put_UserString(L"of the user"), S_OK);
    EXPECT_EQ(TextOfBstr(fs->get_UserString(&text), text), L"of the user");
    EXPECT_EQ(fs->put_UserString(nullptr), S_OK);
    EXPECT_EQ(TextOfBstr(fs->get_UserString(&text), text), L"");
    EXPECT_NE(text.m_str, nullptr);
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    EXPECT_EQ(fs->get_Icon(&icon), S_OK);
    EXPECT_EQ(icon.Get(), module.plugin->m_icon.Get());
    EXPECT_EQ(fs->get_Icon(nullptr), E_POINTER);
    EXPECT_EQ(fs->BindClose(nullptr, 0, 0, nullptr, nullptr), S_OK);
}

} // namespace
