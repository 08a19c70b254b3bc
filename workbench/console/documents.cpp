#include "workbench/console/documents.h"

#include <cerrno>
#include <optional>
#include <vector>

#include <unistd.h>

#include "workbench/console/failure.h"
#include "workbench/console/progress_bar.h"

namespace {

constexpr HRESULT file_not_found = MakeHResult(0x80070002);
constexpr std::size_t piece = 64 * 1024;

/// Throws what the server says of a file that could not be bound; comes back when it says that nothing is there.
void ExplainMissing(const Context& context, KOV::IAFS_Name* name) {
    const std::wstring url = UrlOf(context.Provider(), name);
    ComPtr<KOV::IAFS_Name> parent;
    Check(context.Provider()->NameGetParent(name, &parent));
    if (parent.IsNull()) {
        return;
    }
    ComPtr<KOV::IAFS_Name> fresh;
    Check(context.Provider()->StringToName(url.c_str(), 0, parent, &fresh));
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    ComPtr<KOV::IAFS_FileInfo> info;
    const HRESULT result = context.Provider()->GetFileInfo(fresh, details, context.Cancel(), &info);
    if (FAILED(result) && result != E_INVALIDARG) {
        throw Failure{result, FailureText(result, details)};
    }
}

ULONG ReadPiece(int source, std::vector<char>& buffer) {
    for (;;) {
        const ssize_t count = read(source, buffer.data(), buffer.size());
        if (count >= 0) {
            return static_cast<ULONG>(count);
        }
        if (errno != EINTR) {
            ThrowErrno("reading", "the local file", errno);
        }
    }
}

void WriteAll(int target, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(target, data, size);
        if (count < 0 && errno != EINTR) {
            ThrowErrno("writing", "the local file", errno);
        }
        if (count > 0) {
            data += count;
            size -= static_cast<std::size_t>(count);
        }
    }
}

void WriteDocument(const Context& context, KOV::IAFS_File* file, const char* data, ULONG size) {
    while (size > 0) {
        ULONG written = 0;
        Checked([&](KOV::IString* details) { return file->Write(data, size, &written, details, context.Cancel()); });
        if (written == 0) {
            throw Failure{E_FAIL, L"The local copy takes no more bytes."};
        }
        data += written;
        size -= written;
    }
}

void SetDocumentSize(const Context& context, KOV::IAFS_File* file, LONGLONG size) {
    Checked([&](KOV::IString* details) { return file->SetSize(size, details, context.Cancel()); });
    Check(file->SetPos(0, 0, nullptr));
}

struct Version {
    ULONGLONG modified = 0;
    ULONGLONG size = 0;
    bool operator==(const Version&) const = default;
};

/// The server's version as the module knows it, which an upload brings up to date; nothing while there is no file.
std::optional<Version> KnownVersion(const Context& context, KOV::IAFS_File* file) {
    ComPtr<KOV::IAFS_Name> name;
    Check(file->get_Name(&name));
    ComPtr<KOV::IAFS_FileInfo> info;
    Version version;
    if (FAILED(context.Provider()->GetFileInfo(name, nullptr, context.Cancel(), &info)) ||
        FAILED(info->get_LastWriteTime(&version.modified)) || FAILED(info->get_Size(&version.size))) {
        return std::nullopt;
    }
    return version;
}

/// Sends the local copy, and shows how far it is.
void FlushDocument(const Context& context, KOV::IAFS_File* file, LONGLONG size) {
    ProgressBar progress(context.output, "uploading", size);
    context.host.ObserveUploads([&](LONGLONG sent) { progress.Update(sent); });
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    const HRESULT result = file->Flush(details, context.Cancel());
    context.host.ObserveUploads(nullptr);
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, details)};
    }
}

} // namespace

ComPtr<KOV::IAFS_File> OpenDocument(const Context& context, KOV::IAFS_Name* name, DWORD flags) {
    ComPtr<KOV::IAFS_File> file;
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    const HRESULT result = context.Provider()->OpenFile(name, flags, details, context.Cancel(), &file);
    if (result == file_not_found) {
        ExplainMissing(context, name);
    }
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, details)};
    }
    return file;
}

LONGLONG DocumentSize(const Context& context, KOV::IAFS_File* file) {
    LONGLONG size = 0;
    Checked([&](KOV::IString* details) { return file->GetSize(&size, details, context.Cancel()); });
    return size;
}

LONGLONG Download(const Context& context, KOV::IAFS_File* file, int target) {
    ProgressBar progress(context.output, "downloading", DocumentSize(context, file));
    std::vector<char> buffer(piece);
    Check(file->SetPos(0, 0, nullptr));
    for (LONGLONG done = 0;;) {
        ULONG count = 0;
        Checked([&](KOV::IString* details) {
            return file->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &count, details, context.Cancel());
        });
        if (count == 0) {
            return done;
        }
        WriteAll(target, buffer.data(), count);
        done += count;
        progress.Update(done);
    }
}

LONGLONG Upload(const Context& context, KOV::IAFS_File* file, int source) {
    const std::optional<Version> before = KnownVersion(context, file);
    // Emptied first, so that the old bytes need not be fetched before they are replaced.
    SetDocumentSize(context, file, 0);
    std::vector<char> buffer(piece);
    LONGLONG done = 0;
    while (const ULONG count = ReadPiece(source, buffer)) {
        WriteDocument(context, file, buffer.data(), count);
        done += count;
    }
    if (done == 0) {
        // A change of size alone isn't sent: only written bytes are.
        WriteDocument(context, file, "", 1);
        SetDocumentSize(context, file, 0);
    }
    FlushDocument(context, file, done);
    const std::optional<Version> after = KnownVersion(context, file);
    if (after && after == before && after->size != static_cast<ULONGLONG>(done)) {
        throw Failure{E_FAIL, L"The save was answered as done, but the server still has its old version."};
    }
    return done;
}

void ExecDocument(const Context& context, KOV::IAFS_File* file, LPCWSTR command, const VARIANT* argument) {
    Checked([&](KOV::IString* details) { return file->Exec(command, argument, nullptr, details, context.Cancel()); });
}

void FinishSave(const Context& context, KOV::IAFS_File* file) {
    ExecDocument(context, file, L"PerformAfterSave", nullptr);
    Checked([&](KOV::IString* details) { return file->Close(KOV::AFS_CloseFile_AllowUI, details, context.Cancel()); });
    if (!IsCheckedOut(file)) {
        context.host.Unsaved().ForgetUpload(UrlOfDocument(context, file));
    }
}

void CloseDocument(const Context& context, KOV::IAFS_File* file, DWORD flags) {
    Checked([&](KOV::IString* details) { return file->Close(flags, details, context.Cancel()); });
    if (!IsCheckedOut(file)) {
        context.host.Unsaved().ForgetUpload(UrlOfDocument(context, file));
    }
}

bool IsCheckedOut(KOV::IAFS_File* file) {
    Variant value;
    Check(file->get_Prop(L"CheckedOut", &value));
    return value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE;
}

std::wstring UrlOfDocument(const Context& context, KOV::IAFS_File* file) {
    ComPtr<KOV::IAFS_Name> name;
    Check(file->get_Name(&name));
    return UrlOf(context.Provider(), name);
}
