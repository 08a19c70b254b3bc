// A fresh key and a certificate that trusts itself, for tests over TLS.
#pragma once

#include <string>

/// Writes both as PEM; the certificate names 127.0.0.1 and localhost, and is valid for a day on either side of now.
/// Throws std::runtime_error.
void WriteTestCertificate(const std::string& certificate_file, const std::string& key_file);
