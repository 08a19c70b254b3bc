#include "workbench/console/recovery.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <unistd.h>

#include "platform/text.h"
#include "workbench/console/documents.h"
#include "workbench/console/facts.h"
#include "workbench/console/local_file.h"
#include "workbench/core/failure.h"

namespace fs = std::filesystem;

namespace {

void SaveToServer(const Context& context, KOV::IAFS_Name* name, const UnsavedCopy& copy) {
    const ComPtr<KOV::IAFS_File> document =
        OpenDocument(context, name,
                     KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_OpenAlways | KOV::AFS_OpenFile_AllowUI);
    const LocalFile source = LocalFile::OpenForReading(copy.path);
    Upload(context, document, source.Descriptor());
    FinishSave(context, document);
    context.host.Unsaved().Discard(copy.id);
}

void KeepAsLocalFile(const Context& context, const UnsavedCopy& copy) {
    const fs::path target = fs::current_path() / fmt::format("recovered-{}{}", copy.id, copy.path.extension().string());
    fs::copy_file(copy.path, target, fs::copy_options::none);
    context.host.Unsaved().Discard(copy.id);
    context.output.WriteNote("kov-console: the unsaved copy is now " + target.string());
}

void Drop(const Context& context, const UnsavedCopy& copy) { context.host.Unsaved().Discard(copy.id); }

/// The same four ways, in the order of the buttons.
enum class Way : std::size_t { save, keep, drop, leave };

Box RecoveryBox(const UnsavedCopy& copy, const std::wstring& server_note) {
    Box box;
    box.icon = BoxIcon::question;
    box.text = fmt::format(L"An earlier run left {} bytes of <b>{}</b> that never reached the server{}.{}", copy.size,
                           LastSegment(copy.url), copy.is_complete ? L"" : L"; the copy may be cut short", server_note);
    box.buttons = {{L"kov.recover.save", L"Save it to the server now"},
                   {L"kov.recover.keep", L"Keep it as a local file"},
                   {L"kov.recover.drop", L"Drop it"},
                   {L"kov.recover.leave", L"Leave it for later"}};
    box.default_button = static_cast<std::size_t>(Way::leave);
    return box;
}

/// Whether the server has another version than the one that the copy began from.
std::wstring ServerNote(const Context& context, KOV::IAFS_Name* name, const UnsavedCopy& copy) {
    ComPtr<KOV::IAFS_FileInfo> info;
    if (!copy.stamp || FAILED(context.Provider()->GetFileInfo(name, nullptr, context.Cancel(), &info))) {
        return {};
    }
    const Facts facts = ReadFacts(context, info, name);
    const bool is_same = copy.stamp->last_write_time == facts.modified && copy.stamp->size == static_cast<LONGLONG>(facts.size);
    return is_same ? std::wstring()
                   : L" The server has another version now, of " +
                         WideFromUtf8(Rfc3339(facts.modified).value_or("unknown date")) + L".";
}

} // namespace

void OfferUnsavedCopy(const Context& context, KOV::IAFS_Name* name) {
    const std::optional<UnsavedCopy> copy = context.host.Unsaved().Find(UrlOf(context.Provider(), name));
    if (!copy) {
        return;
    }
    const BoxAnswer answer = context.terminal.Ask(RecoveryBox(*copy, ServerNote(context, name, *copy)));
    switch (answer.button ? static_cast<Way>(*answer.button) : Way::leave) {
    case Way::save:
        SaveToServer(context, name, *copy);
        break;
    case Way::keep:
        KeepAsLocalFile(context, *copy);
        break;
    case Way::drop:
        Drop(context, *copy);
        break;
    case Way::leave:
        break;
    }
}
