#pragma once

/// The bars above a document's page: one a span of its info bar, in their order. Without a span it takes no room. Main thread;
/// what changes on another thread shows at the next turn of the loop.

#include <functional>
#include <memory>
#include <vector>

#include <QColor>
#include <QIcon>
#include <QVBoxLayout>
#include <QWidget>

#include "workbench/core/info_bar.h"

class CommandActions;
class InfoBarStrip;

/// How the spans of one kind look.
struct InfoBarLook {
    QString title;
    QString description;
    QColor color;
    QIcon icon;
};

class InfoBarWidget final : public QWidget {
public:
    /// `look_of` tells by the number of a kind. `actions` are those of the document's own view, and outlive the widget.
    InfoBarWidget(InfoBar& bar, CommandActions& actions, std::function<InfoBarLook(DWORD kind)> look_of, QWidget* parent);
    ~InfoBarWidget() override;

private:
    void Show();
    void ShowSpans(const std::vector<InfoBarSpan>& spans);
    InfoBarStrip* StripOf(DWORD kind);

    const ComPtr<InfoBar> m_bar;
    CommandActions& m_actions;
    const std::function<InfoBarLook(DWORD)> m_look_of;
    QVBoxLayout* m_layout;
    std::vector<InfoBarStrip*> m_strips;
    bool m_is_showing = false;
    bool m_has_changed = false;
};

/// A colour as modules give it: red in the lowest byte, then green, then blue.
QColor ColorOf(DWORD color);
