// How the module reads and writes items of a cab whose types it didn't choose, on cabs of the real host.

#include "settings/cab_node.h"

#include <string_view>

#include <gtest/gtest.h>

#include "settings/cab_template.h"
#include "support/in_process_module.h"

namespace {

constexpr std::string_view schema = R"(<CabTemplate>
  <ItemSet id="Dict">
    <Item id="unset" type="Int"/>
    <Item id="true" type="Bool" defVal="true"/>
    <Item id="false" type="Bool" defVal="false"/>
    <Item id="int" type="Int" defVal="-5"/>
    <Item id="int64" type="Int64" defVal="9000000000"/>
    <Item id="string" type="String" defVal="text"/>
    <Item id="number text" type="String" defVal="12"/>
    <Item id="real" type="Int"/>
    <Item id="dictionary" type="Dictionary" itemSet="Inner"/>
  </ItemSet>
  <ItemSet id="Inner"><Item id="x" type="Int" defVal="3"/></ItemSet>
  <Root id="Top" type="Dictionary" itemSet="Dict"/>
</CabTemplate>)";

struct CabNodeTest : testing::Test {
    ComPtr<KOV::IAUX_Cab> FreshCab() {
        ComPtr<KOV::IAUX_Cab> cab = module.NewCab();
        EXPECT_EQ(cab->SetTemplate2(schema.data(), static_cast<ULONG>(schema.size()), L"Top"), S_OK);
        CabNode(cab)[L"real"].p->put_Double(2.5);
        return cab;
    }

    InProcessModule module;
};

TEST_F(CabNodeTest, ReadsOnlyValuesOfAFittingType) {
    struct Row {
        const wchar_t* id;
        bool as_bool;
        std::int32_t as_int;
        const wchar_t* as_string;
    };
    constexpr Row rows[] = {
        {L"unset", false, 0, L""},      {L"true", true, 1, L""},
        {L"false", false, 0, L""},      {L"int", false, -5, L""},
        {L"int64", false, 0, L""},      {L"string", false, 0, L"text"},
        {L"real", false, 0, L""},       {L"number text", false, 0, L"12"},
        {L"dictionary", false, 0, L""}, {L"not in the schema", false, 0, L""},
    };
    const ComPtr<KOV::IAUX_Cab> cab = FreshCab();
    for (const Row& row : rows) {
        const CabNode node = CabNode(cab)[row.id];
        EXPECT_EQ(node.GetBool(), row.as_bool) << row.id;
        EXPECT_EQ(node.GetInt(), row.as_int) << row.id;
        EXPECT_EQ(node.GetString().Text(), row.as_string) << row.id;
    }
}

TEST_F(CabNodeTest, WritesKeepTheTypeOfTheItem) {
    struct Row {
        const wchar_t* id;
        DWORD type;
        std::int32_t int_after_int;
        bool takes_string;
        bool takes_bool;
    };
    constexpr Row rows[] = {
        {L"unset", KOV::CabItemType_Int, 7, true, true},
        {L"true", KOV::CabItemType_Bool, 1, false, true},
        {L"int", KOV::CabItemType_Int, 7, false, false},
        {L"int64", KOV::CabItemType_Int64, 0, false, false},
        {L"real", KOV::CabItemType_Double, 0, false, false},
        {L"string", KOV::CabItemType_String, 0, true, false},
        {L"dictionary", KOV::CabItemType_Dictionary, 0, false, false},
    };
    for (const Row& row : rows) {
        const ComPtr<KOV::IAUX_Cab> for_int = FreshCab();
        CabNode(for_int)[row.id].SetInt(7);
        EXPECT_EQ(CabNode(for_int)[row.id].GetType(), row.type) << row.id;
        EXPECT_EQ(CabNode(for_int)[row.id].GetInt(), row.int_after_int) << row.id;

        const ComPtr<KOV::IAUX_Cab> for_string = FreshCab();
        CabNode(for_string)[row.id].SetString(L"new");
        EXPECT_EQ(CabNode(for_string)[row.id].GetString().Text() == L"new", row.takes_string) << row.id;

        const ComPtr<KOV::IAUX_Cab> for_bool = FreshCab();
        CabNode(for_bool)[row.id].SetBool(true);
        EXPECT_EQ(CabNode(for_bool)[row.id].GetBool(), row.takes_bool) << row.id;
    }
}

TEST_F(CabNodeTest, AnEmptyIdIsTheNodeItselfAndANullNodeTakesEverything) {
    const ComPtr<KOV::IAUX_Cab> cab = FreshCab();
    const CabNode dictionary = CabNode(cab)[L"dictionary"];
    EXPECT_EQ(dictionary[L""][L"x"].GetInt(), 3);
    EXPECT_EQ(dictionary[nullptr][L"x"].GetInt(), 3);

    const CabNode null;
    EXPECT_TRUE(null[L"x"][L"y"].IsNull());
    null[L"x"].SetInt(1);
    null[L"x"].SetString(L"1");
    null[L"x"].SetBool(true);
    EXPECT_EQ(null.GetCount(), 0u);
    EXPECT_TRUE(null.GetAt(0).IsNull());
    EXPECT_TRUE(null.AddNew().IsNull());
}

// A boolean of an older version keeps its type where the present schema wants a number.
TEST_F(CabNodeTest, AStoredBoolReadsAsANumberUnderANewerSchema) {
    const ComPtr<KOV::IAUX_Cab> cab = FreshCab();
    const Variant stored(true);
    ASSERT_EQ(CabNode(cab)[L"int"].p->put_v(&stored), S_OK);
    ASSERT_EQ(cab->SetTemplate2(schema.data(), static_cast<ULONG>(schema.size()), L"Top"), S_OK);
    EXPECT_EQ(CabNode(cab)[L"int"].GetType(), DWORD{KOV::CabItemType_Bool});
    EXPECT_EQ(CabNode(cab)[L"int"].GetInt(), 1);
}

TEST_F(CabNodeTest, TemplatesComeFromTheModulesOwnResources) {
    struct Row {
        WORD resource;
        const wchar_t* root;
        HRESULT result;
        const wchar_t* some_key;
    };
    constexpr Row rows[] = {
        {IDR_SETTINGS_CAB_XML, L"Root", S_OK, L"PreferencesV4"},
        {IDR_ACCOUNT_DATA_CAB_XML, L"SharePointAccountDataSettingsV1", S_OK, L"AuthHeader"},
        {IDR_OPEN_SAVE_DIALOG_PARAMETERS_CAB_XML, L"OpenSaveDialogParametersCabTemplateV1", S_OK, L"FileFilters"},
    };
    for (const Row& row : rows) {
        const ComPtr<KOV::IAUX_Cab> cab = module.NewCab();
        EXPECT_EQ(ApplyCabTemplate(module.plugin->m_aux_inst, cab, MAKEINTRESOURCE(row.resource), row.root), row.result)
            << row.resource;
        EXPECT_FALSE(CabNode(cab)[row.some_key].IsNull()) << row.resource;
    }
    EXPECT_EQ(ApplyCabTemplate(module.plugin->m_aux_inst, nullptr, MAKEINTRESOURCE(IDR_SETTINGS_CAB_XML), L"Root"), E_INVALIDARG);
    EXPECT_LT(ApplyCabTemplate(module.plugin->m_aux_inst, module.NewCab(), MAKEINTRESOURCE(999), L"Root"), 0);
}

} // namespace
