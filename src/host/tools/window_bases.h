#pragma once

/// Bases of what the module puts behind the host's windows, lists and commands. Main thread.

#include "host/object_bases.h"
#include "host/user_interface.h"

namespace KOV {

/// An implementation object that knows its object: from `put_Obj` until the object is destroyed.
template <class Class, class Interface, class... Others>
class uiCoObjImplT : public cCoClassDispatchT<Interface, Others...> {
public:
    HRESULT put_Obj(IUIX_Obj* object) override {
        if (object == nullptr && !m_pObj.IsNull()) {
            OnObjectGone();
        }
        m_pObj = object;
        return S_OK;
    }
    HRESULT OnEvent(UiEvent*) override { return S_FALSE; }

protected:
    /// The object is about to be taken away; it is still there.
    virtual void OnObjectGone() {}

    ComPtr<IUIX_Obj> m_pObj;
};

/// The implementation of a window made from a layout. A class that overrides `OnEvent` hands the events that it doesn't know on
/// to this one.
template <class Class, class Interface, class... Others>
class uiStdObjImplT : public uiCoObjImplT<Class, Interface, Others...> {
public:
    HRESULT put_Obj(IUIX_Obj* object) override {
        const HRESULT result = uiCoObjImplT<Class, Interface, Others...>::put_Obj(object);
        if (object == nullptr) {
            m_dlg.Release();
        }
        return result;
    }
    HRESULT OnEvent(UiEvent* io_event) override {
        if (io_event == nullptr) {
            return E_INVALIDARG;
        }
        if (io_event->code != UiEvent_Created || this->m_pObj.IsNull()) {
            return S_FALSE;
        }
        (void)this->m_pObj->_QueryImpl(&m_dlg); // null when the object is no window
        OnUiCreated();
        return S_OK;
    }

protected:
    /// The window and its controls exist, and `m_dlg` is there; nothing is shown yet.
    virtual void OnUiCreated() {}

    ComPtr<IUIX_Dialog> m_dlg;
};

/// Callbacks that leave everything to the list.
class uiListCallbacksBase : public cCoClassUnknownT<IUIX_ListCallbacks> {
public:
    HRESULT List_OnGetItemText(IUIX_List*, const UiListItemId*, LPCWSTR*, ULONG*, DWORD*) override { return S_FALSE; }
    HRESULT List_OnGetItemImageSize(IUIX_List*, const UiListItemId*, SIZE*) override { return S_FALSE; }
    HRESULT List_OnGetItemImage(IUIX_List*, const UiListItemId*, IKOV_MultiSizeImage**, double*) override { return S_FALSE; }
    HRESULT List_OnItemClick(IUIX_List*, const UiListItemId*, DWORD, DWORD, LONG) override { return S_FALSE; }
    HRESULT List_OnHdrItemClicked(IUIX_List*, LONG, LONG) override { return S_FALSE; }
#define KOV_SLOT(number)                                                                                                         \
    HRESULT List_Reserved##number() override { return S_FALSE; }
    KOV_LIST_RESERVED_SLOTS(KOV_SLOT)
#undef KOV_SLOT
};

/// A handler of commands, and of `Others` beside it.
template <class... Others>
class uiCmdHandlerBaseT : public cCoClassUnknownT<IUIX_CmdHandler, Others...> {
public:
    HRESULT CmdHandler_Reserved3() override { return S_OK; }
    HRESULT CmdHandler_Reserved4() override { return S_OK; }
    HRESULT CmdHandler_Reserved6() override { return S_OK; }
    HRESULT CmdHandler_Reserved8() override { return S_OK; }
};
using uiCmdHandlerBase = uiCmdHandlerBaseT<>;

} // namespace KOV
