#pragma once

#include <string>

#include <QByteArray>
#include <QList>
#include <QString>

/// Whether a server's chain (DER, its own certificate first) leads to one of the authorities in a PEM file, is valid now, and was
/// made out for `host`, a name or an address. False without a file. Any thread.
bool IsCertificateTrusted(const QList<QByteArray>& chain, const QString& host, const std::string& certificate_file);
