#pragma once

/// Commands and where they are shown: menus, ribbon, tool bars. Main thread.

#include "host/ui_object.h"

namespace KOV {

struct IKOV_MultiSizeImage;

constexpr DWORD UIX_CmdState_Enabled = 0;
constexpr DWORD UIX_CmdState_Disabled = 2;

struct IUIX_Cmd : IDispatch {
    virtual HRESULT get_ID(DWORD* out_id) = 0;
    virtual HRESULT get_Name(BSTR* out_name) = 0;
    /// Texts that begin with "$$$." are looked up when they are shown.
    virtual HRESULT put_Title(LPCWSTR title) = 0;
    virtual HRESULT put_Tip(LPCWSTR tip) = 0;
    virtual HRESULT put_Category(LPCWSTR category) = 0;
    /// Of items that are made from now on; the bit 0x200 is an item that opens a menu.
    virtual HRESULT put_NewItemStyle(DWORD style) = 0;
    virtual HRESULT put_Icon(IKOV_MultiSizeImage* icon) = 0;

protected:
    ~IUIX_Cmd() = default;
};

/// What a command does. `owner` is the object that the command was used in: the view of an info bar, else the frame.
struct IUIX_CmdHandler : IUnknown {
    virtual HRESULT CmdHandler_Reserved3() = 0;
    virtual HRESULT CmdHandler_Reserved4() = 0;
    /// A failure means disabled.
    virtual HRESULT OnGetItemState(IUIX_Cmd* command, DWORD reserved, IUIX_Obj* owner, DWORD* out_state) = 0;
    virtual HRESULT CmdHandler_Reserved6() = 0;
    /// `code` 1: the command was chosen.
    virtual HRESULT OnNotify(DWORD code, IUIX_Cmd* command, DWORD reserved, IUIX_Obj* owner) = 0;
    virtual HRESULT CmdHandler_Reserved8() = 0;

protected:
    ~IUIX_CmdHandler() = default;
};

struct IUIX_Cmds : IDispatch {
    /// Null with `S_FALSE` when there is none.
    virtual HRESULT Find(LPCWSTR name, IUIX_Cmd** out_command) = 0;
    /// Replaces a command of the same name. The handler is held until the command is deleted. `name` is a plain text.
    virtual HRESULT AddNew(BSTR name, IUnknown* reserved, IUIX_CmdHandler* handler, IUIX_Cmd** out_command) = 0;
    virtual HRESULT Delete(IUIX_Cmd* command) = 0;
    virtual HRESULT Delete(DWORD id) = 0;

protected:
    ~IUIX_Cmds() = default;
};

/// A sequence of commands and separators: a menu, a group of the ribbon. `index` -1 is the end.
struct IUIX_CmdItems : IDispatch {
    virtual HRESULT InsertItem(IUIX_Cmd* command, LONG index) = 0;
    virtual HRESULT InsertSeparator(LONG index) = 0;

protected:
    ~IUIX_CmdItems() = default;
};

struct IUIX_CmdMenu : IUIX_CmdItems {
protected:
    ~IUIX_CmdMenu() = default;
};

/// A panel of a ribbon's tab.
struct IUIX_CmdPanel : IUIX_CmdItems {
    virtual HRESULT put_ID(DWORD id) = 0;
    virtual HRESULT put_Title(LPCWSTR title) = 0;

protected:
    ~IUIX_CmdPanel() = default;
};

struct IUIX_RibbonTab : IDispatch {
    virtual HRESULT InsertPanel(IUIX_CmdPanel* panel, LONG index) = 0;

protected:
    ~IUIX_RibbonTab() = default;
};

struct IUIX_Ribbon : IDispatch {
    /// Null with success when there is none.
    virtual HRESULT FindTab(DWORD id, IUIX_RibbonTab** out_tab) = 0;
    virtual HRESULT FindCmdGroup(DWORD id, IUIX_CmdItems** out_group) = 0;

protected:
    ~IUIX_Ribbon() = default;
};

struct IUIX_CmdManager : IDispatch {
    virtual HRESULT get_Cmds(IUIX_Cmds** out_commands) = 0;
    /// Marks a command, or all with `id` 0: its state is queried again at the next turn of the loop.
    virtual HRESULT UpdateCmdState(LONG reserved, DWORD id) = 0;
    /// Inserts `command` with `menu` below it into `view`, at the place that `count` numbers name: the bar, 0, and the item
    /// before which it stands.
    virtual HRESULT InsertItemAt(IUIX_Obj* view, const DWORD* path, ULONG count, IUIX_Cmd* command, IUIX_CmdMenu* menu) = 0;

protected:
    ~IUIX_CmdManager() = default;
};

constexpr DWORD UIX_CmdBarStyle_NoToggleBtn = 0x200;
constexpr DWORD UIX_CmdBarStyle_NoGripper = 0x400;
constexpr DWORD UIX_CmdBarStyle_NoFloat = 0x800;

/// A tool bar.
struct IUIX_CmdBar : IDispatch {
    virtual HRESULT get_Obj(IUIX_Obj** out_object) = 0;
    virtual HRESULT FlatInsertItem(IUIX_Cmd* command, LONG index, DWORD reserved1, DWORD reserved2, IUnknown* reserved3) = 0;
    virtual HRESULT FlatInsertSeparator(LONG index, DWORD reserved1, IUnknown* reserved2) = 0;

protected:
    ~IUIX_CmdBar() = default;
};

constexpr DWORD UIX_CmdPaneStyle_NoToggleBtn = 0x200;
constexpr DWORD UIX_CmdPaneStyle_LinesNoToggle = 0x1000;
constexpr DWORD UIX_CmdPaneStyle_Docked = 0x20000;

/// Where tool bars dock.
struct IUIX_CmdPane : IDispatch {
    virtual HRESULT get_Obj(IUIX_Obj** out_object) = 0;
    virtual HRESULT InsertBar(IUIX_CmdBar* bar, LONG line, LONG position, VARIANT_BOOL show) = 0;

protected:
    ~IUIX_CmdPane() = default;
};

/// An area that scrolls, with panes around it.
struct IUIX_ScrollContainer : IDispatch {
    virtual HRESULT get_CmdPaneTop(IUIX_CmdPane** out_pane) = 0;

protected:
    ~IUIX_ScrollContainer() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IUIX_Cmd, "{71482B12-AEAF-48C4-904B-BF7AF97CDC0B}");
KOV_INTERFACE_ID(KOV::IUIX_CmdHandler, "{74E6B170-C391-4E99-A5EC-630CB7BC5F53}");
KOV_INTERFACE_ID(KOV::IUIX_Cmds, "{7B197622-1CC4-48AE-9530-69379BDD0EE4}");
KOV_INTERFACE_ID(KOV::IUIX_CmdItems, "{B9A7F216-BB7E-42EA-A7C0-708693211DB8}");
KOV_INTERFACE_ID(KOV::IUIX_CmdMenu, "{643FEFCE-1A69-4D9C-8EB5-57897561090F}");
KOV_INTERFACE_ID(KOV::IUIX_CmdPanel, "{EDEA39E0-C9A0-453B-BCE7-0B1087204797}");
KOV_INTERFACE_ID(KOV::IUIX_RibbonTab, "{A000FD26-BBE1-44F5-9E88-739E19F98258}");
KOV_INTERFACE_ID(KOV::IUIX_Ribbon, "{5905307F-A5B4-489B-BE6D-96F7EE98A257}");
KOV_INTERFACE_ID(KOV::IUIX_CmdManager, "{BA6E176B-BD3F-4B97-954D-A7675F73E8BA}");
KOV_INTERFACE_ID(KOV::IUIX_CmdBar, "{EABBFB97-84B3-4223-844F-B7237453937E}");
KOV_INTERFACE_ID(KOV::IUIX_CmdPane, "{39988A56-C9C3-46D0-8D94-D7385F863707}");
KOV_INTERFACE_ID(KOV::IUIX_ScrollContainer, "{6F8785EA-A2B7-4051-8556-F9EF929809B5}");
