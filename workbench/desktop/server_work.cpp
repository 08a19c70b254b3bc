#include "workbench/desktop/server_work.h"

#include <fcntl.h>

#include "platform/bstr.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr DWORD read_existing = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting | KOV::AFS_OpenFile_AllowUI;
/// Without a word on what is to be made: a file that is gone isn't made anew behind the user's back.
constexpr DWORD read_and_write = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_AllowUI;

TransferProgress ShowOn(ProgressMonitor* monitor) {
    return [held = ComPtr<ProgressMonitor>(monitor)](LONGLONG done) {
        if (!held.IsNull()) {
            held->put_Pos(static_cast<double>(done));
        }
    };
}

void CountTo(ProgressMonitor* monitor, LONGLONG total) {
    if (monitor != nullptr) {
        monitor->CountBytes();
        monitor->put_Total(static_cast<double>(total));
        monitor->put_Pos(0);
    }
}

std::wstring TitleOf(const ServerAccess& access, KOV::IAFS_Name* name) {
    ComPtr<KOV::IAFS_FileInfo> info;
    Bstr title;
    if (SUCCEEDED(access.Provider()->GetFileInfo(name, nullptr, access.cancel, &info)) && SUCCEEDED(info->get_Title(&title))) {
        return title.Text();
    }
    return {};
}

} // namespace

bool IsOtherState(const std::optional<Stamp>& now, const std::optional<Stamp>& began_from) { return !now || now != began_from; }

CopySource SourceOf(const ServerAccess& access, KOV::IAFS_File* file) {
    ComPtr<KOV::IAFS_Name> name;
    Check(file->get_Name(&name));
    CopySource source{.url = ToQString(UrlOf(access.Provider(), name)), .title = ToQString(TitleOf(access, name))};
    if (source.title.isEmpty()) {
        source.title = source.url.section('/', -1);
    }
    source.stamp = KnownStamp(access, file);
    return source;
}

OpenedFile OpenFromServer(const ServerAccess& access, KOV::IAFS_Name* name, const std::filesystem::path& documents,
                          ProgressMonitor* monitor) {
    OpenedFile opened{OpenDocument(access, name, read_existing), nullptr};
    opened.copy = WorkingCopy::Create(documents, SourceOf(access, opened.file));
    const FileDescriptor target = opened.copy->MakeVersion(0);
    FetchAgain(access, opened.file, target.Get(), monitor);
    opened.copy->SetState({0, false, QDateTime::currentDateTimeUtc()});
    return opened;
}

void FetchAgain(const ServerAccess& access, KOV::IAFS_File* file, int target, ProgressMonitor* monitor) {
    CountTo(monitor, DocumentSize(access, file));
    Download(access, file, target, ShowOn(monitor));
}

void ReopenForWriting(const ServerAccess& access, KOV::IAFS_File* file) {
    Checked([&](KOV::IString* details) { return file->Reopen(read_and_write, details, access.cancel); });
}

void SendToServer(const ServerAccess& access, KOV::IAFS_File* file, const std::filesystem::path& content,
                  ProgressMonitor* monitor, SaveResult& result) {
    const FileDescriptor bytes = OpenPrivateFile(content, O_RDONLY);
    CountTo(monitor, static_cast<LONGLONG>(std::filesystem::file_size(content)));
    Upload(access, file, bytes.Get(), ShowOn(monitor));
    result.is_sent = true;
    result.source = SourceOf(access, file);
    // The bytes are safe; a wish to end it comes too late for the step after a save.
    const ServerAccess uncanceled{access.host};
    ExecDocument(uncanceled, file, L"PerformAfterSave", nullptr);
    // A check-in makes a new state of the file.
    result.source = SourceOf(access, file);
}
