#include "workbench/console/transfers.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/text.h"
#include "workbench/console/documents.h"
#include "workbench/console/facts.h"
#include "workbench/console/local_file.h"
#include "workbench/console/recovery.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"

namespace fs = std::filesystem;

namespace {

constexpr DWORD read_existing = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting;
constexpr DWORD read_write = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_AllowUI;

void WriteBytes(const Context& context, LONGLONG bytes) {
    context.output.Write({{"bytes", static_cast<std::int64_t>(bytes)}}, fmt::format("{} bytes", bytes));
}

/// Is the name absent from a listing of its folder that came whole?
bool IsAbsent(const Context& context, KOV::IAFS_Name* name) {
    ComPtr<KOV::IAFS_Name> parent;
    Check(context.Provider()->NameGetParent(name, &parent));
    if (parent.IsNull()) {
        return false;
    }
    ComPtr<KOV::IAFS_EnumFolder> items;
    Checked([&](KOV::IString* details) { return context.Provider()->EnumFolder(parent, details, context.Cancel(), &items); });
    for (;;) {
        ComPtr<KOV::IAFS_EnumFolderItem> item;
        Check(items->Next(&item));
        if (item.IsNull()) {
            return true;
        }
        ComPtr<KOV::IAFS_Name> other;
        Check(item->get_Name(&other));
        VARIANT_BOOL is_equal = VARIANT_FALSE;
        Check(context.Provider()->NamesAreEqual(name, other, &is_equal));
        if (is_equal != VARIANT_FALSE) {
            return false;
        }
    }
}

/// Only a server that answers says that a file is missing: every other failure stops, or an empty file would be put on top of one
/// that can't be seen just now.
DWORD DispositionFor(const Context& context, KOV::IAFS_Name* name, const std::optional<std::string>& create) {
    if (create) {
        return *create == "always" ? KOV::AFS_OpenFile_CreateAlways : KOV::AFS_OpenFile_CreateNew;
    }
    const ComPtr<StringObject> details = MakeObject<StringObject>();
    ComPtr<KOV::IAFS_FileInfo> info;
    const HRESULT result = context.Provider()->GetFileInfo(name, details, context.Cancel(), &info);
    if (SUCCEEDED(result)) {
        return KOV::AFS_OpenFile_OpenExisting;
    }
    if (result == E_INVALIDARG && IsAbsent(context, name)) {
        return KOV::AFS_OpenFile_CreateNew;
    }
    throw Failure{result, FailureText(result, details)};
}

/// A title as a name of a local file. It comes from a server, so it must not lead out of the current folder.
std::string LocalName(const std::wstring& title) {
    const bool has_bad_character =
        std::any_of(title.begin(), title.end(), [](wchar_t c) { return c == L'/' || c == L'\\' || c < 0x20 || c == 0x7F; });
    if (title.empty() || title == L"." || title == L".." || has_bad_character) {
        throw Failure{E_INVALIDARG,
                      L"The server's title '" + title + L"' is no name for a local file; name one as the second argument."};
    }
    return Utf8FromWide(title);
}

std::string ExtensionOf(const std::wstring& title) {
    const std::size_t dot = title.rfind(L'.');
    const std::wstring extension = dot == std::wstring::npos ? std::wstring() : title.substr(dot);
    const bool is_plain = extension.size() <= 16 && std::all_of(extension.begin(), extension.end(), [](wchar_t c) {
                              return c == L'.' || (c < 0x80 && std::isalnum(static_cast<int>(c)));
                          });
    return is_plain ? Utf8FromWide(extension) : std::string();
}

/// Runs the user's command with the path as its last argument and waits for its end.
void RunEditor(std::vector<std::string> words, const std::string& path) {
    words.push_back(path);
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    // The command gets the usual answer to a broken pipe, which this program doesn't want for itself.
    sigset_t usual;
    sigemptyset(&usual);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments[0], nullptr, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        ThrowErrno("running", words[0], error);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw Failure{E_FAIL, L"'" + WideFromUtf8(words[0]) + L"' failed; nothing was saved."};
    }
}

