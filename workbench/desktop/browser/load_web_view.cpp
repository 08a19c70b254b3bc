#include "workbench/desktop/browser/load_web_view.h"

#include <array>
#include <optional>
#include <string_view>

#include <dlfcn.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include "workbench/desktop/browser/certificate_check.h"

namespace {

constexpr char sandbox_switch[] = "QTWEBENGINE_DISABLE_SANDBOX";
constexpr char flags_variable[] = "QTWEBENGINE_CHROMIUM_FLAGS";

QString Words(const char* text) { return QCoreApplication::translate("Browser", text); }

/// What would make the browser end the whole process; empty when nothing does.
QString WhyNot() {
    if (geteuid() == 0 && !qEnvironmentVariableIsSet(sandbox_switch)) {
        return Words("This page can't be shown: the browser doesn't run for the administrator (root). "
                     "Start the program as another user.");
    }
    if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts)) {
        return Words("This page can't be shown: the program was started without what the browser needs to draw.");
    }
    return {};
}

/// One part of HOST:PORT:ADDRESS:PORT, taken from the front of `text`; nothing when it is empty.
std::optional<std::string_view> TakePart(std::string_view& text) {
    const std::size_t start = text.starts_with('[') ? text.find(']') : 0;
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t end = std::min(text.find(':', start), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const bool is_clean = part.find_first_of(" ,\"\\*") == std::string_view::npos;
    return part.empty() || !is_clean ? std::nullopt : std::optional(part);
}

/// The library reads its switches once, when it begins.
void SetSwitches(const BrowserSettings& settings) {
    const std::string rules = HostResolverRules(settings.connect_to);
    if (!rules.empty()) {
        QByteArray flags = qgetenv(flags_variable);
        flags += flags.isEmpty() ? "" : " ";
        flags += "--host-resolver-rules=\"" + QByteArray::fromStdString(rules) + '"';
        qputenv(flags_variable, flags);
    }
}

/// Where the parts of the program stand side by side, the platform's library among them.
QString ProgramFolder() {
    Dl_info info{};
    (void)dladdr(reinterpret_cast<const void*>(&OleCreate), &info);
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

struct LoadedLibrary {
    MakeWebViewFunction* make_view = nullptr;
    QString error;
};

LoadedLibrary LoadLibrary(const BrowserSettings& settings) {
    SetSwitches(settings);
    QLibrary library(ProgramFolder() + QStringLiteral("/" KOV_WEB_VIEW_LIBRARY));
    LoadedLibrary loaded;
    loaded.make_view = reinterpret_cast<MakeWebViewFunction*>(library.resolve(make_web_view_name));
    loaded.error = loaded.make_view == nullptr ? library.errorString() : QString();
    return loaded;
}

} // namespace

LoadedWebView LoadWebView(const BrowserSettings& settings, WebViewListener listener, QWidget* parent) {
    LoadedWebView result;
    result.why_not = WhyNot();
    if (!result.why_not.isEmpty()) {
        return result;
    }
    static const LoadedLibrary library = LoadLibrary(settings);
    if (library.make_view == nullptr) {
        result.why_not = Words("This page can't be shown: the browser could not be loaded. ") + library.error;
        return result;
    }
    listener.trusts = [file = settings.certificate_file](const QList<QByteArray>& chain, const QString& host) {
        return IsCertificateTrusted(chain, host, file);
    };
    library.make_view(std::move(listener), parent, result.view);
    return result;
}

std::string HostResolverRules(const std::vector<std::string>& connect_to) {
    std::string rules;
    for (const std::string& mapping : connect_to) {
        std::string_view rest = mapping;
        std::array<std::optional<std::string_view>, 4> parts;
        for (auto& part : parts) {
            part = TakePart(rest);
        }
        if (!rest.empty() || !parts[0] || !parts[1] || !parts[2] || !parts[3]) {
            continue;
        }
        rules += rules.empty() ? "" : ",";
        rules += "MAP " + std::string(*parts[0]) + ':' + std::string(*parts[1]) + ' ' + std::string(*parts[2]) + ':' +
                 std::string(*parts[3]);
    }
    return rules;
}
