#include "workbench/desktop/browser/certificate_check.h"

#include <memory>

#include <arpa/inet.h>

#include <QUrl>

#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

namespace {

template <auto free>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using Store = std::unique_ptr<X509_STORE, Freed<X509_STORE_free>>;
using Context = std::unique_ptr<X509_STORE_CTX, Freed<X509_STORE_CTX_free>>;

void FreeAll(STACK_OF(X509) * certificates) { sk_X509_pop_free(certificates, X509_free); }
using Certificates = std::unique_ptr<STACK_OF(X509), Freed<FreeAll>>;

Certificate ReadCertificate(const QByteArray& der) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.constData());
    return Certificate(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
}

bool IsAddress(const QByteArray& text) {
    in6_addr parsed{};
    return inet_pton(AF_INET, text.constData(), &parsed) == 1 || inet_pton(AF_INET6, text.constData(), &parsed) == 1;
}

bool SetHost(X509_VERIFY_PARAM* parameters, const QString& host) {
    QByteArray address = host.toLatin1();
    address.replace('[', "").replace(']', "");
    if (IsAddress(address)) {
        return X509_VERIFY_PARAM_set1_ip_asc(parameters, address.constData()) == 1;
    }
    const QByteArray name = QUrl::toAce(host);
    return !name.isEmpty() &&
           X509_VERIFY_PARAM_set1_host(parameters, name.constData(), static_cast<std::size_t>(name.size())) == 1;
}

} // namespace

bool IsCertificateTrusted(const QList<QByteArray>& chain, const QString& host, const std::string& certificate_file) {
    if (certificate_file.empty() || chain.isEmpty()) {
        return false;
    }
    const Store store(X509_STORE_new());
    const Context context(X509_STORE_CTX_new());
    const Certificate own = ReadCertificate(chain.first());
    const Certificates others(sk_X509_new_null());
    if (!store || !context || !own || !others || X509_STORE_load_file(store.get(), certificate_file.c_str()) != 1) {
        return false;
    }
    for (const QByteArray& der : chain.mid(1)) {
        Certificate other = ReadCertificate(der);
        if (!other || sk_X509_push(others.get(), other.get()) == 0) {
            return false;
        }
        (void)other.release(); // the list has it now
    }
    if (X509_STORE_CTX_init(context.get(), store.get(), own.get(), others.get()) != 1) {
        return false;
    }
    X509_VERIFY_PARAM* const parameters = X509_STORE_CTX_get0_param(context.get());
    return SetHost(parameters, host) && X509_STORE_CTX_set_purpose(context.get(), X509_PURPOSE_SSL_SERVER) == 1 &&
           X509_verify_cert(context.get()) == 1;
}
