// The types of files of a dialog for which the host named none.

#include <map>

#include <gtest/gtest.h>

#include "dialog/default_filter_string.h"
#include "dialog/extension_lists.h"
#include "platform/bstr.h"
#include "platform/text.h"
#include "support/unanswered.h"

namespace {

/// Knows the texts of a table by token and mode.
class FilterHost final : public UnansweredHost {
public:
    HRESULT GetFileFilter(LPCWSTR token, LONG mode, BSTR* out_filter) override {
        const auto found = texts.find({token, mode});
        *out_filter = SysAllocString(found == texts.end() ? L"" : found->second.c_str());
        return S_OK;
    }

    std::map<std::pair<std::wstring, LONG>, std::wstring> texts;
};

std::wstring Build(FilterHost& host, bool is_open_dialog) {
    std::wstring text;
    EXPECT_EQ(BuildDefaultFilterString(&host, is_open_dialog, text), S_OK);
    return text;
}

class DefaultFilterString : public testing::TestWithParam<const wchar_t*> {
protected:
    DefaultFilterString() {
        // Some hosts end a text as a whole filter string ends, some as its last type does.
        const std::wstring end = GetParam();
        const std::wstring each = L"Word|*.doc;*.docx|Excel|*.xls|PDF|*.pdf";
        host->texts = {
            {{L"<pdf>", 1}, L"PDF|*.pdf" + end},
            {{L"<pdf>", 0}, L"PDF|*.pdf" + end},
            {{L"<allSupp>", 1}, L"All supported|*.doc;*.docx;*.xls;*.pdf|" + each + end},
            {{L"<all>", 1}, L"All files|*.*" + end},
            {{L"<doc>", 0}, L"Word|*.doc;*.docx" + end},
            {{L"<xls>", 0}, L"Excel|*.xls" + end},
        };
    }

    ComPtr<FilterHost> host = MakeObject<FilterHost>();
};

TEST_P(DefaultFilterString, OfAnOpenDialogHasNoTypesThatAreOnlyConverted) {
    EXPECT_EQ(Build(*host, true), L"PDF|*.pdf|All supported|*.pdf|All files|*.*||");
}

TEST_P(DefaultFilterString, OfASaveDialogIsPdfAndAllFiles) {
    EXPECT_EQ(Build(*host, false), L"PDF|*.pdf|All files|*.*||");
    EXPECT_EQ(ParseFilterString(Build(*host, false)).size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Hosts, DefaultFilterString, testing::Values(L"|", L"||"));

TEST(DefaultFilterString, IsOneBarForAHostThatKnowsNoType) {
    const ComPtr<FilterHost> host = MakeObject<FilterHost>();
    EXPECT_EQ(Build(*host, true), L"|");
    EXPECT_EQ(Build(*host, false), L"|");
    std::wstring text;
    EXPECT_EQ(BuildDefaultFilterString(nullptr, true, text), E_INVALIDARG);
}

} // namespace
