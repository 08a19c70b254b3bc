#include "workbench/desktop/commands/info_bar_widget.h"

#include <algorithm>

#include <QApplication>
#include <QPointer>

#include "workbench/desktop/commands/command_actions.h"
#include "workbench/desktop/commands/info_bar_strip.h"

InfoBarWidget::InfoBarWidget(InfoBar& bar, CommandActions& actions, std::function<InfoBarLook(DWORD)> look_of, QWidget* parent)
    : QWidget(parent), m_bar(&bar), m_actions(actions), m_look_of(std::move(look_of)), m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    m_bar->Observe([guard = QPointer<InfoBarWidget>(this)] {
        // On this thread at once, else by its loop.
        QMetaObject::invokeMethod(qApp, [guard] {
            if (!guard.isNull()) {
                guard->Show();
            }
        });
    });
    Show();
}

InfoBarWidget::~InfoBarWidget() { m_bar->Observe(nullptr); }

void InfoBarWidget::Show() {
    m_has_changed = true;
    if (m_is_showing) {
        return; // a handler that is asked for the state of its command changes the bar
    }
    m_is_showing = true;
    while (std::exchange(m_has_changed, false)) {
        ShowSpans(m_bar->Spans());
    }
    m_is_showing = false;
}

void InfoBarWidget::ShowSpans(const std::vector<InfoBarSpan>& spans) {
    std::vector<InfoBarStrip*> strips;
    for (const InfoBarSpan& span : spans) {
        InfoBarStrip* const known = StripOf(span.id);
        InfoBarStrip* const strip = known != nullptr ? known : new InfoBarStrip(span.id, m_look_of(span.id), m_actions, this);
        m_layout->insertWidget(static_cast<int>(strips.size()), strip);
        strip->Show(span);
        strip->show();
        strips.push_back(strip);
    }
    for (InfoBarStrip* const strip : std::exchange(m_strips, strips)) {
        if (std::find(strips.begin(), strips.end(), strip) == strips.end()) {
            m_layout->removeWidget(strip);
            strip->hide();
            strip->deleteLater(); // the command that made it go may be running in a button of it
        }
    }
    setVisible(!m_strips.empty());
}

InfoBarStrip* InfoBarWidget::StripOf(DWORD kind) {
    const auto found =
        std::find_if(m_strips.begin(), m_strips.end(), [kind](const InfoBarStrip* strip) { return strip->Kind() == kind; });
    return found == m_strips.end() ? nullptr : *found;
}

QColor ColorOf(DWORD color) {
    return QColor(static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF), static_cast<int>(color >> 16 & 0xFF));
}
