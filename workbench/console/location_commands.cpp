// The commands about one location, which the command line and scripts share.

#include <array>
#include <map>

#include <fmt/format.h>

#include "platform/text.h"
#include "workbench/console/commands.h"
#include "workbench/console/document_state.h"
#include "workbench/console/documents.h"
#include "workbench/console/facts.h"
#include "workbench/console/recovery.h"
#include "workbench/console/transfers.h"
#include "workbench/core/failure.h"

namespace {

void Done(const Context& context) { context.output.Write({}, ""); }

void List(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> folder = context.places.Find(call.words[0]);
    ComPtr<KOV::IAFS_EnumFolder> items;
    Checked([&](KOV::IString* details) { return context.Provider()->EnumFolder(folder, details, context.Cancel(), &items); });
    for (;;) {
        ComPtr<KOV::IAFS_EnumFolderItem> item;
        Check(items->Next(&item));
        if (item.IsNull()) {
            return;
        }
        ComPtr<KOV::IAFS_Name> name;
        Check(item->get_Name(&name));
        const Facts facts = ReadFacts(context, item, name);
        context.output.Write(FactsRecord(facts), FactsText(facts));
    }
}

void Info(const Context& context, const CommandCall& call) {
    const Facts facts = FactsOf(context, context.places.Find(call.words[0]));
    context.output.Write(FactsRecord(facts),
                         fmt::format("{}\n  url       {}\n  size      {}\n  created   {}\n  modified  {}", Printable(facts.title),
                                     EncodeLocation(facts.url), facts.is_folder ? "folder" : std::to_string(facts.size),
                                     Rfc3339(facts.created).value_or("-"), Rfc3339(facts.modified).value_or("-")));
}

/// In words.
std::string StateText(const DocumentState& state) {
    const std::map<std::string, std::string> holders = {
        {"none", "not checked out"},
        {"me", "checked out to you"},
        {"other_user", "checked out to " + Printable(state.user.value_or(L""))},
        {"unknown", "who holds it isn't known"},
    };
    return holders.at(state.checked_out) + (state.can_edit ? ", can be edited" : ", no rights to edit");
}

void State(const Context& context, const CommandCall& call) {
    const DocumentState state = AskDocumentState(context, context.places.Find(call.words[0]));
    const FieldValue user = state.user ? FieldValue(Printable(*state.user)) : FieldValue(nullptr);
    context.output.Write({{"checked_out", state.checked_out}, {"user", user}, {"can_edit", state.can_edit}}, StateText(state));
}

void MakeFolder(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    Checked([&](KOV::IString* details) { return context.Provider()->CreateFolder(name, 0, details, context.Cancel()); });
    Done(context);
}

void Remove(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    Checked([&](KOV::IString* details) { return context.Provider()->Delete(name, details, context.Cancel()); });
    Done(context);
}

using Transfer = HRESULT (KOV::IAFS_FileSys::*)(KOV::IAFS_Name*, KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*);

template <Transfer operation>
void TransferTo(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    const ComPtr<KOV::IAFS_Name> target = context.places.Find(call.words[1]);
    Checked([&](KOV::IString* details) { return (context.Provider()->*operation)(name, target, details, context.Cancel()); });
    Done(context);
}

void WriteCheckOutState(const Context& context, KOV::IAFS_File* file) {
    const bool is_mine = IsCheckedOut(file);
    if (!is_mine) {
        context.host.Unsaved().ForgetUpload(UrlOfDocument(context, file));
    }
    context.output.Write({{"checked_out", std::string(is_mine ? "me" : "none")}},
                         is_mine ? "checked out to me" : "not checked out");
}

/// These never close the file on the server: by the preferences that would give the check-out back.
void ExecAndShowState(const Context& context, const CommandCall& call, LPCWSTR command) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    const ComPtr<KOV::IAFS_File> file = OpenDocument(context, name, KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting);
    ExecDocument(context, file, command, nullptr);
    WriteCheckOutState(context, file);
}

void CheckOut(const Context& context, const CommandCall& call) { ExecAndShowState(context, call, L"CheckOut"); }

void Discard(const Context& context, const CommandCall& call) { ExecAndShowState(context, call, L"DiscardCheckOut"); }

/// The check-in asks; the options of the command are the answer.
void CheckIn(const Context& context, const CommandCall& call) {
    static const std::map<std::string, std::size_t> radios = {{"minor", 0}, {"major", 1}, {"overwrite", 2}};
    Answer answer;
    answer.button = call.keep ? 1 : 0;
    answer.edit = call.comment;
    if (call.type) {
        answer.radio = radios.at(*call.type);
    }
    context.terminal.Queue(answer);
    ExecAndShowState(context, call, L"CheckInWithUi");
}

void SignOut(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    Checked([&](KOV::IString* details) {
        return context.Provider()->Exec(name, L"SignOut", nullptr, nullptr, details, context.Cancel());
    });
    Done(context);
}

struct LocationCommand {
    const char* name;
    void (*run)(const Context& context, const CommandCall& call);
};

constexpr LocationCommand commands[] = {
    {"ls", List},
    {"info", Info},
    {"state", State},
    {"get", GetDocument},
    {"put", PutDocument},
    {"edit", EditDocument},
    {"mkdir", MakeFolder},
    {"rm", Remove},
    {"mv", TransferTo<&KOV::IAFS_FileSys::Move>},
    {"cp", TransferTo<&KOV::IAFS_FileSys::Copy>},
    {"rename", TransferTo<&KOV::IAFS_FileSys::Rename>},
    {"checkout", CheckOut},
    {"discard", Discard},
    {"checkin", CheckIn},
    {"signout", SignOut},
};

} // namespace

bool RunLocationCommand(const Context& context, const CommandCall& call) {
    for (const LocationCommand& command : commands) {
        if (call.name == command.name) {
            command.run(context, call);
            return true;
        }
    }
    return false;
}
