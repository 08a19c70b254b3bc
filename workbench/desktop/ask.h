#pragma once

/// The program's own questions.

#include <string>
#include <vector>

#include "workbench/core/questions.h"

/// Buttons are verbs with their names, such as {"btn.save", "&Save"}; `&` before the letter that chooses them. A box that ends
/// without a button counts as its last one. Enter chooses `default_button`: never one that destroys what can't be had again.
/// Gives the index of the button. Any thread.
std::size_t Choose(Questions& questions, const std::wstring& text, std::vector<BoxItem> buttons, std::size_t default_button = 0);

/// Words without the code that stands in front of a system's own text.
std::wstring WithoutCode(const std::wstring& why);

/// Says that something could not be done.
void TellFailure(Questions& questions, const std::wstring& what, const std::wstring& why);
