#include "workbench/desktop/commands/info_bar_strip.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "workbench/desktop/commands/command_actions.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr int icon_side = 16;
constexpr int bright = 140;
constexpr qsizetype longest_run = 24;

/// A long name may be broken anywhere; without this it would make the window as wide as itself.
QString Breakable(const QString& text) {
    constexpr QChar zero_width_space(0x200B);
    QString breakable;
    qsizetype run = 0;
    for (const QChar character : text) {
        run = character.isSpace() ? 0 : run + 1;
        if (run > longest_run && !character.isLowSurrogate() && !character.isMark()) {
            breakable += zero_width_space;
            run = 1;
        }
        breakable += character;
    }
    return breakable;
}

QPalette Colored(QPalette palette, const QColor& color) {
    const QColor text = qGray(color.rgb()) >= bright ? Qt::black : Qt::white;
    palette.setColor(QPalette::Window, color);
    palette.setColor(QPalette::WindowText, text);
    return palette;
}

} // namespace

InfoBarStrip::InfoBarStrip(DWORD kind, InfoBarLook look, CommandActions& actions, QWidget* parent)
    : QFrame(parent), m_look(std::move(look)), m_actions(actions), m_span{kind, {}, {}}, m_layout(new QHBoxLayout(this)),
      m_text(new QLabel(this)) {
    setAutoFillBackground(true);
    if (m_look.color.isValid()) {
        setPalette(Colored(palette(), m_look.color));
    }
    setToolTip(PlainTip(m_look.description));
    setAccessibleName(m_look.title);
    m_layout->setContentsMargins(8, 4, 8, 4);
    if (!m_look.icon.isNull()) {
        auto* const icon = new QLabel(this);
        icon->setPixmap(m_look.icon.pixmap(QSize(icon_side, icon_side), devicePixelRatioF()));
        m_layout->addWidget(icon);
    }
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_layout->addWidget(m_text, 1);
}

void InfoBarStrip::Show(const InfoBarSpan& span) {
    if (span.text != m_span.text) {
        ShowText(ToQString(span.text));
    }
    if (span.commands != m_span.commands) {
        ShowButtons(span.commands);
    }
    m_span = span;
}

void InfoBarStrip::ShowText(const QString& text) {
    m_text->setText(Breakable(text));
    m_text->setAccessibleName(text);
    setAccessibleDescription(text);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void InfoBarStrip::ShowButtons(const std::vector<DWORD>& commands) {
    for (QPushButton* const button : std::exchange(m_buttons, {})) {
        m_layout->removeWidget(button);
        button->hide();
        button->deleteLater(); // it may be the one whose command is running
    }
    for (const DWORD id : commands) {
        m_buttons.push_back(MakeButton(*m_actions.ActionOf(id)));
        m_layout->addWidget(m_buttons.back());
    }
}

QPushButton* InfoBarStrip::MakeButton(QAction& action) {
    auto* const button = new QPushButton(this);
    const auto show = [button, &action] {
        // The signs of mnemonics would meet those of the menus.
        button->setText(WithoutMnemonic(action.iconText()));
        button->setObjectName(action.objectName());
        button->setToolTip(action.toolTip());
        button->setIcon(action.icon());
        button->setEnabled(action.isEnabled());
        button->setVisible(action.isVisible());
    };
    connect(&action, &QAction::changed, button, show);
    connect(button, &QPushButton::clicked, &action, &QAction::trigger);
    button->setAutoDefault(false);
    show();
    return button;
}
