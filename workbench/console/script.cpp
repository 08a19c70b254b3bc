#include "workbench/console/script.h"

#include <charconv>
#include <chrono>
#include <fstream>
#include <future>
#include <map>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "platform/text.h"
#include "workbench/console/commands.h"
#include "workbench/console/documents.h"
#include "workbench/console/interrupt.h"
#include "workbench/console/local_file.h"
#include "workbench/console/recovery.h"
#include "workbench/console/script_words.h"
#include "workbench/console/sha256.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"

#include <unistd.h>

namespace {

struct NamedFlag {
    const char* name;
    DWORD value;
};

constexpr NamedFlag open_flags[] = {
    {"read", KOV::AFS_OpenFile_Read},
    {"write", KOV::AFS_OpenFile_Write},
    {"create-new", KOV::AFS_OpenFile_CreateNew},
    {"create-always", KOV::AFS_OpenFile_CreateAlways},
    {"open-existing", KOV::AFS_OpenFile_OpenExisting},
    {"open-always", KOV::AFS_OpenFile_OpenAlways},
    {"check-out", KOV::AFS_OpenFile_CheckOut},
    {"allow-ui", KOV::AFS_OpenFile_AllowUI},
};

constexpr NamedFlag close_flags[] = {
    {"none", 0},
    {"ask", KOV::AFS_CloseFile_AllowUI},
    {"check-in", KOV::AFS_CloseFile_CheckIn},
    {"discard", KOV::AFS_CloseFile_DiscardCheckOut},
};

template <std::size_t count>
DWORD ParseFlags(const NamedFlag (&table)[count], const std::string& text) {
    DWORD flags = 0;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t plus = std::min(text.find('+', start), text.size());
        const std::string word = text.substr(start, plus - start);
        const NamedFlag* const found =
            std::find_if(std::begin(table), std::end(table), [&](const NamedFlag& flag) { return word == flag.name; });
        if (found == std::end(table)) {
            throw UsageError("there is no flag '" + word + "'");
        }
        flags |= found->value;
        start = plus + 1;
    }
    return flags;
}

LONGLONG ParseNumber(const std::string& text) {
    LONGLONG value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) {
        throw UsageError("'" + text + "' is no number");
    }
    return value;
}

std::string Hex(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        text += fmt::format("{:02x}", static_cast<unsigned char>(c));
    }
    return text;
}

/// Sets a cancel flag after a while, from a thread of its own, unless it is ended before.
class DelayedCancel {
public:
    DelayedCancel(FlagObject& flag, std::chrono::milliseconds delay)
        : m_thread([this, &flag, delay] {
              if (m_end.get_future().wait_for(delay) == std::future_status::timeout) {
                  flag.Set(true);
              }
          }) {}
    ~DelayedCancel() {
        m_end.set_value();
        m_thread.join();
    }
    DelayedCancel(const DelayedCancel&) = delete;
    DelayedCancel& operator=(const DelayedCancel&) = delete;

private:
    std::promise<void> m_end;
    std::thread m_thread;
};

struct OpenDocumentEntry {
    ComPtr<KOV::IAFS_File> file;
    /// Did this open send its bytes to the server?
    bool has_uploaded = false;
};

/// One run of a script: its bind, its open files, and what waits for the next command.
class Script {
public:
    explicit Script(const Context& context)
        : m_places(context.binder), m_context{context.host,   context.output, context.terminal,
                                              context.binder, m_places,       context.cancel} {}

    /// The exit code of the line.
    int RunLine(const std::string& line);

private:
    struct Command {
        const char* name;
        void (Script::*run)(const std::vector<std::string>& words);
    };
    static const Command commands[];

    void Run(const CommandCall& call);
    OpenDocumentEntry& Find(const std::string& name);
    void Done() { m_context.output.Write({}, ""); }

    void Bind(const std::vector<std::string>& words);
    void Open(const std::vector<std::string>& words);
    void Read(const std::vector<std::string>& words);
    void Write(const std::vector<std::string>& words);
    void SetSize(const std::vector<std::string>& words);
    void Flush(const std::vector<std::string>& words);
    void Reopen(const std::vector<std::string>& words);
    void Exec(const std::vector<std::string>& words);
    void GetProperty(const std::vector<std::string>& words);
    void SetProperty(const std::vector<std::string>& words);
    void Close(const std::vector<std::string>& words);
    void Clone(const std::vector<std::string>& words);
    void QueueAnswer(const std::vector<std::string>& words);
    void CancelAfter(const std::vector<std::string>& words);
    void Sleep(const std::vector<std::string>& words);

    ScriptPlaces m_places;
    const Context m_context;
    std::map<std::string, OpenDocumentEntry> m_documents;
    std::optional<std::chrono::milliseconds> m_cancel_after;
};

