// Texts of SOAP and FrontPage RPC, without a server.

#include <gtest/gtest.h>

#include "sample.h"
#include "sharepoint/rpc_text.h"
#include "sharepoint/soap.h"
#include "sharepoint/xml_body.h"

namespace {

TEST(RpcText, PathIsEncodedForAList) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"", ""},
        {L"Shared Documents/a[1].pdf", "Shared+Documents%2Fa%5C%5B1%5C%5D%2Epdf"},
        {L"a-b_c~", "a%2Db%5Fc%7E"},
        {L"\u00E9\U0001F600", "%C3%A9%F0%9F%98%80"},
    };
    for (const auto& [path, encoded] : rows) {
        EXPECT_EQ(FrontPage::EncodeRpcUrl(path), encoded);
    }
}

TEST(RpcText, OnlyTheSixTextsRefuseAnEdit) {
    const std::pair<const wchar_t*, bool> rows[] = {
        {L"<li>vti_canmaybeedit\n<li>BX|false\n", true},    {L"x<li>vti_canmaybeedit\n<li>BX|f\ny", true},
        {L"<li>vti_canmaybeedit\r\n<li>BX|0\r\n", true},    {L"<li>vti_canmaybeedit\r\n<li>BX|false\r\n", true},
        {L"<li>vti_canmaybeedit\n<li>BX|true\n", false},    {L"<li>vti_canmaybeedit\n<li>BX|FALSE\n", false},
        {L"<li>vti_canmaybeedit\r\n<li>BX|false\n", false}, {L"nothing", false},
    };
    for (const auto& [answer, is_refused] : rows) {
        EXPECT_EQ(FrontPage::RefusesEdit(answer), is_refused) << std::string(answer, answer + wcslen(answer));
    }
}

TEST(RpcText, UserNameIsDecodedUpToTheLineEnd) {
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"domain\\user", L"domain\\user"},
        {L"a&amp;b", L"a&b"},
        {L"&#65;&#x41;&#x4a;", L"AAJ"},
        {L"a&b", L"a&b"},
        {L"&QUOT;&Lt;&gT;&apos;", L"\"<>'"},
        {L"&amp", L"&amp"},
        {L"&#;&#x;&#xg;&nbsp;", L"&#;&#x;&#xg;&nbsp;"},
        {L"&#65601;", L"A"}, // numbers are 16 bits wide
        {L"&#xD83D;&#xDE00;", L"\U0001F600"},
        {L"&#5", L"&#5"},
    };
    for (const auto& [value, name] : rows) {
        for (const std::wstring end : {L"\n", L"\r\n", L""}) {
            const std::wstring tag_end = end == L"" ? L"\n" : end;
            std::wstring found;
            EXPECT_TRUE(FrontPage::FindUserName(L"<ul>\n<li>vti_username" + tag_end + L"<li>SX|" + value + end, found));
            EXPECT_EQ(found, name);
        }
    }
    std::wstring found;
    EXPECT_FALSE(FrontPage::FindUserName(L"<li>vti_username<li>SX|a", found));
}

TEST(Soap, EnvelopeIsExact) {
    EXPECT_EQ(
        SharePoint2010::Utility::BuildEnvelope(L"GetUserInfo", L"<userLoginName>\u00E9</userLoginName>", L"directory/"),
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body>"
        "<GetUserInfo xmlns=\"http://schemas.microsoft.com/sharepoint/soap/directory/\"><userLoginName>\xC3\xA9"
        "</userLoginName></GetUserInfo></soap:Body></soap:Envelope>");
}

TEST(Soap, ResultIsFoundByItsLiteralNames) {
    const std::pair<const char*, bool> rows[] = {
        {"<soap:Envelope><soap:Body><XResponse><XResult>true</XResult></XResponse></soap:Body></soap:Envelope>", true},
        {"<s:Envelope><s:Body><XResponse><XResult>true</XResult></XResponse></s:Body></s:Envelope>", false},
        {"<soap:Envelope><soap:Body><XResponse/></soap:Body></soap:Envelope>", false},
    };
    for (const auto& [text, is_found] : rows) {
        pugi::xml_document document;
        ASSERT_TRUE(SharePoint2013::Utility::ParseXml(document, AsBody(text)));
        const pugi::xml_node node = SharePoint2010::Utility::FindSoapResult(document, L"X");
        EXPECT_EQ(!node.empty(), is_found) << text;
        EXPECT_EQ(node.text().as_bool(), is_found) << text;
    }
}

} // namespace
