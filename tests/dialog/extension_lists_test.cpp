// Types of files as texts: reading the host's filter strings, and fitting a typed name to a type.

#include <gtest/gtest.h>

#include "dialog/extension_lists.h"
#include "platform/text.h"

namespace {

TEST(FilterString, IsReadPairByPairAndPatternByPattern) {
    struct Row {
        const wchar_t* text;
        std::vector<std::pair<std::wstring, ExtensionList>> types;
    };
    const Row rows[] = {
        {L"PDF|*.pdf;*.fdf|", {{L"PDF", {L"pdf", L"fdf"}}}},
        {L"PDF|*.pdf|All|*.*||", {{L"PDF", {L"pdf"}}, {L"All", {L"*"}}}},
        {L"All|*.pdf;*.*;*.fdf|", {{L"All", {L"*"}}}},
        {L"All|**|", {{L"All", {L"*"}}}},
        {L"Plain|pdf;.fdf;*xdp|", {{L"Plain", {L"pdf", L"fdf", L"xdp"}}}},
        {L"Two|*.tar.gz;;*.;*|", {{L"Two", {L"tar.gz"}}}},
        {L"", {}},
        {L"no bar at all", {}},
        {L"PDF|*.pdf", {}},
        {L"|*.pdf|", {}},
        {L"PDF||All|*.*|", {}},
        {L"PDF|*.pdf|half", {{L"PDF", {L"pdf"}}}},
        {L"<b>PDF</b>|*.pdf|", {{L"<b>PDF</b>", {L"pdf"}}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.text));
        std::vector<std::pair<std::wstring, ExtensionList>> types;
        for (const FileType& type : ParseFilterString(row.text)) {
            types.emplace_back(type.title, type.extensions);
        }
        EXPECT_EQ(types, row.types);
    }
}

TEST(TypedName, IsFittedToTheChosenType) {
    const ExtensionList pdf = {L"pdf", L"pdx"};
    const ExtensionList fdf = {L"fdf"};
    const ExtensionList all = {L"*"};
    const ExtensionList none = {};
    struct Row {
        const wchar_t* what;
        const wchar_t* name;
        const ExtensionList* current;
        std::vector<const ExtensionList*> known;
        const wchar_t* default_extension;
        const wchar_t* result;
    };
    const Row rows[] = {
        {L"without extension", L"plan", &pdf, {&pdf, &all}, L"txt", L"plan.pdf"},
        {L"ends in a dot", L"plan.", &pdf, {&pdf}, nullptr, L"plan.pdf"},
        {L"without, all files", L"plan", &all, {&pdf, &all}, L"txt", L"plan.txt"},
        {L"without, no type chosen", L"plan", nullptr, {}, L"txt", L"plan.txt"},
        {L"without, an empty type", L"plan", &none, {&none}, L"txt", L"plan.txt"},
        {L"without, nothing to add", L"plan", &all, {&all}, L"", L"plan"},
        {L"without, nothing at all", L"plan", nullptr, {}, nullptr, L"plan"},
        {L"with, all files", L"plan.doc", &all, {&pdf, &all}, L"txt", L"plan.doc"},
        {L"of the type", L"plan.PDX", &pdf, {&pdf, &fdf}, L"txt", L"plan.PDX"},
        {L"of another type", L"plan.Pdf", &fdf, {&pdf, &fdf}, L"txt", L"plan.fdf"},
        {L"of no type", L"v1.2", &pdf, {&pdf, &fdf}, L"txt", L"v1.2.pdf"},
        {L"of a type that can't be read", L"plan.pdf", &fdf, {nullptr, &fdf}, nullptr, L"plan.pdf.fdf"},
        {L"a blank behind the dot", L"Mr. Smith", &pdf, {&pdf}, nullptr, L"Mr. Smith.pdf"},
        {L"nothing but an extension", L".pdf", &fdf, {&pdf, &fdf}, nullptr, L".fdf"},
        {L"the last of two", L"a.pdf.pdf", &fdf, {&pdf, &fdf}, nullptr, L"a.pdf.fdf"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.what));
        std::wstring name = row.name;
        const bool is_changed = FitExtension(name, row.current, row.known, row.default_extension);
        EXPECT_EQ(name, row.result);
        EXPECT_EQ(is_changed, name != row.name);
    }
}

} // namespace
