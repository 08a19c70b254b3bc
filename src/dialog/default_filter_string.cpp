#include "dialog/default_filter_string.h"

#include <span>

#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"

namespace {

constexpr LPCWSTR open_tokens[] = {L"<pdf>", L"<allSupp>", L"<all>"};
constexpr LPCWSTR save_tokens[] = {L"<pdf>", L"<all>"};
constexpr LPCWSTR removed_tokens[] = {L"<doc>", L"<xls>", L"<ppt>", L"<vsd>"};

/// Empty for a token that the host doesn't know.
std::wstring TypeText(KOV::IKOV_Inst* kov, LPCWSTR token, LONG mode, std::size_t most_bars) {
    Bstr filter;
    std::wstring text = SUCCEEDED(kov->GetFileFilter(token, mode, &filter)) ? filter.Text() : std::wstring();
    for (; most_bars > 0 && text.ends_with(L'|'); --most_bars) {
        text.pop_back();
    }
    return text;
}

/// What the host gives ends as a whole filter string does, with a bar of its own, or with that of its last type alone.
void AppendTypes(std::wstring& io_text, const std::wstring& types) {
    io_text += types;
    if (!types.empty() && !types.ends_with(L'|')) {
        io_text += L'|';
    }
}

/// Takes `part` out of `io_text` at `position`, with the `separator` that follows it.
void RemoveAt(std::wstring& io_text, std::size_t position, const std::wstring& part, wchar_t separator) {
    if (part.empty() || position == std::wstring::npos) {
        return;
    }
    std::size_t length = part.size();
    if (position + length < io_text.size() && io_text[position + length] == separator) {
        ++length;
    }
    io_text.erase(position, length);
}

/// As a type of its own, and among the patterns of the types that stand for several.
void RemoveType(std::wstring& io_text, const std::wstring& type) {
    RemoveAt(io_text, io_text.find(type), type, L'|');
    const std::size_t bar = type.find(L'|');
    const std::wstring patterns = bar == std::wstring::npos ? std::wstring() : type.substr(bar + 1);
    RemoveAt(io_text, io_text.find(patterns), patterns, L';');
}

void RemoveSecond(std::wstring& io_text, const std::wstring& type) {
    const std::size_t first = io_text.find(type);
    if (!type.empty() && first != std::wstring::npos) {
        RemoveAt(io_text, io_text.find(type, first + type.size()), type, L'|');
    }
}

} // namespace

HRESULT BuildDefaultFilterString(KOV::IKOV_Inst* kov, bool is_open_dialog, std::wstring& out_text) {
    TRACE_ENTER(L"{}", is_open_dialog);
    CHECK_OR_RETURN(kov != nullptr, E_INVALIDARG);
    out_text.clear();
    for (const LPCWSTR token : is_open_dialog ? std::span<const LPCWSTR>(open_tokens) : std::span<const LPCWSTR>(save_tokens)) {
        AppendTypes(out_text, TypeText(kov, token, 1, 1));
    }
    out_text += L'|';
    if (is_open_dialog) {
        for (const LPCWSTR token : removed_tokens) {
            RemoveType(out_text, TypeText(kov, token, 0, 2));
        }
        RemoveSecond(out_text, TypeText(kov, L"<pdf>", 0, 2));
    }
    TRACE_RETURN(S_OK);
}
