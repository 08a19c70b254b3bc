#pragma once

/// Tool bars of windows, and the pane above a window's area in which they stand, as objects of the host's interfaces. Main
/// thread.

#include <functional>

#include "host/commands.h"
#include "workbench/core/commands.h"
#include "workbench/desktop/objects/ui_object.h"

class CommandActions;
class CommandToolBar;

/// Keeps its place in the window until the window is destroyed. Handlers hear its parent as the owner.
class CommandBar final : public UiObjectT<KOV::IUIX_CmdBar> {
public:
    CommandBar(QWidget* parent, CommandCollection& commands, KOV::IKOV_Inst& host, KOV::IUIX_Obj* owner);

    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override;
    HRESULT FlatInsertItem(KOV::IUIX_Cmd* command, LONG index, DWORD reserved1, DWORD reserved2, IUnknown* reserved3) override;
    HRESULT FlatInsertSeparator(LONG index, DWORD reserved1, IUnknown* reserved2) override;

    void Detach() override;

private:
    ~CommandBar() override = default;

    CommandToolBar* Bar() const;

    /// A child of the widget.
    CommandActions* m_actions;
};

/// An empty bar inside the window of `parent`, shown nowhere until it is put into a pane. `E_INVALIDARG` for a parent that isn't
/// the desktop's.
HRESULT CreateCommandBar(CommandCollection& commands, KOV::IUIX_Obj* parent, DWORD style, KOV::IUIX_CmdBar** out_bar);

/// Lines of bars, as high as they need; 0 high without any.
class CommandPane final : public UiObjectT<KOV::IUIX_CmdPane> {
public:
    /// `on_height` hears of another height, in pixels, so that the window can make room.
    CommandPane(QWidget* parent, std::function<void(int height)> on_height);

    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override;
    /// Each bar has a line of its own; `line` -1 is a new last one, and `position` within it is -1 or 0.
    HRESULT InsertBar(KOV::IUIX_CmdBar* bar, LONG line, LONG position, VARIANT_BOOL show) override;

    void Detach() override;

private:
    ~CommandPane() override = default;

    std::function<void(int)> m_on_height;
};
