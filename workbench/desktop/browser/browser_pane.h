#pragma once

#include <functional>
#include <memory>

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWidget>

#include "workbench/desktop/browser/web_view.h"

/// Either a view, or words that say why there is none.
struct LoadedWebView {
    std::unique_ptr<WebView> view;
    QString why_not;
};

/// A page with its address above it, and a line for what the page or the browser has to say. Main thread.
class BrowserPane final : public QWidget {
    Q_OBJECT

public:
    using MakeView = std::function<LoadedWebView(WebViewListener listener, QWidget* parent)>;

    /// The view is made with the first page.
    BrowserPane(QWidget* parent, MakeView make_view);
    ~BrowserPane() override;

    /// Makes the view for the page, which is opened later. Before the window is shown, or the window is made anew in its middle:
    /// a view draws in another way than all else, and the window would lose its place and its modality.
    void Prepare(const QUrl& url);
    void Open(const QUrl& url);

signals:
    void Arrived(const QUrl& url);

private:
    void MakeViewOnce();
    void ShowAddress(const QUrl& url);
    /// As text; nothing hides the line.
    void Say(const QString& text);

    const MakeView m_make_view;
    QLineEdit* const m_address;
    QLabel* const m_words;
    QVBoxLayout* const m_layout;
    std::unique_ptr<WebView> m_view;
};
