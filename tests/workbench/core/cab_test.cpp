#include <gtest/gtest.h>

#include "fresh_folder.h"
#include "platform/errors.h"
#include "workbench/core/cab.h"
#include "workbench/core/cab_template.h"
#include "workbench/core/errors.h"

namespace {

constexpr const char* first_version = R"(<CabTemplate>
  <ItemSet id="Top"><!-- no meaning -->
    <Item id="Level" type="Int" defVal="24"/><Item id="On" type="Bool" defVal="true"/><Item id="Name" type="String"/>
    <Item id="Big" type="Int64" defVal="-5000000000"/><Item id="Words" type="String" defVal="a &amp; b"/>
    <Item id="Places" type="Array" itemSet="Place"/><Item id="Inner" type="Dictionary" itemSet="In"/></ItemSet>
  <ItemSet id="Place"><Item type="Dictionary" itemSet="In"/></ItemSet>
  <ItemSet id="In"><Item id="Url" type="String"/></ItemSet>
  <Root id="Root" type="Dictionary" itemSet="Top"/></CabTemplate>)";
constexpr const char* second_version = R"(<CabTemplate>
  <ItemSet id="Top"><Item id="Level" type="Int" defVal="1"/><Item id="On" type="Int" defVal="7"/>
    <Item id="New" type="Int" defVal="3"/><Item id="Name" type="String" defVal="late"/>
    <Item id="Places" type="Array" itemSet="Place"/></ItemSet>
  <ItemSet id="Place"><Item type="Dictionary" itemSet="In"/></ItemSet>
  <ItemSet id="In"><Item id="Url" type="String"/><Item id="User" type="String" defVal="me"/></ItemSet>
  <Root id="Root" type="Dictionary" itemSet="Top"/></CabTemplate>)";

/// A value as an argument, for as long as the call takes.
const VARIANT* Address(const Variant& value) { return &value; }

/// Every rule holds for cabs in memory and for those in the store.
class CabTest : public testing::TestWithParam<bool> {
protected:
    CabTest() {
        if (GetParam()) {
            m_store = std::make_shared<Store>(m_folder.Path() / "store.sqlite");
            cab = MakeCab(MakeStoredCabStorage(m_store), *FindStoredCab(*m_store, L"x", true));
        } else {
            cab = MakeTransientCab();
        }
    }
    HRESULT Apply(const std::string& xml) { return cab->SetTemplate2(xml.data(), static_cast<ULONG>(xml.size()), L"Root"); }

    static ComPtr<KOV::IAUX_CabItem> Item(KOV::IAUX_CabItem* parent, const std::wstring& key) {
        VARIANT name{};
        name.vt = VT_LPWSTR;
        name.pwszVal = const_cast<wchar_t*>(key.c_str());
        ComPtr<KOV::IAUX_CabItem> item;
        const HRESULT result = parent->GetItem(&name, &item);
        EXPECT_EQ(result, item.IsNull() ? HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : S_OK);
        return item;
    }
    ComPtr<KOV::IAUX_CabItem> Item(const std::wstring& key) { return Item(cab, key); }
    static ComPtr<KOV::IAUX_CabItem> ItemAt(KOV::IAUX_CabItem* parent, std::int32_t position) {
        ComPtr<KOV::IAUX_CabItem> item;
        EXPECT_EQ(parent->GetItem(Address(Variant(position)), &item), S_OK);
        return item;
    }
    static DWORD TypeOf(KOV::IAUX_CabItem* item) {
        DWORD type = 99;
        EXPECT_EQ(item->get_Type(&type), S_OK);
        return type;
    }
    static std::wstring Text(KOV::IAUX_CabItem* item) {
        Bstr text;
        EXPECT_EQ(item->get_String(&text), S_OK);
        return text.Text();
    }
    static LONG Int(KOV::IAUX_CabItem* item) {
        LONG value = -99;
        EXPECT_EQ(item->get_Int(&value), S_OK);
        return value;
    }

    FreshFolder m_folder;
    std::shared_ptr<Store> m_store;
    ComPtr<KOV::IAUX_Cab> cab;
};
INSTANTIATE_TEST_SUITE_P(Storages, CabTest, testing::Bool(),
                         [](const auto& info) { return info.param ? std::string("InTheStore") : std::string("InMemory"); });

