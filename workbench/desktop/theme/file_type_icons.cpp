#include <algorithm>
#include <iterator>

#include <QMimeDatabase>

#include "workbench/desktop/theme/icons.h"

namespace {

struct Type {
    const char* icon;
    /// With a blank before and after each.
    const char* extensions;
};

constexpr Type types[] = {
    {"file.pdf", " pdf fdf xfdf "},
    {"file.text", " txt log md csv tsv ini xml json htm html css js yaml yml tex "},
    {"file.image", " png jpg jpeg jpe gif bmp tif tiff webp svg ico heic psd emf wmf "},
    {"file.spreadsheet", " xls xlsx xlsm xlsb xlt xltx ods ots "},
    {"file.word", " doc docx docm dot dotx odt ott rtf "},
    {"file.presentation", " ppt pptx pptm pot potx pps ppsx odp otp "},
    {"file.archive", " zip 7z rar tar gz tgz bz2 xz zst cab iso jar "},
};

constexpr const char* generic_icon = "file.generic";

QIcon DesktopIcon(const QString& extension) {
    // A desktop without a theme of its own has the fallback's name, under which there are no types of files.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == "hicolor") {
        return {};
    }
    const QMimeType type = QMimeDatabase().mimeTypeForFile("x." + extension, QMimeDatabase::MatchExtension);
    const QIcon icon = QIcon::fromTheme(type.iconName());
    return icon.isNull() ? QIcon::fromTheme(type.genericIconName()) : icon;
}

} // namespace

QIcon FileTypeIcon(const QString& extension) {
    const QString plain = (extension.startsWith(u'.') ? extension.mid(1) : extension).toLower();
    if (const QIcon icon = plain.isEmpty() ? QIcon() : DesktopIcon(plain); !icon.isNull()) {
        return icon;
    }
    const bool can_be_known = !plain.isEmpty() && !plain.contains(u' ');
    const auto type = std::find_if(std::begin(types), std::end(types), [&](const Type& one) {
        return can_be_known && QLatin1String(one.extensions).contains(QString(" %1 ").arg(plain));
    });
    return GetIcon(type != std::end(types) ? type->icon : generic_icon);
}
