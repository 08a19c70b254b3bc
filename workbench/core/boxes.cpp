#include "workbench/core/boxes.h"

#include <algorithm>

#include "workbench/core/errors.h"

namespace {

constexpr DWORD MaxItems = 64;
constexpr std::wstring_view FirstButtonKey = L"ok";

[[noreturn]] void ThrowBadRecord(const char* why) {
    throw HostException(E_INVALIDARG, std::string("A message box can't be shown: ") + why);
}

std::wstring TextOrEmpty(LPCWSTR text, const Strings& strings) {
    return text != nullptr ? strings.Resolve(text) : std::wstring();
}

std::vector<BoxItem> ReadItems(const KOV::MessageBoxItem* items, DWORD count, const Strings& strings) {
    if (count > MaxItems || (count > 0 && items == nullptr)) {
        ThrowBadRecord("its items can't be read");
    }
    std::vector<BoxItem> result;
    for (const KOV::MessageBoxItem& item : std::vector(items, items + count)) {
        if (item.key == nullptr) {
            ThrowBadRecord("an item has no key");
        }
        result.push_back({item.key, TextOrEmpty(item.title, strings)});
    }
    return result;
}

std::vector<DWORD> IdsOf(const std::vector<BoxItem>& items, NameIds& ids) {
    std::vector<DWORD> result;
    std::transform(items.begin(), items.end(), std::back_inserter(result),
                   [&](const BoxItem& item) { return *ids.Find(item.key, true); });
    return result;
}

std::size_t IndexOf(const std::vector<DWORD>& ids, DWORD id) {
    const auto found = std::find(ids.begin(), ids.end(), id);
    return found != ids.end() ? static_cast<std::size_t>(found - ids.begin()) : 0;
}

BoxIcon IconOf(DWORD flags) {
    switch (flags & KOV::UIX_MsgBox_IconMask) {
    case 0:
        return BoxIcon::module;
    case KOV::UIX_MsgBox_IconQuestion:
        return BoxIcon::question;
    case KOV::UIX_MsgBox_IconError:
        return BoxIcon::error;
    default:
        return BoxIcon::information;
    }
}

void ReplaceAll(std::wstring& text, std::wstring_view from, std::wstring_view to) {
    for (std::size_t at = text.find(from); at != std::wstring::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::wstring FromMarkup(std::wstring text) {
    ReplaceAll(text, L"&lt;", L"<");
    ReplaceAll(text, L"&amp;", L"&");
    return text;
}

std::wstring ToMarkup(std::wstring text) {
    ReplaceAll(text, L"&", L"&amp;");
    ReplaceAll(text, L"<", L"&lt;");
    return text;
}

BoxItem WithKey(LPCWSTR text, const Strings& strings) { return {strings.KeyOf(text), strings.Resolve(text)}; }

void ReadEdit(const KOV::MessageBoxParameters& record, const Strings& strings, TranslatedBox& translated) {
    if ((record.flags & KOV::UIX_MsgBox_EditLine) == 0) {
        return;
    }
    translated.edit_is_markup = (record.flags & BoxFlag_EditTextIsMarkup) == BoxFlag_EditTextIsMarkup;
    BoxEdit edit;
    if (record.edit_label != nullptr) {
        edit.label = WithKey(record.edit_label, strings);
    }
    const std::wstring text = record.edit_text != nullptr ? record.edit_text : L"";
    edit.text = translated.edit_is_markup ? FromMarkup(text) : text;
    edit.has_several_lines = translated.edit_is_markup;
    edit.is_required = (record.flags & KOV::UIX_MsgBox_EditTextRequired) != 0;
    translated.box.edit = std::move(edit);
}

} // namespace

BoxAnswer UnansweredBox(const Box& box) {
    return {std::nullopt, box.check && box.check->is_checked, box.radio, box.edit ? box.edit->text : std::wstring()};
}

TranslatedBox ReadBoxRecord(const KOV::MessageBoxParameters& record, const Strings& strings, NameIds& ids) {
    if (record.size != sizeof(record)) {
        ThrowBadRecord("its record has another size");
    }
    TranslatedBox translated;
    Box& box = translated.box;
    box.text = TextOrEmpty(record.message, strings);
    box.icon = IconOf(record.flags);
    box.image = record.icon;
    box.buttons = ReadItems(record.buttons, record.button_count, strings);
    if (box.buttons.empty()) {
        ThrowBadRecord("it has no button");
    }
    box.radios = ReadItems(record.radios, record.radio_count, strings);
    translated.button_ids = IdsOf(box.buttons, ids);
    translated.radio_ids = IdsOf(box.radios, ids);
    box.default_button = IndexOf(translated.button_ids, record.default_button_id);
    box.radio = IndexOf(translated.radio_ids, record.radio_id);
    if (record.check_text != nullptr) {
        box.check = BoxCheck{WithKey(record.check_text, strings), record.check_state != 0};
    }
    ReadEdit(record, strings, translated);

    // Only now, since the number belongs to the key that the record gives.
    if (BoxItem& first = box.buttons.front(); first.key == FirstButtonKey) {
        if (std::wstring key = strings.KeyOf(first.title); !key.empty()) {
            first.key = std::move(key);
        }
    }
    return translated;
}

BoxResults WriteBoxAnswer(const TranslatedBox& translated, const BoxAnswer& answer) {
    const Box& box = translated.box;
    BoxResults results;
    results.check_state = answer.is_checked ? 1 : 0;
    if (!box.radios.empty()) {
        results.radio_id = translated.radio_ids[answer.radio < box.radios.size() ? answer.radio : box.radio];
    }
    if (box.edit) {
        results.edit_text = Bstr(std::wstring_view(translated.edit_is_markup ? ToMarkup(answer.edit) : answer.edit));
    }
    const bool is_refused = box.edit && box.edit->is_required && answer.edit.empty() && answer.button == std::size_t{0};
    if (answer.button && *answer.button < box.buttons.size() && !is_refused) {
        results.button_id = translated.button_ids[*answer.button];
    }
    return results;
}