TEST_P(CabTest, TemplateGivesItemsWithTypesAndDefaults) {
    EXPECT_EQ(TypeOf(cab), KOV::CabItemType_Unset);
    ASSERT_EQ(Apply(first_version), S_OK);
    EXPECT_EQ(TypeOf(cab), KOV::CabItemType_Dictionary);
    EXPECT_EQ(Int(Item(L"Level")), 24);
    VARIANT_BOOL on = VARIANT_FALSE;
    EXPECT_EQ(Item(L"On")->get_Bool(&on), S_OK);
    EXPECT_EQ(on, VARIANT_TRUE);
    EXPECT_EQ(TypeOf(Item(L"Big")), KOV::CabItemType_Int64);
    EXPECT_EQ(Text(Item(L"Words")), L"a & b");
    EXPECT_EQ(TypeOf(Item(L"Name")), KOV::CabItemType_Unset) << "no default";
    EXPECT_EQ(Text(Item(L"Name")), L"") << "not set yet reads as empty";
    EXPECT_EQ(TypeOf(Item(L"Places")), KOV::CabItemType_Array);
    EXPECT_EQ(TypeOf(Item(Item(L"Inner"), L"Url")), KOV::CabItemType_Unset);
    EXPECT_TRUE(Item(L"level").IsNull());
    LONG wrong = 0;
    EXPECT_EQ(Item(L"Words")->get_Int(&wrong), MakeHResult(0x80020005));
    EXPECT_EQ(Item(L"Inner")->put_Int(1), MakeHResult(0x80020005)) << "what is in it would be lost";
}

