#include "workbench/desktop/ask.h"

#include <regex>

namespace {

std::size_t Ask(Questions& questions, BoxIcon icon, const std::wstring& text, std::vector<BoxItem> buttons,
                std::size_t default_button = 0) {
    Box box;
    box.icon = icon;
    box.text = text;
    box.buttons = std::move(buttons);
    box.default_button = default_button;
    return questions.Ask(box).button.value_or(box.buttons.size() - 1);
}

} // namespace

std::wstring WithoutCode(const std::wstring& why) {
    static const std::wregex code(L"^(HRESULT 0x[0-9A-Fa-f]{8}|System error code [0-9]+): ");
    return std::regex_replace(why, code, L"");
}

std::size_t Choose(Questions& questions, const std::wstring& text, std::vector<BoxItem> buttons, std::size_t default_button) {
    return Ask(questions, BoxIcon::question, text, std::move(buttons), default_button);
}

void TellFailure(Questions& questions, const std::wstring& what, const std::wstring& why) {
    Ask(questions, BoxIcon::error, why.empty() ? what : what + L"\n" + WithoutCode(why), {{L"btn.close", L"&Close"}});
}
