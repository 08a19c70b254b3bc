#include "workbench/core/server_files.h"

#include <cerrno>
#include <optional>
#include <vector>

#include <unistd.h>

#include "platform/bstr.h"

namespace {

constexpr HRESULT file_not_found = MakeHResult(0x80070002);
constexpr std::size_t piece = 64 * 1024;

/// Throws what the server says of a file that could not be bound; comes back when it says that nothing is there.
void ExplainMissing(const ServerAccess& access, KOV::IAFS_Name* name) {
    const std::wstring url = UrlOf(access.Provider(), name);
    ComPtr<KOV::IAFS_Name> parent;
    Check(access.Provider()->NameGetParent(name, &parent));
    if (parent.IsNull()) {
        return;
    }
    ComPtr<KOV::IAFS_Name> fresh;
    Check(access.Provider()->StringToName(url.c_str(), 0, parent, &fresh));
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    ComPtr<KOV::IAFS_FileInfo> info;
    const HRESULT result = access.Provider()->GetFileInfo(fresh, details, access.cancel, &info);
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

void WriteDocument(const ServerAccess& access, KOV::IAFS_File* file, const char* data, ULONG size) {
    while (size > 0) {
        ULONG written = 0;
        Checked([&](KOV::IString* details) { return file->Write(data, size, &written, details, access.cancel); });
        if (written == 0) {
            throw Failure{E_FAIL, L"The local copy takes no more bytes."};
        }
        data += written;
        size -= written;
    }
}

void SetDocumentSize(const ServerAccess& access, KOV::IAFS_File* file, LONGLONG size) {
    Checked([&](KOV::IString* details) { return file->SetSize(size, details, access.cancel); });
    Check(file->SetPos(0, 0, nullptr));
}

/// Sends the local copy.
void FlushDocument(const ServerAccess& access, KOV::IAFS_File* file, const TransferProgress& progress) {
    access.host.ObserveUploads(progress);
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    const HRESULT result = file->Flush(details, access.cancel);
    access.host.ObserveUploads(nullptr);
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, details)};
    }
}

} // namespace

ComPtr<KOV::IAFS_Name> BindSavedPlace(const ServerAccess& access, const SavedAccount& place) {
    ComPtr<KOV::IAFS_Name> root;
    Checked([&](KOV::IString* details) {
        return access.Provider()->BindToObject(place.data.Get(), nullptr, 0, details, access.cancel, &root);
    });
    // What the sign-in ended with stands in the account now.
    access.host.SavedAccounts().Update(place.id, place.data);
    return root;
}

ComPtr<KOV::IAFS_Name> BindUrl(const ServerAccess& access, const std::wstring& url) {
    if (const std::optional<SavedAccount> place = access.host.SavedAccounts().Find(url)) {
        return BindSavedPlace(access, *place);
    }
    ComPtr<KOV::IAFS_BindContext> context;
    Check(access.host.CreateStdBindContext(&context));
    ComPtr<KOV::IAFS_Name> root;
    Checked([&](KOV::IString* details) {
        return access.Provider()->BindToPath(url.c_str(), context, 0, details, access.cancel, &root);
    });
    return root;
}

ComPtr<KOV::IAFS_Name> NameOf(const ServerAccess& access, const std::wstring& text, KOV::IAFS_Name* parent) {
    ComPtr<KOV::IAFS_Name> name;
    Check(access.Provider()->StringToName(text.c_str(), 0, parent, &name));
    return name;
}

std::wstring UrlOf(KOV::IAFS_FileSys* provider, KOV::IAFS_Name* name) {
    Bstr text;
    Check(provider->NameToString(name, 0, nullptr, &text));
    return text.Text();
}

std::wstring UrlOfDocument(const ServerAccess& access, KOV::IAFS_File* file) {
    ComPtr<KOV::IAFS_Name> name;
    Check(file->get_Name(&name));
    return UrlOf(access.Provider(), name);
}