TEST_P(CabTest, ArraysGrowByItemsOfTheirSet) {
    ASSERT_EQ(Apply(first_version), S_OK);
    const auto places = Item(L"Places");
    for (const wchar_t* const url : {L"one", L"two"}) {
        ComPtr<KOV::IAUX_CabItem> place;
        ASSERT_EQ(places->AddNew(&place), S_OK);
        EXPECT_EQ(Item(place, L"Url")->put_String(url), S_OK);
    }
    ULONG count = 0;
    EXPECT_EQ(places->get_Count(&count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(Text(Item(ItemAt(Item(L"Places"), 1), L"Url")), L"two");
    ComPtr<KOV::IAUX_CabItem> none;
    EXPECT_EQ(places->GetItem(Address(Variant(2)), &none), HRESULT_FROM_WIN32(ERROR_NOT_FOUND));
    EXPECT_EQ(Item(L"Level")->AddNew(&none), MakeHResult(0x80020005));
}

TEST_P(CabTest, NewerTemplateKeepsStoredValuesAndTypesAndAddsWhatIsNew) {
    ASSERT_EQ(Apply(first_version), S_OK);
    Item(L"Level")->put_Int(5);
    ComPtr<KOV::IAUX_CabItem> place;
    ASSERT_EQ(Item(L"Places")->AddNew(&place), S_OK);
    ASSERT_EQ(Apply(second_version), S_OK);
    EXPECT_EQ(Int(Item(L"Level")), 5);
    EXPECT_EQ(TypeOf(Item(L"On")), KOV::CabItemType_Bool) << "the type that is stored, not the template's";
    EXPECT_EQ(Int(Item(L"New")), 3);
    EXPECT_EQ(Text(Item(L"Name")), L"late") << "never set, so the default comes in";
    EXPECT_EQ(Text(Item(L"Words")), L"a & b") << "unknown now, and still there";
    EXPECT_EQ(Text(Item(ItemAt(Item(L"Places"), 0), L"User")), L"me");
}

TEST_P(CabTest, ResetClearsValuesAndKeepsTheTemplate) {
    ASSERT_EQ(Apply(first_version), S_OK);
    ComPtr<KOV::IAUX_CabItem> place;
    ASSERT_EQ(Item(L"Places")->AddNew(&place), S_OK);
    Item(Item(L"Inner"), L"Url")->put_String(L"x");
    ASSERT_EQ(cab->Reset(), S_OK);
    EXPECT_EQ(TypeOf(Item(L"Level")), KOV::CabItemType_Unset);
    EXPECT_EQ(Text(Item(Item(L"Inner"), L"Url")), L"");
    ULONG count = 9;
    EXPECT_EQ(Item(L"Places")->get_Count(&count), S_OK);
    EXPECT_EQ(count, 0u);
    ASSERT_EQ(Item(L"Places")->AddNew(&place), S_OK);
    EXPECT_FALSE(Item(place, L"Url").IsNull());
    EXPECT_EQ(TypeOf(place), KOV::CabItemType_Dictionary);
}

TEST_P(CabTest, StoresAVariantWithItsType) {
    ASSERT_EQ(Apply(first_version), S_OK);
    const auto item = Item(L"Name");
    VARIANT value{};
    EXPECT_EQ(item->put_v(Address(Variant(std::wstring_view(L"wörd")))), S_OK);
    EXPECT_EQ(Text(item), L"wörd");
    value.vt = VT_I8;
    value.llVal = 1LL << 40;
    EXPECT_EQ(item->put_v(&value), S_OK);
    EXPECT_EQ(TypeOf(item), KOV::CabItemType_Int64);
    value.vt = VT_ARRAY | VT_VARIANT;
    EXPECT_EQ(item->put_v(&value), E_INVALIDARG);
    value.vt = VT_UNKNOWN;
    value.punkVal = cab;
    EXPECT_EQ(item->put_v(&value), GetParam() ? E_INVALIDARG : S_OK) << "an object lives in memory alone";
    EXPECT_EQ(item->put_v(Address(Variant())), S_OK);
    EXPECT_EQ(TypeOf(item), KOV::CabItemType_Unset);
}

TEST_P(CabTest, BrokenTemplateIsANamedFailureAndChangesNothing) {
    const std::string root = "<Root id=\"Root\" type=\"Dictionary\" itemSet=\"T\"/>";
    const auto with = [&](const std::string& sets) { return "<CabTemplate>" + sets + root + "</CabTemplate>"; };
    const std::string doubling = [] {
        std::string sets;
        for (int i = 0; i < 20; ++i) {
            const std::string next = i == 0 ? "T" : "S" + std::to_string(i);
            const std::string set = "S" + std::to_string(i + 1);
            sets += "<ItemSet id=\"" + next + "\"><Item id=\"a\" type=\"Dictionary\" itemSet=\"" + set +
                    "\"/><Item id=\"b\" type=\"Dictionary\" itemSet=\"" + set + "\"/></ItemSet>";
        }
        return sets + "<ItemSet id=\"S20\"/>";
    }();
    struct Row {
        std::string xml;
        std::string reason;
    };
    const Row rows[] = {
        {"<CabTemplate>", ""},
        {"<CabTemplate/>", "root isn't 'Root'"},
        {with(""), "unknown set 'T'"},
        {with("<ItemSet id=\"T\"/><ItemSet id=\"T\"/>"), "'T' has no id or is there twice"},
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Float\"/></ItemSet>"), "'a' has the unknown type 'Float'"},
        {with("<ItemSet id=\"T\"><Item type=\"Int\"/></ItemSet>"), "no id"},
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Int\" defVal=\"4294967296\"/></ItemSet>"), "'4294967296'"},
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Bool\" defVal=\"ja\"/></ItemSet>"), "'ja'"},
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Dictionary\" itemSet=\"T\"/></ItemSet>"), "too deep"},
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Int\" defVal=\"1\xC3\xA9\"/></ItemSet>"), "'1\xC3\xA9'"},
        // Characters that the parser lets through and that have no UTF-8.
        {with("<ItemSet id=\"T\"><Item id=\"a\" type=\"Dictionary\" itemSet=\"\xED\xA0\x80\"/></ItemSet>"), "unknown set '"},
        {with(doubling), "too large"},
        {std::string(2 << 20, ' '), "1 MiB"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.xml.substr(0, 200));
        EXPECT_EQ(Apply(row.xml), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
        EXPECT_EQ(TypeOf(cab), KOV::CabItemType_Unset);
        try {
            ReadCabTemplate(row.xml, L"Root");
            FAIL();
        } catch (const HostException& failure) {
            EXPECT_NE(std::string(failure.what()).find(row.reason), std::string::npos) << failure.what();
        }
    }
    EXPECT_EQ(cab->SetTemplate2(nullptr, 0, L"Root"), E_INVALIDARG);
}

} // namespace
