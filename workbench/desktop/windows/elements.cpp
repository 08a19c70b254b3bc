#include "workbench/desktop/windows/elements.h"

#include <algorithm>
#include <iterator>

#include "workbench/desktop/list/list_control.h"
#include "workbench/desktop/windows/controls/button.h"
#include "workbench/desktop/windows/controls/check.h"
#include "workbench/desktop/windows/controls/combo.h"
#include "workbench/desktop/windows/controls/edit.h"
#include "workbench/desktop/windows/controls/group.h"
#include "workbench/desktop/windows/controls/label.h"
#include "workbench/desktop/windows/controls/picture.h"
#include "workbench/desktop/windows/controls/text_field.h"

namespace {

using Object = ComPtr<KOV::IUIX_Obj>;

Object MakePicture(const LayoutItem& item, QWidget* parent) {
    return MakeObject<Picture>(parent, (item.style & picture_style_line) != 0);
}
Object MakeCombo(const LayoutItem& item, QWidget* parent) {
    return MakeObject<Combo>(parent, (item.style & combo_style_editable) != 0);
}
Object MakeButton(const LayoutItem&, QWidget* parent) { return MakeObject<Button>(parent); }
Object MakeLabel(const LayoutItem&, QWidget* parent) { return MakeObject<Label>(parent); }
Object MakeList(const LayoutItem& item, QWidget* parent) {
    const ComPtr<ListControl> list = MakeObject<ListControl>(parent);
    (void)list->SetStyle(item.style, list_style_multi_select);
    return list;
}
Object MakeEdit(const LayoutItem& item, QWidget* parent) {
    return (item.style & edit_style_many_lines) != 0 ? Object(MakeObject<TextField>(parent)) : Object(MakeObject<Edit>(parent));
}
Object MakeGroup(const LayoutItem&, QWidget* parent) { return MakeObject<Group>(parent); }
Object MakeCheck(const LayoutItem&, QWidget* parent) { return MakeObject<Check>(parent); }

constexpr Growth stays{false, 0};
constexpr Growth lets_grow{true, 0};

Growth Stays(const LayoutItem&) { return stays; }
Growth LetsGrow(const LayoutItem&) { return lets_grow; }
Growth GrowsMost(const LayoutItem&) { return {true, 4}; }
Growth ComboAcross(const LayoutItem&) { return {true, 2}; }
Growth PictureAcross(const LayoutItem& item) { return (item.style & picture_style_line) != 0 ? lets_grow : stays; }
Growth LabelAcross(const LayoutItem& item) {
    return (item.draw_text_flags & label_text_ellipsis_in_the_middle) != 0 ? Growth{true, 1} : lets_grow;
}
Growth EditAcross(const LayoutItem& item) { return (item.style & edit_style_number) != 0 ? stays : Growth{true, 3}; }
Growth EditDown(const LayoutItem& item) { return (item.style & edit_style_many_lines) != 0 ? Growth{true, 3} : stays; }

constexpr Element elements[] = {
    {ElementKind::picture, MakePicture, PictureAcross, Stays}, {ElementKind::combo, MakeCombo, ComboAcross, Stays},
    {ElementKind::button, MakeButton, Stays, Stays},           {ElementKind::label, MakeLabel, LabelAcross, Stays},
    {ElementKind::list, MakeList, GrowsMost, GrowsMost},       {ElementKind::edit, MakeEdit, EditAcross, EditDown},
    {ElementKind::group, MakeGroup, LetsGrow, LetsGrow},       {ElementKind::check, MakeCheck, LetsGrow, Stays},
};

} // namespace

const Element& ElementOf(ElementKind kind) {
    return *std::find_if(std::begin(elements), std::end(elements), [&](const Element& row) { return row.kind == kind; });
}