const Script::Command Script::commands[] = {
    {"bind", &Script::Bind},           {"open", &Script::Open},
    {"read", &Script::Read},           {"write", &Script::Write},
    {"setsize", &Script::SetSize},     {"flush", &Script::Flush},
    {"reopen", &Script::Reopen},       {"exec", &Script::Exec},
    {"getprop", &Script::GetProperty}, {"setprop", &Script::SetProperty},
    {"close", &Script::Close},         {"clone", &Script::Clone},
    {"answer", &Script::QueueAnswer},  {"cancel-after", &Script::CancelAfter},
    {"sleep", &Script::Sleep},
};

int Script::RunLine(const std::string& line) {
    try {
        const std::vector<std::string> words = ScriptWords(line);
        if (!words.empty()) {
            Run(ParseCommand(CommandSet::script, words));
        }
        return 0;
    } catch (const Failure& failure) {
        m_context.output.WriteFailure(failure.result, failure.message);
        return ExitCodeOf(failure.result);
    } catch (const HostException& failure) {
        m_context.output.WriteFailure(failure.Result(), WideFromUtf8(failure.what()));
        return ExitCodeOf(failure.Result());
    } catch (const UsageError& error) {
        m_context.output.WriteFailure(E_INVALIDARG, WideFromUtf8(error.what()));
        return 2;
    } catch (const std::range_error&) {
        m_context.output.WriteFailure(E_INVALIDARG, L"the line isn't UTF-8");
        return 2;
    } catch (const std::exception& failure) {
        m_context.output.WriteFailure(E_FAIL, WideFromUtf8(failure.what()));
        return 1;
    }
}

void Script::Run(const CommandCall& call) {
    const bool is_setup = call.name == "cancel-after" || call.name == "answer" || call.name == "sleep";
    std::optional<DelayedCancel> cancel;
    if (!is_setup && m_cancel_after) {
        cancel.emplace(m_context.cancel, *m_cancel_after);
        m_cancel_after.reset();
    }
    for (const Command& command : commands) {
        if (call.name == command.name) {
            (this->*command.run)(call.words);
            return;
        }
    }
    RunLocationCommand(m_context, call);
}

OpenDocumentEntry& Script::Find(const std::string& name) {
    const auto found = m_documents.find(name);
    if (found == m_documents.end()) {
        throw UsageError("no file is open as '" + name + "'");
    }
    return found->second;
}

void Script::Bind(const std::vector<std::string>& words) {
    m_places.Bind(words[0]);
    Done();
}

void Script::Open(const std::vector<std::string>& words) {
    const DWORD flags = ParseFlags(open_flags, words[2]);
    const ComPtr<KOV::IAFS_Name> name = m_places.Find(words[1]);
    OfferUnsavedCopy(m_context, name);
    m_documents[words[0]] = {OpenDocument(m_context, name, flags), false};
    Done();
}

void Script::Read(const std::vector<std::string>& words) {
    constexpr LONGLONG most_shown = 65536;
    KOV::IAFS_File* const file = Find(words[0]).file;
    const LONGLONG wanted = ParseNumber(words[2]);
    Check(file->SetPos(ParseNumber(words[1]), 0, nullptr));
    Sha256 digest;
    std::string shown;
    std::vector<char> buffer(most_shown);
    LONGLONG done = 0;
    while (done < wanted) {
        ULONG count = 0;
        const auto size = static_cast<ULONG>(std::min<LONGLONG>(wanted - done, most_shown));
        Checked([&](KOV::IString* details) { return file->Read(buffer.data(), size, &count, details, m_context.Cancel()); });
        if (count == 0) {
            break;
        }
        digest.Add(buffer.data(), count);
        if (wanted <= most_shown) {
            shown.append(buffer.data(), count);
        }
        done += count;
    }
    if (wanted <= most_shown) {
        m_context.output.Write({{"hex", Hex(shown)}}, Hex(shown));
    } else {
        const std::string hash = digest.Hex();
        m_context.output.Write({{"bytes", static_cast<std::int64_t>(done)}, {"sha256", hash}},
                               fmt::format("{} bytes, {}", done, hash));
    }
}

void Script::Write(const std::vector<std::string>& words) {
    KOV::IAFS_File* const file = Find(words[0]).file;
    Check(file->SetPos(ParseNumber(words[1]), 0, nullptr));
    const auto write = [&](const char* data, std::size_t size) {
        ULONG written = 0;
        Checked([&](KOV::IString* details) {
            return file->Write(data, static_cast<ULONG>(size), &written, details, m_context.Cancel());
        });
    };
    if (!words[2].starts_with("@")) {
        write(words[2].data(), words[2].size());
        return Done();
    }
    const LocalFile source = LocalFile::OpenForReading(words[2].substr(1));
    std::vector<char> buffer(1 << 16);
    for (ssize_t count; (count = ::read(source.Descriptor(), buffer.data(), buffer.size())) > 0;) {
        write(buffer.data(), static_cast<std::size_t>(count));
    }
    Done();
}

