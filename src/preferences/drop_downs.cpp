#include "preferences/drop_downs.h"

namespace {

ComPtr<KOV::IUIX_Combo> FindCombo(KOV::IUIX_Dialog* dialog, LPCWSTR control) {
    ComPtr<KOV::IUIX_Obj> object;
    ComPtr<KOV::IUIX_Combo> combo;
    if (SUCCEEDED(dialog->GetItem(control, 1, &object)) && !object.IsNull()) {
        (void)object->_QueryImpl(&combo); // null when it is another kind of control
    }
    return combo;
}

} // namespace

namespace PreferencesUi {

void FillItems(KOV::IUIX_Dialog* dialog, const DropDown& drop_down) {
    const ComPtr<KOV::IUIX_Combo> combo = FindCombo(dialog, drop_down.control);
    if (combo.IsNull()) {
        return;
    }
    for (const Choice& choice : drop_down.choices) {
        combo->InsertItem(-1, choice.text, nullptr, nullptr, choice.value, 0);
    }
}

void ShowChoice(KOV::IUIX_Dialog* dialog, const DropDown& drop_down, const Preferences& preferences) {
    if (const ComPtr<KOV::IUIX_Combo> combo = FindCombo(dialog, drop_down.control); !combo.IsNull()) {
        LONG index = -1;
        (void)combo->SelectItemByParam(preferences.*drop_down.field & ~drop_down.shown_elsewhere, &index);
    }
}

void TakeChoice(KOV::IUIX_Dialog* dialog, const DropDown& drop_down, Preferences& io_preferences) {
    const ComPtr<KOV::IUIX_Combo> combo = FindCombo(dialog, drop_down.control);
    LONG index = -1;
    LONGLONG value = 0;
    if (!combo.IsNull() && SUCCEEDED(combo->get_SelItem(&index)) && index >= 0 && SUCCEEDED(combo->GetItemParam(index, &value))) {
        std::uint32_t& field = io_preferences.*drop_down.field;
        field = WithBits(field, drop_down.mask, static_cast<std::uint32_t>(value));
    }
}

} // namespace PreferencesUi
