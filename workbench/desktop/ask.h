#pragma once

/// The program's own questions.

#include <initializer_list>
#include <string>

#include "workbench/core/questions.h"

/// Buttons are verbs, `&` before the letter that chooses them. A box that ends without a button counts as its last one. Gives the
/// index of the button. Any thread.
std::size_t Choose(Questions& questions, const std::wstring& text, std::initializer_list<const wchar_t*> buttons);

/// Says that something could not be done.
void TellFailure(Questions& questions, const std::wstring& what, const std::wstring& why);
