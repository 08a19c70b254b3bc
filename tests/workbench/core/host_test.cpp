#include <gtest/gtest.h>

#include "fresh_folder.h"
#include "platform/errors.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "scripted_plugin.h"
#include "scripted_provider.h"
#include "workbench/core/commands.h"
#include "workbench/core/documents.h"
#include "workbench/core/extensions.h"
#include "workbench/core/host.h"
#include "workbench/scripted_boxes.h"

namespace {

class ScriptedPrompt final : public AccountPrompt {
public:
    std::optional<AccountAnswer> Ask(const AccountDemand& demand) override {
        demands.push_back(demand);
        return answer;
    }
    std::vector<AccountDemand> demands;
    std::optional<AccountAnswer> answer;
};

class HostTest : public testing::Test {
protected:
    FreshFolder m_folder;
    MainLoop m_loop;
    ScriptedBoxes m_boxes;
    ScriptedPrompt m_prompt;
    ComPtr<Host> m_host =
        MakeObject<Host>(HostOptions{m_folder.Path() / "state", m_folder.Path() / "none.kvp", &m_boxes, &m_prompt}, m_loop);
};

TEST_F(HostTest, AnswersToADemandForAnAccount) {
    ComPtr<KOV::IAFS_BindContext> context;
    ASSERT_EQ(m_host->CreateStdBindContext(&context), S_OK);
    // The module passes the same variables in and out.
    Bstr user(L"old");
    Bstr password(L"wrong");
    BSTR user_variable = user;
    BSTR password_variable = password;
    std::wstring host = L"server";
    const auto ask = [&](DWORD flags) {
        return context->OnGetUserAccount(nullptr, host.data(), nullptr, user_variable, password_variable, &user_variable,
                                         &password_variable, nullptr, flags);
    };
    EXPECT_EQ(ask(0), MakeHResult(0x821704C7)) << "the user gave up";
    EXPECT_EQ(user_variable, user.m_str);
    m_prompt.answer = AccountAnswer{L"ann", L"secret"};
    ASSERT_EQ(ask(0), S_OK);
    EXPECT_EQ(m_prompt.demands.back().user, L"old");
    EXPECT_EQ(m_prompt.demands.back().password, L"wrong");
    EXPECT_EQ(m_prompt.demands.back().host, L"server");
    EXPECT_STREQ(user_variable, L"ann");
    EXPECT_STREQ(password_variable, L"secret");
    SysFreeString(user_variable);
    SysFreeString(password_variable);
    user_variable = password_variable = nullptr;
    m_prompt.demands.clear();
    EXPECT_EQ(ask(KOV::AFS_BindContext_NoUI), S_OK);
    EXPECT_EQ(user_variable, nullptr) << "nobody's account goes to whoever is looked at";
    EXPECT_TRUE(m_prompt.demands.empty());
}

TEST_F(HostTest, PutsTheModulesQuestionsAndGivesBackTheButton) {
    Bstr title;
    ASSERT_EQ(m_host->GetLocalStr(L"btn.close", &title), S_OK);
    const KOV::MessageBoxItem button{L"ok", title};
    KOV::MessageBoxParameters record{};
    record.size = sizeof(record);
    record.message = L"Text";
    record.buttons = &button;
    record.button_count = 1;
    m_boxes.Expect({L"btn.close"}, {std::size_t{0}});
    DWORD check = 9, radio = 9, id = 9;
    Bstr edit;
    EXPECT_EQ(m_host->ShowMsgBox(&record, &check, &radio, &edit, &id), S_OK);
    EXPECT_EQ(id, 1u);
    EXPECT_EQ(edit.m_str, nullptr);
    record.size = 0;
    EXPECT_EQ(m_host->ShowMsgBox(&record, &check, &radio, &edit, &id), E_INVALIDARG);
    EXPECT_EQ(id, 0u);
}

TEST_F(HostTest, NumbersNamesFromOneAndMakesNoneUnasked) {
    DWORD id = 0;
    EXPECT_EQ(m_host->Str2ID(L"ok", VARIANT_FALSE, &id), S_OK);
    EXPECT_EQ(id, 1u);
    EXPECT_EQ(m_host->Str2ID(L"new", VARIANT_FALSE, &id), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    EXPECT_EQ(m_host->Str2ID(L"new", VARIANT_TRUE, &id), S_OK);
    const DWORD made = id;
    EXPECT_EQ(m_host->Str2ID(L"new", VARIANT_FALSE, &id), S_OK);
    EXPECT_EQ(id, made);
    IUnknown* extension = nullptr;
    EXPECT_EQ(m_host->GetExtension(L"NONE", &extension), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    Bstr text;
    EXPECT_EQ(m_host->GetLocalStr(L"no.such", &text), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
}

TEST_F(HostTest, KeepsPlacesAndFindsTheOneOfALocation) {
    const auto store = std::make_shared<Store>(m_folder.Path() / "places.sqlite");
    const auto provider = MakeObject<ScriptedProvider>();
    Accounts accounts(store, provider);
    const auto urls = [&] {
        std::wstring text;
        for (const SavedAccount& account : accounts.List()) {
            text += account.url + L"," + account.user + L" ";
        }
        return text;
    };
    const auto broad = MakeObject<ScriptedAccount>(L"http://s/", L"ann");
    const auto narrow = MakeObject<ScriptedAccount>(L"http://s/web/", L"bob");
    const std::int64_t id = accounts.Save(broad);
    accounts.Save(narrow);
    EXPECT_EQ(urls(), L"http://s/,ann http://s/web/,bob ");
    EXPECT_EQ(accounts.Find(L"http://s/web/a.pdf")->user, L"bob") << "the longest";
    EXPECT_EQ(accounts.Find(L"ann@http://s/web/a.pdf")->user, L"ann") << "whom the URL names";
    EXPECT_FALSE(accounts.Find(L"http://other/"));

    broad->user = L"eve";
    EXPECT_EQ(accounts.Save(MakeObject<ScriptedAccount>(L"HTTP://S/", L"eve")), id) << "the same place";
    broad->url = L"http://s/home/";
    accounts.Update(id, broad);
    EXPECT_EQ(urls(), L"http://s/home/,eve http://s/web/,bob ");
    broad->user = L"half";
    broad->refuses_to_save = true;
    EXPECT_THROW(accounts.Update(id, broad), HostException);
    EXPECT_EQ(urls(), L"http://s/home/,eve http://s/web/,bob ") << "nothing half saved";

    EXPECT_TRUE(accounts.Remove(L"http://S/home/"));
    EXPECT_FALSE(accounts.Remove(L"http://s/home/"));
    accounts.Update(id, narrow);
    EXPECT_EQ(urls(), L"http://s/web/,bob ") << "what was removed stays removed";
    EXPECT_TRUE(accounts.Remove(L"http://s/web/"));
    Store::Query left(*store, "SELECT count(*) FROM cab_node");
    left.Step();
    EXPECT_EQ(left.Integer(0), 0) << "no cab is left behind";
}

TEST_F(HostTest, SettingsKeepTheSchemaThatTheModuleGaveThemWheneverItAsksForThem) {
    constexpr std::string_view schema = "<CabTemplate><ItemSet id='T'><Item id='Places' type='Array' itemSet='P'/></ItemSet>"
                                        "<ItemSet id='P'><Item type='Dictionary' itemSet='D'/></ItemSet>"
                                        "<ItemSet id='D'><Item id='Url' type='String'/></ItemSet>"
                                        "<Root id='Root' type='Dictionary' itemSet='T'/></CabTemplate>";
    const auto plugin = MakeObject<ScriptedPlugin>();
    ComPtr<KOV::IAUX_Cab> settings;
    EXPECT_EQ(m_host->GetPluginSettings(plugin, VARIANT_FALSE, &settings), S_OK);
    EXPECT_TRUE(settings.IsNull()) << "none yet, and that is no failure";
    ASSERT_EQ(m_host->GetPluginSettings(plugin, VARIANT_TRUE, &settings), S_OK);
    ASSERT_EQ(settings->SetTemplate2(schema.data(), static_cast<ULONG>(schema.size()), L"Root"), S_OK);
    ASSERT_EQ(m_host->GetPluginSettings(plugin, VARIANT_FALSE, &settings), S_OK);
    ComPtr<KOV::IAUX_CabItem> place;
    ASSERT_EQ(ScriptedAccount::Item(settings, L"Places")->AddNew(&place), S_OK);
    const Variant key(std::wstring_view(L"Url"));
    ComPtr<KOV::IAUX_CabItem> url;
    EXPECT_EQ(place->GetItem(&key, &url), S_OK);
}

TEST_F(HostTest, HasOneTableOfNumbersForTheWholeProgram) {
    DWORD id = 0;
    EXPECT_EQ(m_host->Str2ID(L"host.test.some name", VARIANT_FALSE, &id), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    EXPECT_EQ(m_host->Str2ID(L"host.test.some name", VARIANT_TRUE, &id), S_OK);
    EXPECT_GE(id, 1000u);
    DWORD ok = 0;
    EXPECT_EQ(m_host->Str2ID(L"ok", VARIANT_FALSE, &ok), S_OK);
    EXPECT_EQ(ok, 1u);
    const auto other = MakeObject<Host>(HostOptions{m_folder.Path() / "other", m_folder.Path() / "none.kvp"}, m_loop);
    DWORD other_id = 0;
    EXPECT_EQ(other->Str2ID(L"host.test.some name", VARIANT_FALSE, &other_id), S_OK);
    EXPECT_EQ(other_id, id);
}

TEST_F(HostTest, WritesFileTypesAndSizesAsPeopleDo) {
    const struct {
        const wchar_t* token;
        LONG mode;
        const wchar_t* filter;
    } filters[] = {
        {L"<pdf>", 1, L"PDF documents|*.pdf|"},
        {L"<doc>", 0, L"Word documents|*.doc;*.docx|"},
        {L"<all>", 1, L"All files|*.*|"},
        {L"<allSupp>", 0, L"All supported files|*.doc;*.docx;*.xls;*.xlsx;*.ppt;*.pptx;*.vsd;*.vsdx;*.pdf|"},
        {L"<unheard of>", 1, L""},
    };
    for (const auto& row : filters) {
        Bstr filter;
        EXPECT_EQ(m_host->GetFileFilter(row.token, row.mode, &filter), S_OK);
        EXPECT_EQ(filter.View(), row.filter);
    }
    wchar_t point[8];
    ASSERT_NE(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, point, std::size(point)), 0);
    const struct {
        ULONGLONG size;
        LONG unit;
        std::wstring text;
    } sizes[] = {
        {0, -1, L"0 bytes"},
        {1, -1, L"1 byte"},
        {1023, -1, L"1023 bytes"},
        {1024, -1, L"1" + std::wstring(point) + L"0 KB"},
        {1536, -1, L"1" + std::wstring(point) + L"5 KB"},
        {150 * 1024, -1, L"150 KB"},
        {ULONGLONG{3} << 30, -1, L"3" + std::wstring(point) + L"0 GB"},
        {~ULONGLONG{0}, -1, L"16777216 TB"},
        {512, 1, L"0" + std::wstring(point) + L"5 KB"},
    };
    for (const auto& row : sizes) {
        Bstr text;
        EXPECT_EQ(m_host->FormatFileSize(row.size, row.unit, &text), S_OK);
        std::wstring plain = text.Text();
        wchar_t thousand[8];
        ASSERT_NE(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_STHOUSAND, thousand, std::size(thousand)), 0);
        for (std::size_t at; (at = plain.find(thousand)) != std::wstring::npos;) {
            plain.erase(at, std::wcslen(thousand));
        }
        EXPECT_EQ(plain, row.text);
    }
}

TEST_F(HostTest, WithoutWindowsHasCommandsAndSaysWhatItLacks) {
    ComPtr<IUnknown> extension;
    ASSERT_EQ(m_host->GetExtension(L"UIX", &extension), S_OK);
    const auto uix = extension.As<KOV::IUIX_Inst>();
    constexpr HRESULT no_window = MakeHResult(0x800705B3);
    ComPtr<KOV::IUIX_CmdManager> manager;
    ComPtr<KOV::IUIX_CmdMenu> menu;
    ComPtr<KOV::IUIX_CmdPanel> panel;
    ComPtr<KOV::IUIX_Theme> theme;
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    EXPECT_EQ(uix->get_CmdManager(&manager), S_OK);
    EXPECT_EQ(manager.Get(), &m_host->Commands());
    EXPECT_EQ(uix->CreateCmdMenu(&menu), S_OK);
    EXPECT_EQ(uix->CreateCmdPanel(&panel), S_OK);
    EXPECT_EQ(uix->get_Theme(&theme), S_OK);
    EXPECT_FALSE(theme.IsNull());
    EXPECT_EQ(uix->GetIcon(L"ico.none", &icon), S_OK);
    EXPECT_TRUE(icon.IsNull());
    ComPtr<KOV::IUIX_Obj> object;
    ComPtr<KOV::IUIX_CmdBar> bar;
    ComPtr<KOV::IUIX_NumberValue> number;
    EXPECT_EQ(uix->CreateObj(nullptr, &object), no_window);
    EXPECT_EQ(uix->CreateCmdBar(nullptr, nullptr, nullptr, nullptr, 0, &bar), no_window);
    EXPECT_EQ(uix->CreateNumberValue(&number), no_window);

    HWND window = this;
    ComPtr<KOV::IKOV_ProgressMon> monitor;
    DWORD type = 3;
    EXPECT_EQ(m_host->GetDlgOwnerWnd(0, &window), S_OK);
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(m_host->get_ProgressMon(&monitor), S_OK);
    EXPECT_TRUE(monitor.IsNull());
    EXPECT_EQ(m_host->get_AppType(&type), S_OK);
    EXPECT_NE(type & 0xF, 3u);

    ASSERT_EQ(m_host->GetExtension(L"AFS", &extension), S_OK);
    const auto afs = extension.As<KOV::IAFS_Inst>();
    ComPtr<KOV::IAUX_Cab> parameters;
    EXPECT_EQ(afs->CreateDlgDefaultParams(KOV::AFS_Dlg_OpenFiles, &parameters), S_OK);
    EXPECT_FALSE(parameters.IsNull());
    ComPtr<KOV::IAFS_NamesCollection> names;
    DWORD choice = 0;
    EXPECT_EQ(afs->ShowDefaultDlg(KOV::AFS_Dlg_SelectFolder, nullptr, parameters, nullptr, &names, &choice), no_window);
    EXPECT_EQ(choice, 2u);
}

TEST_F(HostTest, FailsInWordsWithoutAModule) {
    try {
        m_host->Load();
        FAIL();
    } catch (const HostException& failure) {
        EXPECT_EQ(failure.Result(), HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
        EXPECT_NE(std::string(failure.what()).find("can't be loaded"), std::string::npos);
    }
    EXPECT_EQ(m_host->Provider(), nullptr);
    EXPECT_THROW(m_host->SavedAccounts(), HostException);
    m_host->Unload();
}

TEST_F(HostTest, ReadsTheSizeOfAPictureAndRefusesWhatIsNone) {
    struct Row {
        const char* name;
        std::string bytes;
        LONG width;
    };
    const std::string start("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    const Row rows[] = {{"good", start + std::string("\0\0\0\x30\0\0\0\x18", 8), 48},
                        {"cut", start + std::string("\0\0\0\x30", 4), 0},
                        {"huge", start + std::string("\x7F\0\0\0\0\0\0\x18", 8), 0},
                        {"empty", start + std::string(8, '\0'), 0},
                        {"other", "GIF89a" + std::string(30, 'x'), 0}};
    ComPtr<IUnknown> extension;
    ASSERT_EQ(m_host->GetExtension(L"UIX", &extension), S_OK);
    const auto uix = extension.As<KOV::IUIX_Inst>();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, row.bytes.size());
        std::copy(row.bytes.begin(), row.bytes.end(), static_cast<char*>(GlobalLock(block)));
        GlobalUnlock(block);
        ComPtr<IStream> stream;
        ASSERT_EQ(CreateStreamOnHGlobal(block, TRUE, &stream), S_OK);
        ComPtr<KOV::IKOV_Picture> picture;
        EXPECT_EQ(SUCCEEDED(uix->CreateImageFromStream(stream, &picture)), row.width != 0);
        SIZE size{};
        if (row.width != 0 && SUCCEEDED(picture->get_Size(&size))) {
            EXPECT_EQ(size.cx, row.width);
            EXPECT_EQ(size.cy, 24);
        }
    }
}

TEST_F(HostTest, TellsAFailureByItsDetailsOrByItsCode) {
    const auto details = MakeObject<StringObject>(L"the server is tired");
    EXPECT_EQ(FailureText(E_FAIL, details), L"the server is tired");
    details->Clear();
    EXPECT_EQ(FailureText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), details),
              FailureText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), nullptr));
    EXPECT_NE(FailureText(HRESULT_FROM_WIN32(ERROR_INTERNET_CANNOT_CONNECT), nullptr), L"Unknown error 0x80072efd");
    EXPECT_EQ(FailureText(MakeHResult(0x8abcdef1), nullptr), L"Unknown error 0x8abcdef1");
}

} // namespace
