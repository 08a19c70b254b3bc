#pragma once

/// Layouts of windows: an XML text that the module carries, as values. Nothing here knows a widget. Any thread.
///
///     <dialogs>
///       <dialog id="…" title="$$$.key" width="700" height="480" defItem="btn.ok">
///         <fixedArea size="40"/>
///         <items> <button id="btn.ok" x="8" y="8" width="100" height="24" style="#00000002" fixed="true" text="$$$.key"/> …
///         </items>
///       </dialog>
///     </dialogs>
///
/// Lengths are pixels at 96 dots an inch with a text of 8.25 points.

#include <cstddef>
#include <string>
#include <vector>

#include <QRect>

#include "platform/types.h"

enum class ElementKind { picture, combo, button, label, list, edit, group, check };

/// Bits of styles.
constexpr DWORD edit_style_many_lines = 0x100;
constexpr DWORD edit_style_number = 0x40000;
constexpr DWORD combo_style_editable = 0x100;
constexpr DWORD picture_style_line = 0x1000;
/// Bits of `draw_text_flags`: to the right (unless the two below it are set too), an ellipsis in the middle.
constexpr DWORD label_text_alignment = 0x7;
constexpr DWORD label_text_right = 0x4;
constexpr DWORD label_text_ellipsis_in_the_middle = 0x200;

constexpr int foreground_margin = 6;

struct LayoutItem {
    ElementKind kind = ElementKind::picture;
    std::wstring id;
    /// From the corner of the window, or of the strip at its bottom for one that is fixed.
    QRect rect;
    bool is_fixed = false;
    DWORD style = 0;
    DWORD draw_text_flags = 0;
    /// Texts as they stand, "$$$." in front of those that are looked up.
    std::wstring text;
    std::wstring cue;
    /// A name of the theme's.
    std::wstring icon;
};

struct Layout {
    std::wstring id;
    std::wstring title;
    QSize size;
    /// Height of the strip at the bottom; 0 when there is none, and then `is_fixed` says nothing.
    int fixed_area = 0;
    /// What stands above the strip lies on an area of its own, `foreground_margin` from the edges of the window.
    bool has_foreground = false;
    std::wstring default_item;
    std::vector<LayoutItem> items;
};

/// The layout with this id. Throws `HostException` 0x8007000D that names what is wrong where, 0x80070490 when there is none with
/// the id.
Layout ReadLayout(const void* bytes, std::size_t size, const std::wstring& id);

/// All layouts of a text, so that a broken one is found when the program starts. Throws as `ReadLayout` does.
std::vector<Layout> ReadLayouts(const void* bytes, std::size_t size);
