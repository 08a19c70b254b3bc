#include "workbench/desktop/browser/engine_page.h"

#include <algorithm>

#include <QSslCertificate>
#include <QWebEngineCertificateError>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>

namespace {

/// What lies within a page or is empty reaches nothing.
constexpr const char* inner_schemes[] = {"about", "blob", "data"};

bool IsInner(const QUrl& url) {
    return std::ranges::any_of(inner_schemes, [&](const char* scheme) { return url.scheme() == QLatin1String(scheme); });
}

constexpr QWebEngineSettings::WebAttribute refused[] = {
    QWebEngineSettings::LocalContentCanAccessFileUrls,
    QWebEngineSettings::LocalContentCanAccessRemoteUrls,
    QWebEngineSettings::PluginsEnabled,
    QWebEngineSettings::PdfViewerEnabled,
    QWebEngineSettings::FullScreenSupportEnabled,
    QWebEngineSettings::ScreenCaptureEnabled,
    QWebEngineSettings::NavigateOnDropEnabled,
    QWebEngineSettings::AllowRunningInsecureContent,
    QWebEngineSettings::JavascriptCanPaste,
    QWebEngineSettings::AllowWindowActivationFromJavaScript,
};

} // namespace

void RequestFilter::interceptRequest(QWebEngineUrlRequestInfo& info) {
    if (!IsOpenable(info.requestUrl()) && !IsInner(info.requestUrl())) {
        info.block(true);
    }
}

EnginePage::EnginePage(QWebEngineProfile* profile, const WebViewListener& listener)
    : QWebEnginePage(profile, nullptr), m_listener(listener) {
    TakeRightsAway();
    connect(this, &QWebEnginePage::certificateError, this, [this](QWebEngineCertificateError error) {
        QList<QByteArray> chain;
        for (const QSslCertificate& certificate : error.certificateChain()) {
            chain.append(certificate.toDer());
        }
        const bool is_unknown = error.type() == QWebEngineCertificateError::CertificateAuthorityInvalid;
        if (is_unknown && m_listener.trusts(chain, error.url().host())) {
            error.acceptCertificate();
            return;
        }
        error.rejectCertificate();
    });
    // A window of its own would have no address line; its page takes this one's place.
    connect(this, &QWebEnginePage::newWindowRequested, this, [this](QWebEngineNewWindowRequest& request) {
        if (IsOpenable(request.requestedUrl())) {
            load(request.requestedUrl());
        }
    });
    connect(this, &QWebEnginePage::renderProcessTerminated, this, [this](RenderProcessTerminationStatus status) {
        if (status != NormalTerminationStatus) {
            m_listener.said(tr("The page has failed. Close this window and try again."));
        }
    });
}

void EnginePage::TakeRightsAway() {
    for (const QWebEngineSettings::WebAttribute attribute : refused) {
        settings()->setAttribute(attribute, false);
    }
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            [this](const QUrl& origin, Feature feature) { setFeaturePermission(origin, feature, PermissionDeniedByUser); });
}

bool EnginePage::acceptNavigationRequest(const QUrl& url, NavigationType, bool is_main_frame) {
    if (IsOpenable(url) || (!is_main_frame && IsInner(url))) {
        return true;
    }
    m_listener.said(tr("The page wanted to open something other than a page, which isn't done here: %1").arg(url.scheme()));
    return false;
}

QStringList EnginePage::chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) {
    m_listener.said(tr("The page asked for a file. Files aren't given to pages here."));
    return {};
}

void EnginePage::javaScriptAlert(const QUrl&, const QString& text) { m_listener.said(text); }

bool EnginePage::javaScriptConfirm(const QUrl&, const QString& text) {
    m_listener.said(text);
    return false;
}

bool EnginePage::javaScriptPrompt(const QUrl&, const QString& text, const QString&, QString*) {
    m_listener.said(text);
    return false;
}
