#pragma once

/// Questions to the user as plain values, and who answers them.

#include <optional>
#include <string>
#include <vector>

#include "host/user_interface.h"

enum class BoxIcon { module, information, question, error };

/// A button, radio button or other text with the key of its text, such as "sp.btn.save". A key is empty when the text
/// came from no table.
struct BoxItem {
    std::wstring key;
    std::wstring title;
};

struct BoxCheck {
    BoxItem item;
    bool is_checked = false;
};

struct BoxEdit {
    BoxItem label;
    std::wstring text;
    /// The box can't be answered by its first button while the line is empty.
    bool is_required = false;
    bool has_several_lines = false;
};

/// One question. Texts may hold `<b>` and `</b>`, line feeds, and `&` before the letter that is a button's accelerator.
struct Box {
    std::wstring text;
    BoxIcon icon = BoxIcon::module;
    /// The module's picture; may be null.
    ComPtr<KOV::IKOV_MultiSizeImage> image;
    /// Never empty.
    std::vector<BoxItem> buttons;
    std::size_t default_button = 0;
    std::optional<BoxCheck> check;
    std::vector<BoxItem> radios;
    std::size_t radio = 0;
    std::optional<BoxEdit> edit;
};

struct BoxAnswer {
    /// Index of the button; nothing when the box ended without one.
    std::optional<std::size_t> button;
    bool is_checked = false;
    std::size_t radio = 0;
    std::wstring edit;
};

/// The answer that changes nothing: what the box shows at its start, and no button.
BoxAnswer UnansweredBox(const Box& box);

/// Puts questions to whoever sits before the program. Called on any thread, by several at once: who has one terminal lets one
/// question wait for another, who has windows shows them on top of each other. No lock is held around it, since a thread's
/// question may need the main thread, which may be asking one of its own.
class Questions {
public:
    virtual ~Questions() = default;
    virtual BoxAnswer Ask(const Box& box) = 0;
};

/// Who wants an account, and what was tried last.
struct AccountDemand {
    std::wstring host;
    std::wstring status_text;
    std::wstring user;
    std::wstring password;
};

struct AccountAnswer {
    std::wstring user;
    std::wstring password;
};

/// Asks for an account. Called on any thread.
class AccountPrompt {
public:
    virtual ~AccountPrompt() = default;
    /// Nothing when the user gives up.
    virtual std::optional<AccountAnswer> Ask(const AccountDemand& demand) = 0;
};
