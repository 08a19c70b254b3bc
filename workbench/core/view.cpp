#include "workbench/core/view.h"

#include "workbench/core/errors.h"

namespace {

template <class Object, class Interface>
HRESULT Give(const ComPtr<Object>& object, Interface** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    *out_object = ComPtr<Interface>(object).Detach();
    return S_OK;
}

} // namespace

HRESULT DocumentView::get_Doc(KOV::IKOV_Document** out_document) { return Give(m_document, out_document); }

HRESULT RibbonTab::InsertPanel(KOV::IUIX_CmdPanel* panel, LONG index) {
    const auto count = static_cast<LONG>(m_panels.size());
    if (panel == nullptr || index < -1 || index > count) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        m_panels.insert(m_panels.begin() + (index == -1 ? count : index), panel);
        return S_OK;
    });
}

HRESULT Ribbon::FindTab(DWORD id, KOV::IUIX_RibbonTab** out_tab) {
    const auto found = m_tabs.find(id);
    return Give(found != m_tabs.end() ? found->second : ComPtr<RibbonTab>(), out_tab);
}

HRESULT Ribbon::FindCmdGroup(DWORD id, KOV::IUIX_CmdItems** out_group) {
    const auto found = m_groups.find(id);
    return Give(found != m_groups.end() ? found->second : ComPtr<KOV::IUIX_CmdItems>(), out_group);
}

RibbonTab& Ribbon::AddTab(DWORD id) { return *m_tabs.try_emplace(id, MakeObject<RibbonTab>()).first->second.Get(); }

CommandEntries& Ribbon::AddGroup(DWORD id) { return *EntriesOf(m_groups.try_emplace(id, MakeCommandGroup()).first->second); }

HRESULT FrameView::get_ID(DWORD* out_id) {
    if (out_id == nullptr) {
        return E_POINTER;
    }
    *out_id = m_id;
    return S_OK;
}

HRESULT FrameView::get_IsRibbon(VARIANT_BOOL* out_is_ribbon) {
    if (out_is_ribbon == nullptr) {
        return E_POINTER;
    }
    *out_is_ribbon = m_ribbon.IsNull() ? VARIANT_FALSE : VARIANT_TRUE;
    return S_OK;
}

HRESULT FrameView::get_Obj(KOV::IUIX_Obj** out_object) { return Give(m_object, out_object); }

HRESULT FrameView::get_Ribbon(KOV::IUIX_Ribbon** out_ribbon) { return Give(m_ribbon, out_ribbon); }
