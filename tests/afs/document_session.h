#pragma once

// The module's rooms in this process, over the stand-in host and a server on a real socket. Several users can be signed in
// at once, each with a connection of its own.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "afs/file.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/cancel.h"
#include "platform/text.h"
#include "support/in_process_module.h"
#include "support/trial_server.h"
#include "workbench/core/documents.h"

/// What an operation of the host came to.
struct Outcome {
    HRESULT result = S_OK;
    std::wstring details;

    friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
        return stream << std::hex << outcome.result << " '" << Utf8FromWide(outcome.details) << "'";
    }
};

class DocumentSession : public testing::Test {
protected:
    explicit DocumentSession(
        TrialOptions options = {.auth = TrialAuth::basic,
                                .users = {{"ann", "secret"}, {"bob", "secret"}, {"eve", "secret", TrialRights::read}}})
        : m_server(std::move(options)) {}

    void TearDown() override {
        ASSERT_EQ(Shown().size(), m_expected_texts.size());
        for (std::size_t i = 0; i < Shown().size(); ++i) {
            EXPECT_NE(Shown()[i].text.find(m_expected_texts[i]), std::wstring::npos)
                << "box " << i << ": " << Utf8FromWide(Shown()[i].text);
        }
    }

    /// The next question has `text` in it and gets this answer.
    void ExpectBox(std::wstring text, BoxAnswer answer) {
        m_expected_texts.push_back(std::move(text));
        m_module.user.boxes.push_back(std::move(answer));
    }
    const std::vector<Box>& Shown() const { return m_module.user.shown; }

    Preferences& Prefs() { return m_module.plugin->m_preferences_manager.m_preferences; }

    /// The root of a new connection.
    ComPtr<KOV::IAFS_Name> Bind(const wchar_t* user) {
        m_module.user.accounts.push_back(AccountAnswer{user, L"secret"});
        ComPtr<KOV::IAFS_BindContext> context;
        EXPECT_EQ(m_module.host->CreateStdBindContext(&context), S_OK);
        const ComPtr<StringObject> details = MakeObject<StringObject>();
        ComPtr<KOV::IAFS_Name> root;
        EXPECT_EQ(FileSys()->BindToPath(m_server.WideUrl().c_str(), context, 0, details, nullptr, &root), S_OK)
            << Utf8FromWide(TextOf(details));
        return root;
    }

    ComPtr<Name> NameOf(KOV::IAFS_Name* root, const wchar_t* path) {
        ComPtr<KOV::IAFS_Name> name;
        EXPECT_EQ(FileSys()->StringToName(path, 0, root, &name), S_OK);
        return m_module.plugin->m_file_system->GetName(name);
    }

    Outcome Open(KOV::IAFS_Name* root, const wchar_t* path, DWORD flags, ComPtr<KOV::IAFS_File>& out_file,
                 KOV::IKOV_Flag* cancel_flag = nullptr) {
        out_file = nullptr;
        const ComPtr<Name> name = NameOf(root, path);
        return Run([&](KOV::IString* details) { return FileSys()->OpenFile(name, flags, details, cancel_flag, &out_file); });
    }

    /// For files that must open.
    ComPtr<KOV::IAFS_File> Opened(KOV::IAFS_Name* root, const wchar_t* path, DWORD flags) {
        ComPtr<KOV::IAFS_File> file;
        const Outcome outcome = Open(root, path, flags, file);
        EXPECT_EQ(outcome.result, S_OK) << outcome;
        return file;
    }

    static Outcome Reopen(KOV::IAFS_File* file, DWORD flags) {
        return Run([&](KOV::IString* details) { return file->Reopen(flags, details, nullptr); });
    }
    static Outcome Flush(KOV::IAFS_File* file) {
        return Run([&](KOV::IString* details) { return file->Flush(details, nullptr); });
    }
    static Outcome Close(KOV::IAFS_File* file, DWORD flags) {
        return Run([&](KOV::IString* details) { return file->Close(flags, details, nullptr); });
    }
    static Outcome Exec(KOV::IAFS_File* file, const wchar_t* command, const VARIANT* data = nullptr) {
        return Run([&](KOV::IString* details) { return file->Exec(command, data, nullptr, details, nullptr); });
    }

    /// New content, as an editor saves it: the whole file from its start.
    static void WriteAll(KOV::IAFS_File* file, std::string_view bytes) {
        ASSERT_EQ(file->SetSize(0, nullptr, nullptr), S_OK);
        ASSERT_EQ(file->SetPos(0, 0, nullptr), S_OK);
        ULONG written = 0;
        ASSERT_EQ(file->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written, nullptr, nullptr), S_OK);
        ASSERT_EQ(written, bytes.size());
    }

    static std::string ReadAll(KOV::IAFS_File* file) {
        EXPECT_EQ(file->SetPos(0, 0, nullptr), S_OK);
        std::string bytes;
        std::string piece(1000, 0);
        ULONG count = 0;
        while (SUCCEEDED(file->Read(piece.data(), 1000, &count, nullptr, nullptr)) && count > 0) {
            bytes.append(piece, 0, count);
        }
        return bytes;
    }

    KOV::IAFS_FileSys* FileSys() { return m_module.plugin->m_file_system; }

    template <class Body>
    static Outcome Run(Body&& body) {
        const ComPtr<StringObject> details = MakeObject<StringObject>();
        const HRESULT result = body(static_cast<KOV::IString*>(details.Get()));
        return {result, TextOf(details)};
    }

    /// How often the server was asked for a `Lists` operation, such as "CheckOutFile".
    std::size_t ListsCalls(std::string_view operation) {
        std::size_t count = 0;
        for (const SeenRequest& request : m_server.Journal()) {
            count += request.target.find("/_vti_bin/Lists.asmx") != std::string::npos &&
                             request.body.find("<" + std::string(operation) + " ") != std::string::npos
                         ? 1
                         : 0;
        }
        return count;
    }

    TrialServer m_server;
    InProcessModule m_module;

private:
    std::vector<std::wstring> m_expected_texts;
};

constexpr DWORD FileRead = KOV::AFS_OpenFile_Read;
constexpr DWORD FileWrite = KOV::AFS_OpenFile_Write;
constexpr DWORD FileCheckOut = KOV::AFS_OpenFile_CheckOut;
constexpr DWORD FileAllowUi = KOV::AFS_OpenFile_AllowUI;
