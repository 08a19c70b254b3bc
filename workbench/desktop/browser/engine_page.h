#pragma once

#include <functional>

#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

#include "workbench/desktop/browser/web_view.h"

/// Lets through what a page may consist of.
class RequestFilter final : public QWebEngineUrlRequestInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& info) override;
};

/// A page that is kept in its place: no other scheme, no file, no download, no right, no second window, no box that stops the
/// program.
class EnginePage final : public QWebEnginePage {
    Q_OBJECT

public:
    /// `listener` and `profile` outlive the page.
    EnginePage(QWebEngineProfile* profile, const WebViewListener& listener);

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool is_main_frame) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList& old_files, const QStringList& mime_types) override;
    void javaScriptAlert(const QUrl& origin, const QString& text) override;
    bool javaScriptConfirm(const QUrl& origin, const QString& text) override;
    bool javaScriptPrompt(const QUrl& origin, const QString& text, const QString& value, QString* out_value) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int, const QString&) override {}

private:
    void TakeRightsAway();

    const WebViewListener& m_listener;
};
