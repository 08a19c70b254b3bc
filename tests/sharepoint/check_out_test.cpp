// Who holds a file and who may change it, over a real socket.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sharepoint/object_2013.h"
#include "sharepoint/served_web.h"

namespace {

using SharePoint::CheckInType;
using testing::ElementsAre;
using testing::HasSubstr;
using State = SharePoint::File::CheckOutState;

TrialOptions TwoUsers() {
    return {.auth = TrialAuth::basic,
            .users = {{"ann", "secret"}, {"bob", "secret"}, {"eve", "secret", TrialRights::read}},
            .sites = {"sites/my web"}};
}

std::shared_ptr<SharePoint::Object> Bind(TrialServer& server, const wchar_t* user) {
    const auto web = WebOn(server, "sites/my web", {user, L"secret"});
    auto object = web->BindObject(server.WideUrl("sites/my web/Docs/a.pdf"), Type::file);
    server.ClearJournal();
    return object;
}

TEST(CheckOut, LifeOfACheckOut) {
    TrialServer server(TwoUsers());
    server.Put("sites/my web/Docs/a.pdf", "x");
    const auto ann = Bind(server, L"ann")->AsFile();
    const auto bob = Bind(server, L"bob")->AsFile();
    std::wstring holder = L"as it was";
    EXPECT_EQ(ann->GetCheckOutState(&holder), State::none);
    EXPECT_EQ(holder, L"as it was");
    EXPECT_THAT(Requests(server), ElementsAre("PROPFIND /sites/my%20web/Docs/a.pdf"));

    EXPECT_TRUE(ann->CheckOut());
    EXPECT_EQ(server.Holder("sites/my web/Docs/a.pdf"), "ann");
    const SeenRequest call = server.Journal().back();
    EXPECT_EQ(call.target, "/sites/my%20web/_vti_bin/Lists.asmx");
    EXPECT_THAT(call.body,
                HasSubstr("<pageUrl>" + server.Origin() +
                          "/sites/my%20web/Docs/a.pdf</pageUrl><checkoutToLocal>false</checkoutToLocal></CheckOutFile>"));
    EXPECT_EQ(ann->GetCheckOutState(nullptr), State::me);
    EXPECT_EQ(bob->GetCheckOutState(&holder), State::other_user);
    EXPECT_THAT(std::string(holder.begin(), holder.end()), testing::ContainsRegex("^[Aa]nn.* <.*@.*>$"));
    EXPECT_FALSE(bob->CheckOut());

    EXPECT_TRUE(ann->CheckIn(L"done", CheckInType::major));
    EXPECT_EQ(server.CheckInComment("sites/my web/Docs/a.pdf"), "done");
    EXPECT_THAT(server.Journal().back().body, HasSubstr("<comment>done</comment><CheckinType>1</CheckinType></CheckInFile>"));
    EXPECT_TRUE(bob->CheckOut());
    EXPECT_TRUE(bob->DiscardCheckOut());
    EXPECT_EQ(server.Holder("sites/my web/Docs/a.pdf"), "");
}

TEST(CheckOut, HolderStaysUnknownWhenNobodyTellsWhoWeAre) {
    TrialServer server(TwoUsers());
    server.Put("sites/my web/Docs/a.pdf", "x");
    const auto file = Bind(server, L"ann")->AsFile();
    server.SetHolder("sites/my web/Docs/a.pdf", "ann");
    server.Always("POST * status=500");
    std::wstring holder;
    EXPECT_EQ(file->GetCheckOutState(&holder), State::unknown);
    EXPECT_EQ(holder, L"trial\\ann") << "made from the login";
    EXPECT_THAT(Requests(server),
                ElementsAre("PROPFIND /sites/my%20web/Docs/a.pdf", "POST /sites/my%20web/_vti_bin/UserGroup.asmx",
                            "POST /sites/my%20web/_vti_bin/UserGroup.asmx", "POST /sites/my%20web/_vti_bin/_vti_aut/author.dll"));
}

TEST(CheckOut, LoginComesFromTheOtherProtocolWhenOneFails) {
    TrialServer server(TwoUsers());
    const auto web = WebOn(server, "sites/my web", {L"ann", L"secret"});
    EXPECT_EQ(web->GetCurrentUser(), L"i:0#.w|trial\\ann");
    server.Once("POST *UserGroup.asmx garbage");
    const std::wstring login = web->GetCurrentUser();
    EXPECT_TRUE(login.starts_with(L"i:0#.w|trial")) << "what author.dll tells";
    EXPECT_TRUE(login.ends_with(L"ann"));
}

TEST(CheckOut, RightsToEditAreAskedForByPath) {
    TrialServer server(TwoUsers());
    server.Put("sites/my web/Docs/a.pdf", "x");
    const auto writer = Bind(server, L"ann");
    EXPECT_TRUE(writer->CanEdit());
    const SeenRequest call = server.Journal().back();
    EXPECT_EQ(call.target, "/sites/my%20web/_vti_bin/_vti_aut/author.dll");
    EXPECT_EQ(call.Header("X-Vermeer-Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(call.body,
              "method=getDocsMetaInfo%3A12%2E0%2E0%2E0&url%5Flist=%5BDocs%2Fa%2Epdf%5D&listHiddenDocs=true&listLinkInfo=false");
    EXPECT_FALSE(Bind(server, L"eve")->CanEdit());
    server.Once("POST * status=500");
    EXPECT_FALSE(writer->CanEdit());
}

} // namespace
