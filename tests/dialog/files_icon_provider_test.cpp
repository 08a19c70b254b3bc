// Which icon the host is asked for, and how often.

#include <map>

#include <gtest/gtest.h>

#include "dialog/files_icon_provider.h"
#include "host/object_bases.h"
#include "platform/errors.h"
#include "support/unanswered.h"

namespace {

class NamedIcon final : public cCoClassUnknownT<KOV::IKOV_MultiSizeImage> {
public:
    HRESULT AddPicture(KOV::IKOV_Picture*, DWORD) override { return E_NOTIMPL; }
    HRESULT Finish(ULONG*) override { return E_NOTIMPL; }
};

class CountingUix final : public UnansweredUix<> {
public:
    HRESULT GetIcon(LPCWSTR name, KOV::IKOV_MultiSizeImage** out_icon) override { return Give(name, out_icon); }
    HRESULT CreateFileTypeIcon(LPWSTR extension, DWORD flags, KOV::IKOV_MultiSizeImage** out_icon) override {
        EXPECT_EQ(flags, 3u);
        return Give(extension, out_icon);
    }

    HRESULT result = S_OK;
    std::map<std::wstring, int> asked;

private:
    HRESULT Give(const wchar_t* name, KOV::IKOV_MultiSizeImage** out_icon) {
        ++asked[name];
        *out_icon = FAILED(result) ? nullptr : MakeObject<NamedIcon>().Detach();
        return result;
    }
};

struct FilesIcons : testing::Test {
    ComPtr<KOV::IKOV_MultiSizeImage> Icon(LPCWSTR extension) {
        ComPtr<KOV::IKOV_MultiSizeImage> icon;
        EXPECT_EQ(provider.GetIcon(&icon, extension), S_OK);
        return icon;
    }

    ComPtr<CountingUix> ui = MakeObject<CountingUix>();
    Ui::FilesIconProvider provider{ui};
};

TEST_F(FilesIcons, AreAskedForOnceByEveryKindOfKey) {
    const struct {
        LPCWSTR first;
        LPCWSTR second;
        LPCWSTR asked;
    } rows[] = {
        {L"./", L"./", L"ico.folder"}, {L"../", L"../", L"ico.folder.opened"},
        {L".pdf", L".PDF", L".pdf"},   {L".ÄÖ", L".äö", L".ÄÖ"},
        {L"", nullptr, L"."},
    };
    for (const auto& row : rows) {
        ui->asked.clear();
        const ComPtr<KOV::IKOV_MultiSizeImage> icon = Icon(row.first);
        EXPECT_FALSE(icon.IsNull());
        EXPECT_EQ(Icon(row.second).Get(), icon.Get());
        EXPECT_EQ(ui->asked, (std::map<std::wstring, int>{{row.asked, 1}}));
    }
    EXPECT_NE(Icon(L".pdf").Get(), Icon(L".pdg").Get());
    EXPECT_EQ(provider.GetIcon(nullptr, L".pdf"), E_INVALIDARG);
}

TEST_F(FilesIcons, AreAskedForAgainAfterAFailure) {
    ui->result = E_FAIL;
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    EXPECT_EQ(provider.GetIcon(&icon, L".pdf"), E_FAIL);
    ui->result = S_OK;
    EXPECT_FALSE(Icon(L".pdf").IsNull());
    EXPECT_EQ(ui->asked[L".pdf"], 2);
}

TEST_F(FilesIcons, OfAFolderFullOfKindsAreNotAllKept) {
    EXPECT_FALSE(Icon(L".pdf").IsNull());
    const std::size_t count = Ui::FilesIconProvider::most_kept + 10;
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_FALSE(Icon((L"." + std::to_wstring(i)).c_str()).IsNull());
    }
    const std::wstring last = L"." + std::to_wstring(count - 1);
    EXPECT_FALSE(Icon(last.c_str()).IsNull());
    EXPECT_EQ(ui->asked[last], 2);
    EXPECT_FALSE(Icon(L".pdf").IsNull());
    EXPECT_EQ(ui->asked[L".pdf"], 1);
}

} // namespace
