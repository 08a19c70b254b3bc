#pragma once

// The provider's side of one local copy: a document in memory, failures by plan, and a record of what was called.

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "host/file_cache.h"
#include "host/object_bases.h"
#include "workbench/core/errors.h"
#include "workbench/core/value_objects.h"

class ScriptedCallbacks final : public cCoClassUnknownT<KOV::IAFS_FileCacheCallbacks> {
public:
    HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override {
        if (IsSet(cancel_flag)) {
            m_read_pos = 0;
            calls.push_back("drop read");
            return UserCanceled;
        }
        if (pos == 0) {
            calls.push_back("download");
            m_read_pos = 0;
        }
        if (pos != m_read_pos) {
            calls.push_back("random read");
            return E_INVALIDARG;
        }
        if (fail_read_at >= 0 && pos >= fail_read_at) {
            fail_read_at = -1;
            PutDetails(out_error_details, "the line is cut");
            return E_FAIL;
        }
        const std::size_t left = document.size() - std::min<std::size_t>(document.size(), static_cast<std::size_t>(pos));
        const auto count = static_cast<ULONG>(std::min<std::size_t>({size, piece, left}));
        std::memcpy(data, document.data() + pos, count);
        *out_size_read = count;
        m_read_pos = count == 0 ? 0 : pos + count;
        return count == 0 ? EndOfFile : S_OK;
    }
    HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* details,
                  KOV::IKOV_Flag* cancel_flag) override {
        if (IsSet(cancel_flag)) {
            calls.push_back("drop write");
            return UserCanceled;
        }
        if (pos != static_cast<LONGLONG>(m_upload.size())) {
            calls.push_back("random write");
            return E_INVALIDARG;
        }
        const auto count = static_cast<ULONG>(std::min<std::size_t>(size, piece));
        m_upload.append(static_cast<const char*>(data), count);
        if (out_size_written != nullptr) {
            *out_size_written = count;
        }
        return Report("Write", details);
    }
    HRESULT SetSize(LONGLONG new_size, KOV::IString* details, KOV::IKOV_Flag*) override {
        m_size = new_size;
        return Report("SetSize " + std::to_string(new_size), details);
    }
    HRESULT GetSize(LONGLONG* out_size, KOV::IString*, KOV::IKOV_Flag*) override {
        *out_size = static_cast<LONGLONG>(document.size());
        return S_OK;
    }
    HRESULT BeginWrite(KOV::IString* details, KOV::IKOV_Flag*) override {
        m_upload.clear();
        return Report("BeginWrite", details);
    }
    HRESULT EndWrite(KOV::IString* details, KOV::IKOV_Flag*) override {
        const HRESULT result = Report("EndWrite", details);
        if (SUCCEEDED(result) && static_cast<LONGLONG>(m_upload.size()) == m_size) {
            document = m_upload;
        }
        return result;
    }

    /// The next call of this name has this result.
    void FailNext(std::string call, HRESULT result) { m_failures.emplace_back(std::move(call), result); }

    std::string document;
    std::size_t piece = 1 << 20;
    LONGLONG fail_read_at = -1;
    /// All but the reads in the middle and the writes of bytes in a row, which count once.
    std::vector<std::string> calls;
    std::function<void(const std::string&)> on_call;

private:
    HRESULT Report(const std::string& call, KOV::IString* details) {
        if (call != "Write" || calls.empty() || calls.back() != call) {
            calls.push_back(call);
        }
        if (on_call) {
            on_call(call);
        }
        const std::string name = call.substr(0, call.find(' '));
        const auto found = std::find_if(m_failures.begin(), m_failures.end(), [&](const auto& row) { return row.first == name; });
        if (found == m_failures.end()) {
            return S_OK;
        }
        const HRESULT result = found->second;
        m_failures.erase(found);
        PutDetails(details, name + " is refused");
        return result;
    }

    LONGLONG m_read_pos = 0;
    LONGLONG m_size = 0;
    std::string m_upload;
    std::vector<std::pair<std::string, HRESULT>> m_failures;
};
