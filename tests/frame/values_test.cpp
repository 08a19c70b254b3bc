#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/values/kov_string.h"
#include "frame/values/names_collection.h"
#include "host/file_system.h"
#include "platform/bstr.h"
#include "platform/variant.h"

namespace {

class NameOfTest : public cCoClassUnknownT<KOV::IAFS_Name> {
public:
    HRESULT get_FileSys(KOV::IAFS_FileSys**) override { return E_NOTIMPL; }
};

std::wstring TextOf(KOV::IString* string) {
    Bstr text;
    EXPECT_EQ(string->get_Value(&text), S_OK);
    return text.Text();
}

} // namespace

TEST(KovString, TakesTextsUpToTheirEndOrTheirLength) {
    const auto string = MakeObject<Utility::KOVString>();
    VARIANT_BOOL is_empty = VARIANT_FALSE;
    UINT length = 7;
    EXPECT_EQ(TextOf(string), L"");
    EXPECT_EQ(string->put_Value(L"words"), S_OK);
    EXPECT_EQ(TextOf(string), L"words");
    EXPECT_EQ(string->get_Length(&length), S_OK);
    EXPECT_EQ(length, 5u);
    EXPECT_EQ(string->SetValue(L"shorter", 5), S_OK);
    EXPECT_EQ(TextOf(string), L"short");
    EXPECT_EQ(string->get_IsEmpty(&is_empty), S_OK);
    EXPECT_EQ(is_empty, VARIANT_FALSE);

    const auto expect_empty = [&](HRESULT result) {
        EXPECT_EQ(result, S_OK);
        EXPECT_EQ(string->get_IsEmpty(&is_empty), S_OK);
        EXPECT_EQ(is_empty, VARIANT_TRUE);
        EXPECT_EQ(string->put_Value(L"again"), S_OK);
    };
    expect_empty(string->put_Value(nullptr));
    expect_empty(string->SetValue(nullptr, 3));
    expect_empty(string->SetValue(L"", 3));
    expect_empty(string->SetValue(L"text", 0));
    expect_empty(string->Clear());
    EXPECT_EQ(string->get_Value(nullptr), E_POINTER);
    EXPECT_EQ(string->get_IsEmpty(nullptr), E_POINTER);
    EXPECT_EQ(string->get_Length(nullptr), E_POINTER);
}

TEST(NamesCollection, GivesItemsInOrderAndRefusesBadCalls) {
    ComPtr<KOV::IAFS_NamesCollection> names;
    ASSERT_EQ(NamesCollection::Create(names), S_OK);
    const auto first = MakeObject<NameOfTest>();
    ULONG count = 7;
    EXPECT_EQ(names->Add(nullptr), E_INVALIDARG);
    EXPECT_EQ(names->Add(first), S_OK);
    EXPECT_EQ(names->get_Count(&count), S_OK);
    EXPECT_EQ(count, 1u);

    ComPtr<KOV::IAFS_Name> item;
    EXPECT_EQ(names->get_Item(0, &item), S_OK);
    EXPECT_EQ(item.Get(), first.Get());
    KOV::IAFS_Name* past_end = first.Get();
    EXPECT_EQ(names->get_Item(1, &past_end), E_INVALIDARG);
    EXPECT_EQ(past_end, nullptr);
    EXPECT_EQ(names->get_Item(0, nullptr), E_POINTER);
    EXPECT_EQ(names->get_Count(nullptr), E_POINTER);
    EXPECT_EQ(names->get__NewEnum(nullptr), E_POINTER);
    EXPECT_EQ(names->Clear(), S_OK);
    EXPECT_EQ(names->get_Count(&count), S_OK);
    EXPECT_EQ(count, 0u);
}

TEST(NamesCollection, EnumeratorsMoveOnIndependentlyAndSeeLaterItems) {
    ComPtr<KOV::IAFS_NamesCollection> names;
    ASSERT_EQ(NamesCollection::Create(names), S_OK);
    const auto first = MakeObject<NameOfTest>();
    const auto second = MakeObject<NameOfTest>();
    names->Add(first);

    ComPtr<IUnknown> unknown;
    ASSERT_EQ(names->get__NewEnum(&unknown), S_OK);
    const auto walk = unknown.As<IEnumVARIANT>();
    ASSERT_FALSE(walk.IsNull());
    names->Add(second);
    names = nullptr; // the enumerator holds the collection

    Variant items[3];
    ULONG fetched = 0;
    ASSERT_EQ(walk->Next(1, items, nullptr), S_OK);
    EXPECT_EQ(items[0].punkVal, static_cast<IUnknown*>(first.Get()));
    ComPtr<IEnumVARIANT> clone;
    ASSERT_EQ(walk->Clone(&clone), S_OK);
    EXPECT_EQ(walk->Skip(2), S_FALSE);
    Variant second_item;
    ASSERT_EQ(clone->Next(1, &second_item, &fetched), S_OK);
    EXPECT_EQ(second_item.punkVal, static_cast<IUnknown*>(second.Get()));

    EXPECT_EQ(walk->Reset(), S_OK);
    VariantClear(&items[0]);
    EXPECT_EQ(walk->Next(3, items, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(items[0].vt, VT_UNKNOWN);
    EXPECT_EQ(items[1].punkVal, static_cast<IUnknown*>(second.Get()));
    EXPECT_EQ(items[2].vt, VT_EMPTY);
    EXPECT_EQ(walk->Clone(nullptr), E_POINTER);
}
