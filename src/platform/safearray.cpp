#include "platform/safearray.h"

#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "platform/variant.h"

struct SAFEARRAY {
    LONG lower_bound;
    VARTYPE type;
    /// One of the two is filled, by the type.
    std::vector<Variant> items;
    std::vector<BYTE> bytes;

    std::size_t Count() const noexcept { return type == VT_UI1 ? bytes.size() : items.size(); }
};

namespace {

constexpr HRESULT bad_index = MakeHResult(0x8002000B);

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

/// The position of an element, or `nowhere`.
std::size_t PositionOf(const SAFEARRAY& array, LONG index) {
    const std::int64_t position = static_cast<std::int64_t>(index) - array.lower_bound;
    const bool is_inside = position >= 0 && position < static_cast<std::int64_t>(array.Count());
    return is_inside ? static_cast<std::size_t>(position) : nowhere;
}

} // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower_bound, ULONG count) {
    // The highest index has to be one too.
    const std::int64_t highest = std::int64_t{lower_bound} + count - 1;
    if ((type != VT_VARIANT && type != VT_UI1) || highest > std::numeric_limits<LONG>::max() ||
        highest < std::numeric_limits<LONG>::min()) {
        return nullptr;
    }
    try {
        auto array = std::make_unique<SAFEARRAY>(SAFEARRAY{lower_bound, type, {}, {}});
        type == VT_UI1 ? array->bytes.resize(count) : array->items.resize(count);
        return array.release();
    } catch (const std::exception&) {
        return nullptr;
    }
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    std::unique_ptr<SAFEARRAY>{array}.reset();
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array == nullptr ? 0 : 1; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* out_type) {
    if (array == nullptr || out_type == nullptr) {
        return E_INVALIDARG;
    }
    *out_type = array->type;
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* out_bound) {
    if (array == nullptr || out_bound == nullptr) {
        return E_INVALIDARG;
    }
    if (dimension != 1) {
        return bad_index;
    }
    *out_bound = array->lower_bound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* out_bound) {
    const HRESULT result = SafeArrayGetLBound(array, dimension, out_bound);
    if (SUCCEEDED(result)) {
        *out_bound += static_cast<LONG>(array->Count()) - 1;
    }
    return result;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr || element == nullptr) {
        return E_INVALIDARG;
    }
    const std::size_t position = PositionOf(*array, *index);
    if (position == nowhere) {
        return bad_index;
    }
    if (array->type == VT_UI1) {
        *static_cast<BYTE*>(element) = array->bytes[position];
        return S_OK;
    }
    auto* const target = static_cast<VARIANT*>(element);
    VariantInit(target);
    return VariantCopy(target, &array->items[position]);
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr || element == nullptr) {
        return E_INVALIDARG;
    }
    const std::size_t position = PositionOf(*array, *index);
    if (position == nowhere) {
        return bad_index;
    }
    if (array->type == VT_UI1) {
        array->bytes[position] = *static_cast<const BYTE*>(element);
        return S_OK;
    }
    return VariantCopy(&array->items[position], static_cast<const VARIANT*>(element));
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** out_data) {
    if (array == nullptr || out_data == nullptr) {
        return E_INVALIDARG;
    }
    *out_data = array->type == VT_UI1 ? static_cast<void*>(array->bytes.data()) : static_cast<void*>(array->items.data());
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) { return array == nullptr ? E_INVALIDARG : S_OK; }

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** out_array) {
    if (out_array == nullptr) {
        return E_INVALIDARG;
    }
    *out_array = nullptr;
    if (array == nullptr) {
        return S_OK;
    }
    try {
        *out_array = std::make_unique<SAFEARRAY>(*array).release();
        return S_OK;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}
