#include "workbench/desktop/windows/gallery_samples.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "host/controls.h"
#include "host/list.h"
#include "host/object_bases.h"
#include "workbench/desktop/windows/desktop_uix.h"

namespace {

/// Names as servers have them: to the right, with pictures, with markup, long.
const std::array<std::wstring, 7>& SampleNames() {
    static const std::array<std::wstring, 7> names = {L"..",
                                                      L"Annual report.pdf",
                                                      L"\x5D3\x5D5\x5D7 \x5E9\x5E0\x5EA\x5D9.pdf",
                                                      L"Holiday \x1F3D6 photos",
                                                      L"<b>bold</b> & <img src=x>.pdf",
                                                      std::wstring(251, L'n') + L".pdf",
                                                      L"$$$.btn.ok"};
    return names;
}

constexpr LPCWSTR sample_path =
    L"https://server.example/sites/team/Shared Documents/A folder with a long name/Another one/Reports";
/// Of a list's width.
constexpr double name_column_share = 0.7;
constexpr double other_column_share = 0.3;

class SampleRows final : public cCoClassUnknownT<KOV::IUIX_ListCallbacks> {
private:
    HRESULT List_OnGetItemImageSize(KOV::IUIX_List*, const KOV::UiListItemId*, SIZE*) override { return S_FALSE; }
    HRESULT List_OnGetItemImage(KOV::IUIX_List*, const KOV::UiListItemId*, KOV::IKOV_MultiSizeImage**, double*) override {
        return S_FALSE;
    }
    HRESULT List_OnItemClick(KOV::IUIX_List*, const KOV::UiListItemId*, DWORD, DWORD, LONG) override { return S_FALSE; }
    HRESULT List_OnHdrItemClicked(KOV::IUIX_List*, LONG, LONG) override { return S_FALSE; }
#define KOV_SLOT(number)                                                                                                         \
    HRESULT List_Reserved##number() override { return S_FALSE; }
    KOV_LIST_RESERVED_SLOTS(KOV_SLOT)
#undef KOV_SLOT
    HRESULT List_OnGetItemText(KOV::IUIX_List*, const KOV::UiListItemId* item, LPCWSTR* out_text, ULONG* out_length,
                               DWORD* out_flags) override {
        static const std::wstring size = L"1.2 MB";
        const std::wstring& text = item->nColumn == 0 ? SampleNames()[static_cast<std::size_t>(item->nItem)] : size;
        *out_text = text.c_str();
        *out_length = static_cast<ULONG>(text.size());
        *out_flags = item->nColumn == 0 ? KOV::UIX_DrawText_Ellipsis : KOV::UIX_DrawText_Right;
        return S_OK;
    }
};

class Samples final : public cCoClassDispatchT<KOV::IUIX_ObjImpl> {
public:
    Samples(DesktopUix& uix, Layout layout) : m_uix(uix), m_layout(std::move(layout)) {}

    HRESULT put_Obj(KOV::IUIX_Obj* object) override {
        m_dlg.Release();
        return object == nullptr ? S_OK : object->_QueryImpl(&m_dlg);
    }
    HRESULT OnEvent(KOV::UiEvent* io_event) override {
        if (io_event->code != KOV::UiEvent_Created) {
            return S_FALSE;
        }
        FillAll();
        return S_OK;
    }

private:
    void FillAll() {
        for (const LayoutItem& item : m_layout.items) {
            Fill(item);
            if (std::wstring_view(item.id).starts_with(L"off.")) {
                (void)m_dlg->EnableItem(item.id.c_str(), VARIANT_FALSE);
            }
        }
    }

    template <class Interface>
    ComPtr<Interface> Item(const LayoutItem& item) {
        ComPtr<KOV::IUIX_Obj> object;
        ComPtr<Interface> control;
        if (SUCCEEDED(m_dlg->GetItem(item.id.c_str(), 1, &object))) {
            (void)object->_QueryImpl(&control);
        }
        return control;
    }

    void Fill(const LayoutItem& item) {
        switch (item.kind) {
        case ElementKind::combo:
            FillCombo(*Item<KOV::IUIX_Combo>(item));
            break;
        case ElementKind::list:
            FillList(*Item<KOV::IUIX_List>(item));
            break;
        case ElementKind::edit:
            FillEdit(item);
            break;
        case ElementKind::check:
            (void)m_dlg->SetItemCheck(item.id.c_str(), m_ticks++ % 2, 1);
            break;
        case ElementKind::label:
            if (item.text.empty()) {
                (void)m_dlg->SetItemText(item.id.c_str(), sample_path);
                HideBelow(item);
            }
            break;
        case ElementKind::picture:
        case ElementKind::button:
        case ElementKind::group:
            break;
        }
    }
    /// A window shows either a path or the controls that stand in the same place.
    void HideBelow(const LayoutItem& path) {
        for (const LayoutItem& item : m_layout.items) {
            const bool is_below = item.kind != ElementKind::group && item.id != path.id && path.rect.contains(item.rect);
            (void)m_dlg->ShowItem(item.id.c_str(), is_below ? VARIANT_FALSE : VARIANT_TRUE);
        }
    }
    void FillCombo(KOV::IUIX_Combo& combo) {
        LONGLONG parameter = 0;
        for (const wchar_t* const text : {L"Ask what to do", L"Check in and keep checked out", L"<i>Plain</i> && text"}) {
            (void)combo.InsertItem(-1, text, nullptr, nullptr, parameter++, 0);
        }
        (void)combo.put_SelItem(1);
    }
    void FillList(KOV::IUIX_List& list) {
        (void)list.put_Callbacks(MakeObject<SampleRows>());
        ComPtr<KOV::IUIX_Obj> object;
        RECT area{};
        (void)list.get_Obj(&object);
        (void)object->get_ClientRect(&area);
        (void)list.InsertColumn(-1, static_cast<LONG>(area.right * name_column_share), L"Name", 0, L"The name", 0, 0);
        (void)list.InsertColumn(-1, static_cast<LONG>(area.right * other_column_share), L"Size", 0, L"The size", 0, 0);
        for (std::size_t row = 0; row < SampleNames().size(); ++row) {
            (void)list.InsertItem(-1, 0, 0);
        }
    }
    void FillEdit(const LayoutItem& item) {
        if ((item.style & edit_style_number) == 0) {
            const bool has_lines = (item.style & edit_style_many_lines) != 0;
            (void)m_dlg->SetItemText(item.id.c_str(),
                                     has_lines ? L"*/Forms\n*/_catalogs*\n<b>plain</b>" : SampleNames()[1].c_str());
            return;
        }
        ComPtr<KOV::IUIX_NumberValue> number;
        (void)m_uix.CreateNumberValue(&number);
        (void)number->put_AllowedChars(L"0123456789");
        (void)number->SetRange(0, -1, L"", 0, 999, 1, 1);
        (void)number->put_Value(30);
        const ComPtr<KOV::IUIX_Edit> edit = Item<KOV::IUIX_Edit>(item);
        (void)edit->put_NumberValue(number);
        (void)edit->put_NumberMode(3);
    }

