#pragma once

/// What the browser's own library offers. It is loaded when the first page is shown; nothing else of the program needs it.

#include <functional>
#include <memory>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <QWidget>

/// What a view tells. All on the main thread, never inside a call of the view's own.
struct WebViewListener {
    /// A page is there, and the process's cookie store knows every cookie that came on the way.
    std::function<void(const QUrl& url)> arrived;
    /// The page shown is this one.
    std::function<void(const QUrl& url)> moved;
    /// Words for the user, to be shown as text: of the page, or of something that it was refused. Empty when another page begins.
    std::function<void(const QString& text)> said;
    /// Is a certificate that the system doesn't know good for the host? DER, the host's own first.
    std::function<bool(const QList<QByteArray>& chain, const QString& host)> trusts;
};

/// One view on one page at a time, of a browser that keeps nothing: its cookies are those of the process's store. It opens
/// nothing but http and https, downloads nothing, uploads no file, and gives pages no rights. Main thread.
class WebView {
public:
    virtual ~WebView() = default;

    virtual QWidget* Widget() = 0;
    /// Comes back before anything was opened.
    virtual void Open(const QUrl& url) = 0;
};

/// Under this name the library offers what makes a view; the widget lies in `parent`, which outlives the view.
constexpr char make_web_view_name[] = "KovMakeWebView";
using MakeWebViewFunction = void(WebViewListener listener, QWidget* parent, std::unique_ptr<WebView>& out_view);

/// May a page, or a part of it, come from here?
inline bool IsOpenable(const QUrl& url) {
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}
