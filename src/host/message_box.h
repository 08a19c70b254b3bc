#pragma once

/// The record by which the module asks the host for a message box. Its layout is the host's, byte for byte.

#include <cstddef>

#include "platform/com.h"

namespace KOV {

struct IKOV_MultiSizeImage;

constexpr DWORD UIX_MsgBox_IconQuestion = 0x200;
constexpr DWORD UIX_MsgBox_IconError = 0x300;
constexpr DWORD UIX_MsgBox_IconMask = 0x700;
constexpr DWORD UIX_MsgBox_EditLine = 0x200000;
constexpr DWORD UIX_MsgBox_EditTextRequired = 0x4000000;

/// A button or a radio button. The key is turned into the item's number by `Str2ID`.
struct MessageBoxItem {
    LPCWSTR key;
    LPCWSTR title;
    std::uint64_t reserved16;
    std::uint64_t reserved24;
};
static_assert(sizeof(MessageBoxItem) == 32);

struct MessageBoxParameters {
    DWORD size;
    DWORD reserved4;
    HWND owner;
    DWORD flags;
    BYTE reserved20[20];
    IKOV_MultiSizeImage* icon;
    std::uint64_t reserved48;
    LPCWSTR message;
    BYTE reserved64[24];
    DWORD radio_count;
    DWORD reserved92;
    const MessageBoxItem* radios;
    DWORD radio_id;
    DWORD button_count;
    const MessageBoxItem* buttons;
    LPCWSTR check_text;
    DWORD check_state;
    BYTE reserved132[28];
    LPCWSTR edit_text;
    DWORD default_button_id;
    BYTE reserved172[36];
    LPCWSTR edit_label;
};
static_assert(sizeof(MessageBoxParameters) == 216);
static_assert(offsetof(MessageBoxParameters, owner) == 8 && offsetof(MessageBoxParameters, flags) == 16);
static_assert(offsetof(MessageBoxParameters, icon) == 40 && offsetof(MessageBoxParameters, message) == 56);
static_assert(offsetof(MessageBoxParameters, radio_count) == 88 && offsetof(MessageBoxParameters, radios) == 96);
static_assert(offsetof(MessageBoxParameters, radio_id) == 104 && offsetof(MessageBoxParameters, button_count) == 108);
static_assert(offsetof(MessageBoxParameters, buttons) == 112 && offsetof(MessageBoxParameters, check_text) == 120);
static_assert(offsetof(MessageBoxParameters, check_state) == 128 && offsetof(MessageBoxParameters, edit_text) == 160);
static_assert(offsetof(MessageBoxParameters, default_button_id) == 168 && offsetof(MessageBoxParameters, edit_label) == 208);

} // namespace KOV