/// Leaves the edited copy where the user finds it.
void KeepForUser(const Context& context, TemporaryFile& copy) {
    copy.Keep();
    context.output.WriteNote("kov-console: what you edited is kept in " + copy.Path().string());
}

/// Runs the user's command on the copy. Gives whether it changed the copy; a changed one stays when the command fails.
bool HasEdited(const Context& context, const std::vector<std::string>& command, TemporaryFile& copy) {
    const std::string before = DigestOf(copy.Path());
    try {
        RunEditor(command, copy.Path());
    } catch (const Failure&) {
        if (std::error_code error; fs::exists(copy.Path(), error) && DigestOf(copy.Path()) != before) {
            KeepForUser(context, copy);
        }
        throw;
    }
    return DigestOf(copy.Path()) != before;
}

/// Saves the edited copy; when that fails, leaves it where the user finds it.
LONGLONG SaveEdited(const Context& context, KOV::IAFS_File* document, TemporaryFile& copy) {
    try {
        Checked([&](KOV::IString* details) {
            return document->Reopen(read_write | KOV::AFS_OpenFile_OpenExisting, details, context.Cancel());
        });
        const LocalFile source = LocalFile::OpenForReading(copy.Path());
        const LONGLONG bytes = Upload(context, document, source.Descriptor());
        FinishSave(context, document);
        return bytes;
    } catch (...) {
        KeepForUser(context, copy);
        throw;
    }
}

} // namespace

void GetDocument(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    OfferUnsavedCopy(context, name);
    const ComPtr<KOV::IAFS_File> document = OpenDocument(context, name, read_existing);
    if (call.words.size() > 1 && call.words[1] == "-") {
        Download(context, document, STDOUT_FILENO);
        return;
    }
    const bool is_named = call.words.size() > 1;
    const fs::path target = is_named ? fs::path(call.words[1]) : fs::path(LocalName(FactsOf(context, name).title));
    if (!is_named && fs::exists(fs::symlink_status(target))) {
        throw Failure{HRESULT_FROM_WIN32(80), L"'" + target.wstring() + L"' exists; name a file as the second argument."};
    }
    TemporaryFile part = TemporaryFile::Beside(target);
    const LONGLONG bytes = Download(context, document, part.Descriptor());
    part.RenameTo(target, is_named);
    WriteBytes(context, bytes);
}

void PutDocument(const Context& context, const CommandCall& call) {
    const LocalFile source = LocalFile::OpenForReading(call.words[0]);
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[1]);
    OfferUnsavedCopy(context, name);
    const DWORD disposition = DispositionFor(context, name, call.create);
    const ComPtr<KOV::IAFS_File> document = OpenDocument(context, name, read_write | disposition);
    const LONGLONG bytes = Upload(context, document, source.Descriptor());
    FinishSave(context, document);
    WriteBytes(context, bytes);
}

void EditDocument(const Context& context, const CommandCall& call) {
    const ComPtr<KOV::IAFS_Name> name = context.places.Find(call.words[0]);
    const std::vector<std::string> command(call.words.begin() + 1, call.words.end());
    if (command.empty()) {
        throw UsageError("usage: edit URL COMMAND…");
    }
    OfferUnsavedCopy(context, name);
    const ComPtr<KOV::IAFS_File> document = OpenDocument(context, name, read_existing | KOV::AFS_OpenFile_AllowUI);
    TemporaryFile copy = TemporaryFile::InOwnFolder(ExtensionOf(FactsOf(context, name).title));
    LONGLONG bytes = Download(context, document, copy.Descriptor());
    copy.Close();
    const bool is_changed = HasEdited(context, command, copy);
    if (is_changed) {
        bytes = SaveEdited(context, document, copy);
    }
    context.output.Write({{"changed", is_changed}, {"bytes", static_cast<std::int64_t>(bytes)}},
                         is_changed ? fmt::format("saved, {} bytes", bytes) : std::string("not changed"));
}