    DesktopUix& m_uix;
    const Layout m_layout;
    ComPtr<KOV::IUIX_Dialog> m_dlg;
    LONG m_ticks = 0;
};

} // namespace

ComPtr<KOV::IUIX_ObjImpl> MakeSamples(DesktopUix& uix, Layout layout) { return MakeObject<Samples>(uix, std::move(layout)); }

std::string_view ControlsLayout() {
    return R"(<dialogs><dialog id="Controls" title="Controls" width="640" height="420" foreground="0" defItem="on.button"><items>
<group id="on.group" x="8" y="6" width="304" height="250" text="Enabled"/>
<group id="off.group" x="328" y="6" width="304" height="250" text="Disabled"/>
<label id="on.label" x="20" y="31" width="80" height="15" text="Na&amp;me:" drawTextFlags="#00000507"/>
<edit id="on.edit" x="108" y="28" width="192" height="20" style="#00000002"/>
<label id="on.combo.label" x="20" y="57" width="80" height="15" text="&amp;Action:" drawTextFlags="#00000507"/>
<combo id="on.combo" x="108" y="54" width="192" height="20" style="#00000002"/>
<label id="on.address.label" x="20" y="83" width="80" height="15" text="Add&amp;ress:" drawTextFlags="#00000507"/>
<combo id="on.address" x="108" y="80" width="192" height="20" style="#00000102" cue="Enter address..."/>
<check id="on.check" x="108" y="106" width="192" height="15" style="#00000002" text="&amp;Show warning"/>
<check id="on.check2" x="108" y="125" width="192" height="15" style="#00000002" text="Disable e&amp;diting"/>
<picture id="on.line" x="20" y="148" width="280" height="2" style="#00001000"/>
<edit id="on.field" x="20" y="158" width="280" height="50" style="#00100102"/>
<label id="on.days.label" x="20" y="221" width="80" height="15" text="Days:" drawTextFlags="#00000507"/>
<edit id="on.days" x="108" y="218" width="38" height="20" style="#00040002"/>
<picture id="on.picture" x="170" y="214" width="30" height="26" image="cmd.openFromURL"/>
<button id="on.button" x="210" y="216" width="90" height="24" style="#00000002" text="&amp;Open" icon="ico.folder"/>
<label id="off.label" x="340" y="31" width="80" height="15" text="Name:" drawTextFlags="#00000507"/>
<edit id="off.edit" x="428" y="28" width="192" height="20" style="#00000002"/>
<label id="off.combo.label" x="340" y="57" width="80" height="15" text="Action:" drawTextFlags="#00000507"/>
<combo id="off.combo" x="428" y="54" width="192" height="20" style="#00000002"/>
<label id="off.address.label" x="340" y="83" width="80" height="15" text="Address:" drawTextFlags="#00000507"/>
<combo id="off.address" x="428" y="80" width="192" height="20" style="#00000102" cue="Enter address..."/>
<check id="off.check" x="428" y="106" width="192" height="15" style="#00000002" text="Show warning"/>
<check id="off.check2" x="428" y="125" width="192" height="15" style="#00000002" text="Disable editing"/>
<picture id="off.line" x="340" y="148" width="280" height="2" style="#00001000"/>
<edit id="off.field" x="340" y="158" width="280" height="50" style="#00100102"/>
<label id="off.days.label" x="340" y="221" width="80" height="15" text="Days:" drawTextFlags="#00000507"/>
<edit id="off.days" x="428" y="218" width="38" height="20" style="#00040002"/>
<picture id="off.picture" x="490" y="214" width="30" height="26" image="cmd.openFromURL"/>
<button id="off.button" x="530" y="216" width="90" height="24" style="#00000002" text="Open" icon="ico.folder"/>
<label id="on.path" x="8" y="264" width="624" height="15" drawTextFlags="#00000A20"/>
<list id="on.list" x="8" y="284" width="304" height="128" style="#00004502"/>
<list id="off.list" x="328" y="284" width="304" height="128" style="#00004102"/>
</items></dialog></dialogs>)";
}
