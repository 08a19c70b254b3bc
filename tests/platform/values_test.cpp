#include <atomic>
#include <limits>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "platform/threads.h"
#include "platform/variant.h"

namespace {

/// Tells how many references are out.
struct Counted final : IUnknown {
    HRESULT QueryInterface(REFIID, void** out_object) override {
        *out_object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    ULONG references = 0;
};

TEST(BstrTexts, CarryTheirLength) {
    const Bstr text(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(text.Length(), 3u);
    EXPECT_EQ(text.View(), std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(text.m_str[3], 0);
    // The published place of the length, in bytes.
    EXPECT_EQ(reinterpret_cast<const std::uint32_t*>(text.m_str)[-1], 3 * sizeof(wchar_t));
    EXPECT_EQ(Bstr(text).View(), text.View());

    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);
    EXPECT_EQ(Bstr().View(), L"");
    Bstr blank;
    *&blank = SysAllocStringLen(nullptr, 2);
    EXPECT_EQ(blank.View(), std::wstring_view(L"\0\0", 2));
    EXPECT_EQ(SysAllocStringLen(nullptr, std::numeric_limits<UINT>::max()), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x40000000), nullptr);
}

TEST(Variants, OwnWhatTheyHold) {
    Counted object;
    {
        Variant value(&object);
        EXPECT_EQ(object.references, 1u);
        Variant copy = value;
        EXPECT_EQ(object.references, 2u);
        EXPECT_EQ(VariantCopy(&copy, &copy), S_OK);
        EXPECT_EQ(object.references, 2u);
        Variant text(std::wstring_view(L"x"));
        EXPECT_EQ(VariantCopy(&copy, &text), S_OK);
        EXPECT_EQ(object.references, 1u);
        EXPECT_NE(copy.bstrVal, text.bstrVal);
        EXPECT_STREQ(copy.bstrVal, L"x");
    }
    EXPECT_EQ(object.references, 0u);
    EXPECT_EQ(VariantCopy(nullptr, nullptr), E_INVALIDARG);
}

TEST(SafeArrays, HoldCopiesWithinTheirBounds) {
    Counted object;
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 5, 2);
    ASSERT_NE(array, nullptr);
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 1, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
    EXPECT_EQ(lower, 5);
    EXPECT_EQ(upper, 6);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &upper), MakeHResult(0x8002000B));

    Variant value(&object);
    for (const LONG index : {4, 7, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()}) {
        LONG position = index;
        EXPECT_EQ(SafeArrayPutElement(array, &position, &value), MakeHResult(0x8002000B));
    }
    LONG last = 6;
    EXPECT_EQ(SafeArrayPutElement(array, &last, &value), S_OK);
    EXPECT_EQ(object.references, 2u);

    Variant whole;
    whole.vt = VT_ARRAY | VT_VARIANT;
    whole.parray = array;
    {
        const Variant copy = whole;
        EXPECT_NE(copy.parray, array);
        EXPECT_EQ(object.references, 3u);
        Variant element;
        EXPECT_EQ(SafeArrayGetElement(copy.parray, &last, &element), S_OK);
        EXPECT_EQ(element.punkVal, &object);
    }
    EXPECT_EQ(object.references, 2u);
    VariantClear(&whole);
    VariantClear(&value);
    EXPECT_EQ(object.references, 0u);
}

TEST(SafeArrays, HoldBytesInOnePiece) {
    Variant bytes;
    bytes.vt = VT_ARRAY | VT_UI1;
    bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 3);
    BYTE value = 7;
    LONG index = 2;
    LONG past = 3;
    EXPECT_EQ(SafeArrayPutElement(bytes.parray, &index, &value), S_OK);
    EXPECT_EQ(SafeArrayPutElement(bytes.parray, &past, &value), MakeHResult(0x8002000B));
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(bytes.parray, 1, &upper), S_OK);
    EXPECT_EQ(upper, 2);
    const Variant copy = bytes;
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(copy.parray, &data), S_OK);
    EXPECT_EQ(static_cast<const BYTE*>(data)[2], 7);
    EXPECT_EQ(SafeArrayUnaccessData(copy.parray), S_OK);
    // Only the owner of a value frees it.
    Variant elsewhere;
    elsewhere.vt = VT_BYREF | VT_ARRAY | VT_UI1;
    elsewhere.parray = bytes.parray;
    EXPECT_EQ(VariantClear(&elsewhere), S_OK);
    EXPECT_EQ(SafeArrayGetElement(bytes.parray, &index, &value), S_OK);
}

TEST(SafeArrays, RefuseIndexesThatDoNotExist) {
    EXPECT_EQ(SafeArrayCreateVector(VT_BSTR, 0, 1), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, std::numeric_limits<LONG>::max(), 2), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0xFFFFFFFF), nullptr);
    SAFEARRAY* const empty = SafeArrayCreateVector(VT_VARIANT, 0, 0);
    LONG upper = 7;
    EXPECT_EQ(SafeArrayGetUBound(empty, 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
    EXPECT_EQ(SafeArrayDestroy(empty), S_OK);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
}

TEST(CriticalSections, LetTheirOwnerInAgainAndNobodyElse) {
    CriticalSection section;
    int value = 0;
    std::thread other;
    {
        const std::scoped_lock outer(section);
        const std::scoped_lock inner(section);
        other = std::thread([&] {
            const std::scoped_lock lock(section);
            value *= 2;
        });
        value = 21;
    }
    other.join();
    EXPECT_EQ(value, 42);
    DWORD other_id = 0;
    std::thread([&] { other_id = GetCurrentThreadId(); }).join();
    EXPECT_NE(other_id, GetCurrentThreadId());
}

} // namespace
