// The drop-down of types of files.

#include <optional>

#include <gtest/gtest.h>

#include "dialog/files_extension_filter.h"
#include "dialog/named_folder.h"
#include "host/object_bases.h"
#include "platform/errors.h"

namespace {

/// A drop-down that takes only so many items.
class SmallCombo final : public cCoClassUnknownT<KOV::IUIX_Combo> {
public:
    HRESULT get_Count(LONG* out_count) override {
        *out_count = static_cast<LONG>(parameters.size());
        return S_OK;
    }
    HRESULT Clear() override {
        parameters.clear();
        selected.reset();
        return S_OK;
    }
    HRESULT InsertItem(LONG, LPCWSTR, LPCWSTR, KOV::IKOV_MultiSizeImage*, LONGLONG parameter, DWORD) override {
        if (parameters.size() == room) {
            return E_OUTOFMEMORY;
        }
        parameters.push_back(parameter);
        return S_OK;
    }
    HRESULT GetItemParam(LONG index, LONGLONG* out_parameter) override {
        *out_parameter = parameters.at(static_cast<std::size_t>(index));
        return S_OK;
    }
    HRESULT get_SelItem(LONG* out_index) override {
        *out_index = selected.value_or(-1);
        return S_OK;
    }
    HRESULT put_SelItem(LONG index) override {
        selected = index;
        return S_OK;
    }
    HRESULT SelectItemByParam(LONGLONG, LONG*) override { return E_NOTIMPL; }

    std::size_t room = 0;
    std::vector<LONGLONG> parameters;
    std::optional<LONG> selected;
};

TEST(FilesExtensionFilter, ChoosesTheFirstOfTheTypesThatWentIn) {
    const struct {
        std::size_t room;
        HRESULT result;
        std::optional<LONG> selected;
        bool hides_text;
    } rows[] = {
        {3, S_OK, 0, true},
        {1, E_OUTOFMEMORY, 0, true},
        {0, E_OUTOFMEMORY, std::nullopt, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.room);
        const ComPtr<SmallCombo> combo = MakeObject<SmallCombo>();
        combo->room = row.room;
        {
            FilesExtensionFilter filter(MakeObject<NamedFolder>(), combo);
            EXPECT_EQ(filter.SetFilter(L"PDF|*.pdf|Forms|*.fdf|All files|*.*||"), row.result);
            EXPECT_EQ(combo->parameters.size(), row.room);
            EXPECT_EQ(combo->selected, row.selected);
            EXPECT_EQ(filter.IsValidExtension(L"txt"), !row.hides_text);
            EXPECT_TRUE(filter.IsValidExtension(L"PDF"));
        }
        EXPECT_TRUE(combo->parameters.empty()) << "it leaves no parameter behind";
    }
}

} // namespace
