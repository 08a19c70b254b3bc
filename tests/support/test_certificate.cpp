#include "support/test_certificate.h"

#include <cstdio>
#include <memory>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace {

void Require(bool done) {
    if (!done)
        throw std::runtime_error("the test certificate can't be made");
}

void AddExtension(X509* certificate, int kind, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value), X509_EXTENSION_free);
    Require(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

template <class Write>
void WritePem(const std::string& file, Write write) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> stream(std::fopen(file.c_str(), "wb"), std::fclose);
    Require(stream && write(stream.get()) == 1);
}

} // namespace

void WriteTestCertificate(const std::string& certificate_file, const std::string& key_file) {
    constexpr long day = 24 * 3600;
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
    Require(key && certificate);
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), day);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME* name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("trial server"), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    AddExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    AddExtension(certificate.get(), NID_subject_alt_name, "DNS:localhost,DNS:login.hosted.example,IP:127.0.0.1");
    Require(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0);
    WritePem(certificate_file, [&](std::FILE* stream) { return PEM_write_X509(stream, certificate.get()); });
    WritePem(key_file,
             [&](std::FILE* stream) { return PEM_write_PrivateKey(stream, key.get(), nullptr, nullptr, 0, nullptr, nullptr); });
}
