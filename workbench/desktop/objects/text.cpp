#include "workbench/desktop/objects/text.h"

#include <Qt>

namespace {

constexpr std::wstring_view key_prefix = L"$$$.";

} // namespace

BSTR ToBstr(const QString& text) {
    const std::wstring wide = ToWide(text);
    return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

QString Resolved(KOV::IKOV_Inst& host, LPCWSTR text) {
    const std::wstring_view given = text == nullptr ? std::wstring_view() : std::wstring_view(text);
    Bstr found;
    if (given.starts_with(key_prefix) && SUCCEEDED(host.GetLocalStr(text + key_prefix.size(), &found))) {
        return ToQString(static_cast<LPCWSTR>(found));
    }
    return ToQString(given);
}

QString PlainTip(const QString& text) {
    return text.isEmpty() ? text : "<span>" + text.toHtmlEscaped().replace('\n', "<br>") + "</span>";
}

QString WithoutMnemonic(QString text) { return text.replace('&', "&&"); }