Facts ReadFacts(const ServerAccess& access, KOV::IAFS_FileInfo* info, KOV::IAFS_Name* name) {
    Facts facts;
    Bstr title;
    Check(info->get_Title(&title));
    facts.title = title.Text();
    facts.url = UrlOf(access.Provider(), name);
    DWORD attributes = 0;
    Check(info->get_Attributes(&attributes));
    facts.is_folder = (attributes & KOV::AFS_FileAttribute_Folder) != 0;
    if (!facts.is_folder) {
        Check(info->get_Size(&facts.size));
    }
    Check(info->get_CreationTime(&facts.created));
    Check(info->get_LastWriteTime(&facts.modified));
    return facts;
}

std::optional<Stamp> KnownStamp(const ServerAccess& access, KOV::IAFS_File* file) {
    ComPtr<KOV::IAFS_Name> name;
    Check(file->get_Name(&name));
    ComPtr<KOV::IAFS_FileInfo> info;
    ULONGLONG modified = 0;
    ULONGLONG size = 0;
    if (FAILED(access.Provider()->GetFileInfo(name, nullptr, access.cancel, &info)) ||
        FAILED(info->get_LastWriteTime(&modified)) || FAILED(info->get_Size(&size))) {
        return std::nullopt;
    }
    return Stamp{modified, static_cast<LONGLONG>(size)};
}

ComPtr<KOV::IAFS_File> OpenDocument(const ServerAccess& access, KOV::IAFS_Name* name, DWORD flags) {
    ComPtr<KOV::IAFS_File> file;
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    const HRESULT result = access.Provider()->OpenFile(name, flags, details, access.cancel, &file);
    if (result == file_not_found) {
        ExplainMissing(access, name);
    }
    if (FAILED(result)) {
        throw Failure{result, FailureText(result, details)};
    }
    return file;
}

LONGLONG DocumentSize(const ServerAccess& access, KOV::IAFS_File* file) {
    LONGLONG size = 0;
    Checked([&](KOV::IString* details) { return file->GetSize(&size, details, access.cancel); });
    return size;
}

LONGLONG Download(const ServerAccess& access, KOV::IAFS_File* file, int target, const TransferProgress& progress) {
    std::vector<char> buffer(piece);
    Check(file->SetPos(0, 0, nullptr));
    for (LONGLONG done = 0;;) {
        ULONG count = 0;
        Checked([&](KOV::IString* details) {
            return file->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &count, details, access.cancel);
        });
        if (count == 0) {
            return done;
        }
        WriteAll(target, buffer.data(), count);
        done += count;
        progress(done);
    }
}

LONGLONG Upload(const ServerAccess& access, KOV::IAFS_File* file, int source, const TransferProgress& progress) {
    const std::optional<Stamp> before = KnownStamp(access, file);
    // Emptied first, so that the old bytes need not be fetched before they are replaced.
    SetDocumentSize(access, file, 0);
    std::vector<char> buffer(piece);
    LONGLONG done = 0;
    while (const ULONG count = ReadPiece(source, buffer)) {
        WriteDocument(access, file, buffer.data(), count);
        done += count;
    }
    if (done == 0) {
        // A change of size alone isn't sent: only written bytes are.
        WriteDocument(access, file, "", 1);
        SetDocumentSize(access, file, 0);
    }
    FlushDocument(access, file, progress);
    const std::optional<Stamp> after = KnownStamp(access, file);
    if (after && after == before && after->size != done) {
        throw Failure{E_FAIL, L"The save was answered as done, but the server still has its old version."};
    }
    return done;
}

void ExecDocument(const ServerAccess& access, KOV::IAFS_File* file, LPCWSTR command, const VARIANT* argument) {
    Checked([&](KOV::IString* details) { return file->Exec(command, argument, nullptr, details, access.cancel); });
}

void CloseDocument(const ServerAccess& access, KOV::IAFS_File* file, DWORD flags) {
    Checked([&](KOV::IString* details) { return file->Close(flags, details, access.cancel); });
    if (!IsCheckedOut(file)) {
        access.host.Unsaved().ForgetUpload(UrlOfDocument(access, file));
    }
}

bool IsCheckedOut(KOV::IAFS_File* file) {
    Variant value;
    Check(file->get_Prop(L"CheckedOut", &value));
    return value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE;
}
