#include "workbench/desktop/browser/browser_pane.h"

#include <QDialog>
#include <QShortcut>

namespace {

/// What names the server comes first and in plain letters, so that no address looks like another one.
QString Shown(const QUrl& url) { return url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo); }

} // namespace

BrowserPane::BrowserPane(QWidget* parent, MakeView make_view)
    : QWidget(parent), m_make_view(std::move(make_view)), m_address(new QLineEdit(this)), m_words(new QLabel(this)),
      m_layout(new QVBoxLayout(this)) {
    setAutoFillBackground(true);
    m_address->setObjectName(QStringLiteral("address"));
    m_address->setAccessibleName(tr("Address of the page"));
    m_address->setReadOnly(true);
    m_words->setObjectName(QStringLiteral("words"));
    m_words->setTextFormat(Qt::PlainText);
    m_words->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_words->setWordWrap(true);
    m_words->setMargin(4);
    m_words->hide();
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_address);
    m_layout->addWidget(m_words);
    m_layout->addStretch(0);
    // A page keeps every key that it gets; this one is the window's.
    auto* const escape = new QShortcut(Qt::Key_Escape, this);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, [this] {
        if (auto* const dialog = qobject_cast<QDialog*>(window())) {
            dialog->reject();
        }
    });
}

BrowserPane::~BrowserPane() = default;

void BrowserPane::Prepare(const QUrl& url) {
    if (IsOpenable(url)) {
        MakeViewOnce();
    }
}

void BrowserPane::Open(const QUrl& url) {
    ShowAddress(url);
    if (!IsOpenable(url)) {
        Say(tr("This address can't be opened here. Only http and https can."));
        return;
    }
    MakeViewOnce();
    if (m_view != nullptr) {
        m_view->Open(url);
        m_view->Widget()->setFocus();
    }
}

void BrowserPane::MakeViewOnce() {
    if (m_view != nullptr) {
        return;
    }
    WebViewListener listener;
    listener.arrived = [this](const QUrl& url) { emit Arrived(url); };
    listener.moved = [this](const QUrl& url) { ShowAddress(url); };
    listener.said = [this](const QString& text) { Say(text); };
    LoadedWebView loaded = m_make_view(std::move(listener), this);
    m_view = std::move(loaded.view);
    if (m_view == nullptr) {
        Say(loaded.why_not);
        return;
    }
    m_layout->addWidget(m_view->Widget(), 1);
    m_view->Widget()->show(); // what isn't shown can't have the focus
}

void BrowserPane::ShowAddress(const QUrl& url) {
    m_address->setText(Shown(url));
    m_address->setCursorPosition(0);
}

void BrowserPane::Say(const QString& text) {
    m_words->setText(text);
    m_words->setVisible(!text.isEmpty());
}
