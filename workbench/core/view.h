#pragma once

/// Frames and the documents in them, as the module sees them. Main thread.

#include <map>
#include <vector>

#include "host/commands.h"
#include "host/document.h"
#include "host/object_bases.h"
#include "host/ui_object.h"
#include "workbench/core/command_items.h"

/// An object of the user interface that has no window: everything fails with E_NOTIMPL, but asking it for `Interfaces`, which it
/// implements itself.
template <class... Interfaces>
class UiObjectBase : public cCoClassDispatchT<KOV::IUIX_Obj, Interfaces...> {
public:
    HRESULT get_ID(DWORD*) override { return E_NOTIMPL; }
    HRESULT DoModal(LONG, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT EndModal(LONGLONG) override { return E_NOTIMPL; }
    HRESULT Destroy() override { return E_NOTIMPL; }
    HRESULT get_WndHandle(HWND*) override { return E_NOTIMPL; }
    HRESULT get_ClientRect(RECT*) override { return E_NOTIMPL; }
    HRESULT get_Parent(KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT Show(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT SetStyle(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT ScaleToDevice(LONG, LONG*) override { return E_NOTIMPL; }
    HRESULT _QueryImpl(REFIID id, void** out_interface) override { return this->QueryInterface(id, out_interface); }
    HRESULT get_Application(KOV::IUIX_Application**) override { return E_NOTIMPL; }
};

/// One document in a frame, for a host without windows: object and view in one, so that its commands find the document.
class DocumentView final : public UiObjectBase<KOV::IKOV_DocumentView> {
public:
    explicit DocumentView(KOV::IKOV_Document* document) : m_document(document) {}

    HRESULT get_Doc(KOV::IKOV_Document** out_document) override;

private:
    const ComPtr<KOV::IKOV_Document> m_document;
};

/// A tab of a ribbon: panels of commands, each readable through `EntriesOf`.
class RibbonTab final : public cCoClassDispatchT<KOV::IUIX_RibbonTab> {
public:
    HRESULT InsertPanel(KOV::IUIX_CmdPanel* panel, LONG index) override;

    const std::vector<ComPtr<KOV::IUIX_CmdPanel>>& Panels() const noexcept { return m_panels; }

private:
    std::vector<ComPtr<KOV::IUIX_CmdPanel>> m_panels;
};

/// A ribbon as a value: the host adds its tabs and groups, the module adds to them, and the host builds its widgets from what
/// stands there then.
class Ribbon final : public cCoClassDispatchT<KOV::IUIX_Ribbon> {
public:
    HRESULT FindTab(DWORD id, KOV::IUIX_RibbonTab** out_tab) override;
    HRESULT FindCmdGroup(DWORD id, KOV::IUIX_CmdItems** out_group) override;

    /// `id` is the number of the name, such as "rtab.share". Gives the tab that is there already.
    RibbonTab& AddTab(DWORD id);
    /// `id` is the number of the name, such as "cmd.shareGroup". Lives as long as the ribbon.
    CommandEntries& AddGroup(DWORD id);

private:
    std::map<DWORD, ComPtr<RibbonTab>> m_tabs;
    std::map<DWORD, ComPtr<KOV::IUIX_CmdItems>> m_groups;
};

/// A frame that shows documents.
class FrameView final : public cCoClassDispatchT<KOV::IKOV_View> {
public:
    /// `id` is the number of the name, such as "mainView"; `object` may be null; `ribbon` is null for a frame with a menu.
    FrameView(DWORD id, KOV::IUIX_Obj* object, Ribbon* ribbon) : m_id(id), m_object(object), m_ribbon(ribbon) {}

    HRESULT get_ID(DWORD* out_id) override;
    HRESULT get_IsRibbon(VARIANT_BOOL* out_is_ribbon) override;
    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override;
    HRESULT get_Ribbon(KOV::IUIX_Ribbon** out_ribbon) override;

private:
    const DWORD m_id;
    const ComPtr<KOV::IUIX_Obj> m_object;
    const ComPtr<Ribbon> m_ribbon;
};