void Script::SetSize(const std::vector<std::string>& words) {
    KOV::IAFS_File* const file = Find(words[0]).file;
    const LONGLONG size = ParseNumber(words[1]);
    Checked([&](KOV::IString* details) { return file->SetSize(size, details, m_context.Cancel()); });
    Done();
}

void Script::Flush(const std::vector<std::string>& words) {
    OpenDocumentEntry& document = Find(words[0]);
    Checked([&](KOV::IString* details) { return document.file->Flush(details, m_context.Cancel()); });
    document.has_uploaded = true;
    Done();
}

void Script::Reopen(const std::vector<std::string>& words) {
    KOV::IAFS_File* const file = Find(words[0]).file;
    const DWORD flags = ParseFlags(open_flags, words[1]);
    Checked([&](KOV::IString* details) { return file->Reopen(flags, details, m_context.Cancel()); });
    Done();
}

void Script::Exec(const std::vector<std::string>& words) {
    KOV::IAFS_File* const file = Find(words[0]).file;
    const bool has_argument = words.size() > 2;
    if (has_argument && words[2] != "true" && words[2] != "false") {
        throw UsageError("'" + words[2] + "' is neither true nor false");
    }
    const Variant argument = has_argument ? Variant(words[2] == "true") : Variant();
    ExecDocument(m_context, file, WideFromUtf8(words[1]).c_str(), &argument);
    Done();
}

FieldValue ValueOf(const VARIANT& value) {
    switch (value.vt) {
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE;
    case VT_I4:
    case VT_INT:
        return static_cast<std::int64_t>(value.lVal);
    case VT_BSTR:
        return Utf8FromWide(std::wstring_view(value.bstrVal == nullptr ? L"" : value.bstrVal, SysStringLen(value.bstrVal)));
    default:
        return nullptr;
    }
}

void Script::GetProperty(const std::vector<std::string>& words) {
    Variant value;
    Check(Find(words[0]).file->get_Prop(WideFromUtf8(words[1]).c_str(), &value));
    const FieldValue shown = ValueOf(value);
    m_context.output.Write({{"property", words[1]}, {"value", shown}}, ToJson({{"property", words[1]}, {"value", shown}}));
}

void Script::SetProperty(const std::vector<std::string>& words) {
    const bool is_boolean = words[2] == "true" || words[2] == "false";
    const Variant value = is_boolean ? Variant(words[2] == "true") : Variant(std::wstring_view(WideFromUtf8(words[2])));
    Check(Find(words[0]).file->put_Prop(WideFromUtf8(words[1]).c_str(), &value));
    Done();
}

void Script::Close(const std::vector<std::string>& words) {
    const DWORD flags = ParseFlags(close_flags, words[1]);
    const OpenDocumentEntry document = Find(words[0]);
    m_documents.erase(words[0]);
    const bool decides_by_itself = (flags & (KOV::AFS_CloseFile_CheckIn | KOV::AFS_CloseFile_DiscardCheckOut)) != 0;
    const bool would_undo = !document.has_uploaded && !decides_by_itself && flags != 0 &&
                            m_context.host.Unsaved().WasUploaded(UrlOfDocument(m_context, document.file));
    if (would_undo) {
        m_context.output.WriteNote("kov-console: an upload of another open isn't checked in; the check-out is left as it is");
    } else {
        CloseDocument(m_context, document.file, flags);
    }
    Done();
}

void Script::Clone(const std::vector<std::string>& words) {
    ComPtr<KOV::IAFS_File> clone;
    Check(Find(words[0]).file->Clone(&clone));
    m_documents[words[1]] = {clone, false};
    Done();
}

void Script::QueueAnswer(const std::vector<std::string>& words) { m_context.terminal.Queue(ParseAnswer(words[0])); }

void Script::CancelAfter(const std::vector<std::string>& words) {
    m_cancel_after = std::chrono::milliseconds(ParseNumber(words[0]));
}

void Script::Sleep(const std::vector<std::string>& words) { (void)WaitFor(std::chrono::milliseconds(ParseNumber(words[0]))); }

} // namespace

int ExitCodeOf(HRESULT result) { return IsCanceledResult(result) ? 3 : 1; }

int RunScript(Context context, const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path)) {
        throw UsageError("the script " + path.string() + " can't be read");
    }
    Script script(context);
    int exit_code = 0;
    for (std::string line; !IsInterrupted() && std::getline(file, line);) {
        const int code = script.RunLine(line);
        exit_code = code != 0 ? code : exit_code;
        // A flag that a line's own delay set belongs to that line, also when it came too late for it.
        if (!IsInterrupted()) {
            context.cancel.Set(false);
        }
    }
    return exit_code;
}
