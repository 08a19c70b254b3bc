#include "workbench/desktop/ask.h"

namespace {

std::size_t Ask(Questions& questions, BoxIcon icon, const std::wstring& text, std::initializer_list<const wchar_t*> buttons) {
    Box box;
    box.icon = icon;
    box.text = text;
    for (const wchar_t* const title : buttons) {
        box.buttons.push_back({{}, title});
    }
    return questions.Ask(box).button.value_or(buttons.size() - 1);
}

} // namespace

std::size_t Choose(Questions& questions, const std::wstring& text, std::initializer_list<const wchar_t*> buttons) {
    return Ask(questions, BoxIcon::question, text, buttons);
}

void TellFailure(Questions& questions, const std::wstring& what, const std::wstring& why) {
    Ask(questions, BoxIcon::error, why.empty() ? what : what + L"\n" + why, {L"&Close"});
}
