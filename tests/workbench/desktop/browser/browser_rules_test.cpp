// What the browser decides without a page.

#include <fstream>
#include <sstream>

#include <QFile>
#include <QSslCertificate>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support/test_certificate.h"
#include "workbench/desktop/browser/certificate_check.h"
#include "workbench/desktop/browser/load_web_view.h"
#include "workbench/desktop/browser/web_view.h"

namespace {

TEST(BrowserRules, NamesAreReachedAtOtherAddresses) {
    const struct {
        std::vector<std::string> connect_to;
        const char* rules;
    } rows[] = {
        {{}, ""},
        {{"team.example:443:127.0.0.1:8443"}, "MAP team.example:443 127.0.0.1:8443"},
        {{"a:1:b:2", "[::1]:80:[fe80::1]:81"}, "MAP a:1 b:2,MAP [::1]:80 [fe80::1]:81"},
        {{"a:1:b", "a:1:b:2:3", ":1:b:2", "[::1:80:b:2"}, ""},
        {{"a\" --no-sandbox:1:b:2", "a,EXCLUDE *:1:b:2"}, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(HostResolverRules(row.connect_to), row.rules);
    }
}

TEST(BrowserRules, NothingButHttpAndHttpsIsOpened) {
    for (const char* const url : {"http://h", "https://h/a?b#c", "HTTPS://h:8443/"}) {
        EXPECT_TRUE(IsOpenable(QUrl(QLatin1String(url)))) << url;
    }
    for (const char* const url :
         {"", "h", "http:", "http:///etc/passwd", "file:///etc/passwd", "ftp://h/", "about:blank", "javascript:alert(1)",
          "data:text/html,x", "view-source:http://h/", "chrome://version", "qrc:/x", "ws://h/", "blob:http://h/1"}) {
        EXPECT_FALSE(IsOpenable(QUrl(QLatin1String(url)))) << url;
    }
}

struct Certificates {
    explicit Certificates(const char* name) : file((folder.path() + QLatin1Char('/') + QLatin1String(name)).toStdString()) {
        WriteTestCertificate(file, file + ".key");
        chain.append(QSslCertificate::fromPath(QString::fromStdString(file)).first().toDer());
    }
    QTemporaryDir folder;
    std::string file;
    QList<QByteArray> chain;
};

TEST(BrowserRules, ACertificateIsGoodForItsOwnHostsByItsOwnAuthority) {
    const Certificates own("own.pem");
    const Certificates other("other.pem");
    const struct {
        const char* what;
        QList<QByteArray> chain;
        const char* host;
        std::string file;
        bool is_trusted;
    } rows[] = {
        {"an address", own.chain, "127.0.0.1", own.file, true},
        {"a name", own.chain, "localhost", own.file, true},
        {"another name", own.chain, "team.example", own.file, false},
        {"another address", own.chain, "127.0.0.2", own.file, false},
        {"no host", own.chain, "", own.file, false},
        {"another authority", own.chain, "localhost", other.file, false},
        {"no authority", own.chain, "localhost", "", false},
        {"no such file", own.chain, "localhost", own.file + ".gone", false},
        {"no chain", {}, "localhost", own.file, false},
        {"no certificate in it", {QByteArray("nonsense")}, "localhost", own.file, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IsCertificateTrusted(row.chain, QLatin1String(row.host), row.file), row.is_trusted) << row.what;
    }
}

} // namespace
