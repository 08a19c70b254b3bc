#include "platform/safearray.h"

#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "platform/variant.h"

struct SAFEARRAY {
    LONG lower_bound;
    std::vector<Variant> items;
};

namespace {

constexpr HRESULT bad_index = MakeHResult(0x8002000B);

Variant* ItemAt(SAFEARRAY* array, const LONG* index) {
    const std::int64_t position = static_cast<std::int64_t>(*index) - array->lower_bound;
    const bool is_inside = position >= 0 && position < static_cast<std::int64_t>(array->items.size());
    return is_inside ? &array->items[static_cast<std::size_t>(position)] : nullptr;
}

} // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower_bound, ULONG count) {
    // The highest index has to be one too.
    const std::int64_t highest = std::int64_t{lower_bound} + count - 1;
    if (type != VT_VARIANT || highest > std::numeric_limits<LONG>::max() || highest < std::numeric_limits<LONG>::min()) {
        return nullptr;
    }
    try {
        return std::make_unique<SAFEARRAY>(SAFEARRAY{lower_bound, std::vector<Variant>(count)}).release();
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
    *out_type = VT_VARIANT;
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
        *out_bound += static_cast<LONG>(array->items.size()) - 1;
    }
    return result;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr || element == nullptr) {
        return E_INVALIDARG;
    }
    const Variant* const item = ItemAt(array, index);
    if (item == nullptr) {
        return bad_index;
    }
    auto* const target = static_cast<VARIANT*>(element);
    VariantInit(target);
    return VariantCopy(target, item);
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* index, void* element) {
    if (array == nullptr || index == nullptr || element == nullptr) {
        return E_INVALIDARG;
    }
    Variant* const item = ItemAt(array, index);
    return item == nullptr ? bad_index : VariantCopy(item, static_cast<const VARIANT*>(element));
}

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
