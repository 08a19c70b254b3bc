#include "workbench/console/commands.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "platform/text.h"
#include "workbench/console/preferences.h"
#include "workbench/console/script.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"
#include "workbench/core/program_paths.h"

namespace fs = std::filesystem;

namespace {

/// Nobody is asked and nobody signs in.
int Probe(const Context& context, const CommandCall& call) {
    const std::string& typed = call.words[0];
    const std::wstring text = IsAbsoluteUrl(typed) ? ParseLocation(typed).url : WideFromUtf8(typed);
    ComPtr<KOV::IAFS_Name> name;
    const HRESULT result = context.Provider()->StringToName(text.c_str(), KOV::AFS_String2Name_FullTest, nullptr, &name);
    if (FAILED(result) && result != E_INVALIDARG) {
        Check(result);
    }
    const bool is_sharepoint = SUCCEEDED(result);
    context.output.Write({{"sharepoint", is_sharepoint}}, is_sharepoint ? "yes, on a SharePoint server" : "no");
    return is_sharepoint ? 0 : 1;
}

void ShowAccount(const Context& context, const std::wstring& url, const std::wstring& user) {
    context.output.Write({{"url", EncodeLocation(url)}, {"user", Utf8FromWide(user)}},
                         fmt::format("{}  {}", EncodeLocation(url), user.empty() ? "-" : Utf8FromWide(user)));
}

void AddAccount(const Context& context, const CommandCall& call) {
    std::optional<Location> location;
    if (call.words.size() > 1) {
        location = ParseLocation(call.words[1]);
        context.binder.UseAccountOf(*location);
    }
    ComPtr<KOV::IAFS_AccountData> account;
    Check(context.Provider()->CreateAccount(location ? location->url.c_str() : nullptr, nullptr, 0, 0, 0, &account));
    context.host.SavedAccounts().Save(account);
    Bstr url;
    Bstr user;
    Check(account->get_URL(&url));
    Check(account->get_UserName(&user));
    ShowAccount(context, url.Text(), user.Text());
}

int RunAccounts(const Context& context, const CommandCall& call) {
    const std::string& action = call.words[0];
    if (action == "list" && call.words.size() == 1) {
        for (const SavedAccount& account : context.host.SavedAccounts().List()) {
            ShowAccount(context, account.url, account.user);
        }
    } else if (action == "add") {
        AddAccount(context, call);
    } else if (action == "remove" && call.words.size() == 2) {
        const std::wstring url = ParseLocation(call.words[1]).url;
        if (!context.host.SavedAccounts().Remove(url)) {
            throw Failure{MakeHResult(0x80070490), L"No saved place has this URL."};
        }
        context.output.Write({}, "");
    } else {
        throw UsageError("usage: accounts list | add [URL] | remove URL");
    }
    return 0;
}

int ShowLog(const Context& context, const CommandCall&) {
    const fs::path path = LogFolder();
    std::vector<std::string> files;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(path, error)) {
        files.push_back(entry.path().filename());
    }
    std::sort(files.begin(), files.end());
    std::string text = path.string();
    for (const std::string& file : files) {
        text += "\n  " + file;
    }
    context.output.Write({{"folder", path.string()}, {"files", files}}, text);
    return 0;
}

int Preferences(const Context& context, const CommandCall& call) {
    RunPreferences(context, call);
    return 0;
}

int Script(const Context& context, const CommandCall& call) { return RunScript(context, call.words[0]); }

struct Command {
    const char* name;
    int (*run)(const Context& context, const CommandCall& call);
};

constexpr Command commands[] = {
    {"probe", Probe}, {"accounts", RunAccounts}, {"prefs", Preferences}, {"log", ShowLog}, {"script", Script},
};

} // namespace

int RunCommand(const Context& context, const CommandCall& call) {
    for (const Command& command : commands) {
        if (call.name == command.name) {
            return command.run(context, call);
        }
    }
    RunLocationCommand(context, call);
    return 0;
}
