#include "workbench/desktop/commands/command_bar.h"

#include <QVBoxLayout>

#include "workbench/desktop/commands/command_actions.h"
#include "workbench/desktop/commands/command_tool_bar.h"

namespace {

CommandToolBar* MakeBar(QWidget* parent) {
    auto* const bar = new CommandToolBar(CommandToolBar::Look::in_window, parent);
    bar->hide();
    return bar;
}

QWidget* MakePane(QWidget* parent) {
    auto* const pane = new QWidget(parent);
    auto* const lines = new QVBoxLayout(pane);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    return pane;
}

QWidget* WidgetOfBar(KOV::IUIX_CmdBar* bar) {
    ComPtr<KOV::IUIX_Obj> object;
    if (bar == nullptr || FAILED(bar->get_Obj(&object))) {
        return nullptr;
    }
    const UiObject* const part = PartOf(object);
    return part == nullptr ? nullptr : part->Widget();
}

} // namespace

CommandBar::CommandBar(QWidget* parent, CommandCollection& commands, KOV::IKOV_Inst& host, KOV::IUIX_Obj* owner)
    : UiObjectT(MakeBar(parent)), m_actions(new CommandActions(commands, host, owner, Widget())) {}

CommandToolBar* CommandBar::Bar() const { return static_cast<CommandToolBar*>(Widget()); }

void CommandBar::Detach() {
    if (Bar() != nullptr) {
        m_actions->CutOff();
    }
    UiObjectT::Detach();
}

HRESULT CommandBar::get_Obj(KOV::IUIX_Obj** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    ComPtr<KOV::IUIX_Obj>(this).CopyTo(out_object);
    return S_OK;
}

HRESULT CommandBar::FlatInsertItem(KOV::IUIX_Cmd* command, LONG index, DWORD, DWORD, IUnknown*) {
    if (Bar() == nullptr) {
        return window_is_gone;
    }
    DWORD id = 0;
    if (command == nullptr || FAILED(command->get_ID(&id)) || id == 0) {
        return E_INVALIDARG;
    }
    return Bar()->InsertCommand(m_actions->ActionOf(id), index) ? S_OK : E_INVALIDARG;
}

HRESULT CommandBar::FlatInsertSeparator(LONG index, DWORD, IUnknown*) {
    if (Bar() == nullptr) {
        return window_is_gone;
    }
    return Bar()->InsertSeparator(index) ? S_OK : E_INVALIDARG;
}

HRESULT CreateCommandBar(CommandCollection& commands, KOV::IUIX_Obj* parent, DWORD style, KOV::IUIX_CmdBar** out_bar) {
    if (out_bar == nullptr) {
        return E_POINTER;
    }
    *out_bar = nullptr;
    const UiObject* const part = PartOf(parent);
    if (part == nullptr || part->Owner() == nullptr) {
        return E_INVALIDARG;
    }
    if (part->Widget() == nullptr) {
        return window_is_gone;
    }
    const auto bar = MakeObject<CommandBar>(part->Widget(), commands, part->Owner()->Host(), parent);
    if (bar.IsNull()) {
        return E_OUTOFMEMORY;
    }
    bar->Adopt(part->Owner(), parent, 0);
    (void)bar->SetStyle(style, ~DWORD{0});
    *out_bar = ComPtr<KOV::IUIX_CmdBar>(bar).Detach();
    return S_OK;
}

CommandPane::CommandPane(QWidget* parent, std::function<void(int)> on_height)
    : UiObjectT(MakePane(parent)), m_on_height(std::move(on_height)) {}

void CommandPane::Detach() {
    m_on_height = nullptr;
    UiObjectT::Detach();
}

HRESULT CommandPane::get_Obj(KOV::IUIX_Obj** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    ComPtr<KOV::IUIX_Obj>(this).CopyTo(out_object);
    return S_OK;
}

HRESULT CommandPane::InsertBar(KOV::IUIX_CmdBar* bar, LONG line, LONG position, VARIANT_BOOL show) {
    QWidget* const widget = WidgetOfBar(bar);
    if (Widget() == nullptr) {
        return window_is_gone;
    }
    auto* const lines = static_cast<QVBoxLayout*>(Widget()->layout());
    if (widget == nullptr || line < -1 || line > lines->count() || position < -1 || position > 0) {
        return E_INVALIDARG;
    }
    lines->insertWidget(line, widget);
    widget->setVisible(show != VARIANT_FALSE);
    lines->activate();
    if (m_on_height) {
        m_on_height(lines->sizeHint().height());
    }
    return S_OK;
}
