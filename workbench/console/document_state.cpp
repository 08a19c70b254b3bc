#include "workbench/console/document_state.h"

#include <algorithm>
#include <string_view>

#include "workbench/console/documents.h"
#include "workbench/core/commands.h"
#include "workbench/core/document_life.h"
#include "workbench/core/view.h"

namespace {

/// The place of the user in a text.
constexpr std::wstring_view user_placeholder = L"%1";

constexpr const wchar_t* other_user_texts[] = {L"$$$.sp.ibar.checkedOutToOtherEditing",
                                               L"$$$.sp.ibar.checkedOutToOtherNoEditing"};
constexpr const wchar_t* no_rights_texts[] = {L"$$$.sp.ibar.cannotEditEditing", L"$$$.sp.ibar.cannotEditNoEditing"};

/// What stands at the placeholder of `pattern` in `text`; nothing when the rest differs.
std::optional<std::wstring> ValueIn(std::wstring_view text, std::wstring_view pattern) {
    const std::size_t place = pattern.find(user_placeholder);
    if (place == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::wstring_view before = pattern.substr(0, place);
    const std::wstring_view after = pattern.substr(place + user_placeholder.size());
    if (text.size() < before.size() + after.size() || !text.starts_with(before) || !text.ends_with(after)) {
        return std::nullopt;
    }
    return std::wstring(text.substr(before.size(), text.size() - before.size() - after.size()));
}

/// A document of which nothing is done but asked.
DocumentState ReadBar(Host& host, KOV::IAFS_File* file) {
    const auto document = MakeObject<Document>(file, DocumentFunctions());
    DocumentLife life(host);
    const HRESULT result = life.Opened(*document);
    const auto view = MakeObject<DocumentView>(document.Get());
    const auto is_enabled = [&](const wchar_t* name) { return host.Commands().IsEnabled(host.Commands().IdOf(name), view); };
    const InfoBarWords words{[&](const std::wstring& key) { return host.Resolve(key); }, is_enabled(L"sp.cmd.checkOut"),
                             is_enabled(L"sp.cmd.checkIn")};
    const std::vector<InfoBarSpan> spans = document->Bar().Spans();
    const DWORD id = host.IdOfName(L"ibar.sharepoint");
    const auto span = std::find_if(spans.begin(), spans.end(), [&](const InfoBarSpan& known) { return known.id == id; });
    const DocumentState state = ReadDocumentState(span != spans.end() ? std::optional(*span) : std::nullopt, words);
    life.Closed(*document);
    Check(result);
    return state;
}

} // namespace

DocumentState ReadDocumentState(const std::optional<InfoBarSpan>& span, const InfoBarWords& words) {
    DocumentState state;
    if (!span) {
        return state;
    }
    state.can_edit = std::none_of(std::begin(no_rights_texts), std::end(no_rights_texts),
                                  [&](const wchar_t* key) { return span->text == words.text_of(key); });
    if (words.is_check_out_enabled || words.is_check_in_enabled) {
        state.checked_out = words.is_check_out_enabled ? "none" : "me";
        return state;
    }
    for (const wchar_t* const key : other_user_texts) {
        if (auto user = ValueIn(span->text, words.text_of(key))) {
            state.checked_out = "other_user";
            state.user = std::move(user);
            return state;
        }
    }
    return state;
}

DocumentState AskDocumentState(const Context& context, KOV::IAFS_Name* name) {
    const Terminal::Silence silence(context.terminal);
    const ComPtr<KOV::IAFS_File> file = OpenDocument(context, name, KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting);
    DocumentState state;
    std::exception_ptr failure;
    Check(context.host.Loop().Call(
        [&] {
            try {
                state = ReadBar(context.host, file);
            } catch (...) {
                failure = std::current_exception();
            }
            return S_OK;
        },
        -1));
    if (failure) {
        std::rethrow_exception(failure);
    }
    return state;
}
