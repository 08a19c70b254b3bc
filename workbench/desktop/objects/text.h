#pragma once

/// Texts between the host's interfaces and Qt. Any thread.

#include <string>
#include <string_view>

#include <QString>

#include "host/instance.h"
#include "platform/bstr.h"

inline QString ToQString(std::wstring_view text) {
    return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
}
/// Null counts as empty.
inline QString ToQString(LPCWSTR text) { return text == nullptr ? QString() : QString::fromWCharArray(text); }

inline std::wstring ToWide(const QString& text) { return text.toStdWString(); }

/// A text of the caller's; null when there is no memory.
BSTR ToBstr(const QString& text);

/// The text behind "$$$.key", or the text itself; null counts as empty. A key that nobody knows stands for itself, so that a gap
/// in the texts is seen and not a blank.
QString Resolved(KOV::IKOV_Inst& host, LPCWSTR text);

/// A tool tip that shows `text` letter by letter: Qt would take a text with tags in it for markup.
QString PlainTip(const QString& text);

/// A text for a widget that takes "&" for a mnemonic, shown letter by letter.
QString WithoutMnemonic(QString text);
