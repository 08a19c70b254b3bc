#include "editor/ui/message_box.h"

#include <gtest/gtest.h>

#include "host/tools/module_instance.h"
#include "platform/modules.h"
#include "recording_host.h"

namespace {

class MessageBox : public testing::Test {
protected:
    MessageBox() {
        m_host->texts = {{L"sp.btn.a", L"&A"}, {L"sp.btn.b", L"&B"}, {L"btn.cancel", L"Cancel"},   {L"btn.close", L"Close"},
                         {L"sp.r.0", L"zero"}, {L"sp.r.1", L"one"},  {L"sp.lb.edit", L"Comment:"}, {L"sp.check", L"Don't ask"}};
    }

    const ComPtr<RecordingHost> m_host = MakeObject<RecordingHost>();
};

TEST_F(MessageBox, RecordHoldsWhatWasAsked) {
    bool check = true;
    int radio = 1;
    std::wstring edit = L"old";
    Ui::ShowMessageBox(m_host, 0x200, L"Really?", {L"sp.btn.a", L"sp.btn.b", L"btn.cancel"}, 1, L"sp.check", &check,
                       {L"sp.r.0", L"sp.r.1"}, &radio, L"sp.lb.edit", &edit);
    const ShownBox& box = m_host->shown;
    EXPECT_EQ(box.size, 216u);
    EXPECT_EQ(box.flags, 0x200u | 0x10000000u | 0x80020000u | 0x200000u);
    EXPECT_EQ(box.owner, m_host.Get());
    EXPECT_EQ(box.message, L"Really?");
    // The host knows the first button as "ok", number 1, whatever its text.
    EXPECT_EQ(box.buttons, (std::vector<ShownItem>{{L"ok", L"&A"}, {L"sp.btn.b", L"&B"}, {L"btn.cancel", L"Cancel"}}));
    EXPECT_EQ(box.default_button_id, m_host->Id(L"sp.btn.b"));
    EXPECT_EQ(box.radios, (std::vector<ShownItem>{{L"sp.r.0", L"zero"}, {L"sp.r.1", L"one"}}));
    EXPECT_EQ(box.radio_id, m_host->Id(L"sp.r.1"));
    EXPECT_EQ(box.check_text, L"Don't ask");
    EXPECT_EQ(box.check_state, 1u);
    EXPECT_EQ(box.edit_label, L"Comment:");
    EXPECT_EQ(box.edit_text, L"old");
}

TEST_F(MessageBox, RecordOfAPlainBoxIsEmptyElsewhere) {
    EXPECT_EQ(Ui::ShowMessageBox(m_host, 0x300, L"Failed", {}), 0);
    const ShownBox& box = m_host->shown;
    EXPECT_EQ(box.flags, 0x300u | 0x10000000u | 0x80020000u);
    EXPECT_EQ(box.buttons, (std::vector<ShownItem>{{L"ok", L"Close"}}));
    EXPECT_EQ(box.default_button_id, 1u);
    EXPECT_TRUE(box.radios.empty());
    EXPECT_EQ(box.radio_id, 0u);
    EXPECT_FALSE(box.has_check);
    EXPECT_FALSE(box.has_edit);
    EXPECT_FALSE(box.has_icon);
}

TEST_F(MessageBox, ClassicBoxKeepsItsCallersFlags) {
    std::wstring url;
    Ui::ShowClassicMessageBox(m_host, KOV::UIX_MsgBox_EditTextRequired, L"", {L"sp.btn.a", L"btn.cancel"}, 1, 0, nullptr, nullptr,
                              {}, nullptr, L"sp.lb.edit", &url);
    EXPECT_EQ(m_host->shown.flags, 0x4000000u | 0x80020000u | 0x200000u);
}

TEST_F(MessageBox, AnswerIsTheIndexOfThePressedButtonOrTheOneForAClosedBox) {
    const struct {
        std::wstring pressed;
        int cancel_index;
        int result;
    } rows[] = {
        {L"ok", -1, 0}, {L"sp.btn.b", -1, 1}, {L"btn.cancel", -1, 2},    {L"", -1, 2}, {L"", 1, 1},
        {L"", 0, 0},    {L"", 3, 2},          {L"of another box", 1, 1},
    };
    for (const auto& row : rows) {
        m_host->pressed = row.pressed;
        EXPECT_EQ(Ui::ShowClassicMessageBox(m_host, 0, L"", {L"sp.btn.a", L"sp.btn.b", L"btn.cancel"}, row.cancel_index, 0,
                                            nullptr, nullptr, {}, nullptr, nullptr, nullptr),
                  row.result)
            << testing::PrintToString(row.pressed) << " with " << row.cancel_index;
    }
}

TEST_F(MessageBox, IndexesThatAreNoneMeanTheFirst) {
    for (const int index : {-1, 2, 1000}) {
        int radio = index;
        m_host->pressed = L"ok";
        Ui::ShowMessageBox(m_host, 0, L"", {L"sp.btn.a", L"sp.btn.b"}, index, nullptr, nullptr, {L"sp.r.0", L"sp.r.1"}, &radio);
        EXPECT_EQ(m_host->shown.default_button_id, 1u) << index;
        EXPECT_EQ(m_host->shown.radio_id, m_host->Id(L"sp.r.0")) << index;
    }
}

TEST_F(MessageBox, ChoicesComeBack) {
    bool check = false;
    int radio = 0;
    std::wstring edit = L"old";
    m_host->pressed = L"sp.btn.b";
    m_host->check_state = 1;
    m_host->radio = L"sp.r.1";
    m_host->edit_text = L"new";
    EXPECT_EQ(Ui::ShowMessageBox(m_host, 0, L"", {L"sp.btn.a", L"sp.btn.b"}, 0, L"sp.check", &check, {L"sp.r.0", L"sp.r.1"},
                                 &radio, L"sp.lb.edit", &edit),
              1);
    EXPECT_TRUE(check);
    EXPECT_EQ(radio, 1);
    EXPECT_EQ(edit, L"new");

    m_host->edit_text = nullptr; // the user emptied the line
    Ui::ShowMessageBox(m_host, 0, L"", {L"sp.btn.a", L"sp.btn.b"}, 0, nullptr, nullptr, {}, nullptr, L"sp.lb.edit", &edit);
    EXPECT_EQ(edit, L"");
}

TEST_F(MessageBox, BoxThatCannotBeShownChangesNothingAndCountsAsClosed) {
    bool check = true;
    int radio = 1;
    std::wstring edit = L"old";
    m_host->box_result = E_FAIL;
    m_host->pressed = L"ok";
    EXPECT_EQ(Ui::ShowMessageBox(m_host, 0, L"", {L"sp.btn.a", L"btn.cancel"}, 0, L"sp.check", &check, {L"sp.r.0", L"sp.r.1"},
                                 &radio, L"sp.lb.edit", &edit),
              1);
    EXPECT_TRUE(check);
    EXPECT_EQ(radio, 1);
    EXPECT_EQ(edit, L"old");
}

TEST_F(MessageBox, KeyWithoutATextStandsForItself) {
    Ui::ShowMessageBox(m_host, 0, L"", {L"sp.btn.unknown"});
    EXPECT_EQ(m_host->shown.buttons, (std::vector<ShownItem>{{L"ok", L"sp.btn.unknown"}}));
}

/// Takes every picture whose bytes begin with "P".
class PictureTaker final : public UnansweredUix<KOV::IKOV_MultiSizeImage, KOV::IKOV_Picture> {
public:
    std::vector<DWORD> numbers;
    ULONG pictures = 0;

    HRESULT CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD* all, ULONG count) override {
        numbers.assign(all, all + count);
        *out_image = ComPtr<KOV::IKOV_MultiSizeImage>(this).Detach();
        return S_OK;
    }
    HRESULT CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) override {
        char first = 0;
        ULONG count = 0;
        if (FAILED(stream->Read(&first, 1, &count)) || first != 'P') {
            return E_FAIL;
        }
        *out_picture = ComPtr<KOV::IKOV_Picture>(this).Detach();
        return S_OK;
    }
    HRESULT AddPicture(KOV::IKOV_Picture*, DWORD) override {
        ++pictures;
        return S_OK;
    }
    HRESULT Finish(ULONG* out_count) override {
        *out_count = pictures;
        return S_OK;
    }
    HRESULT get_Size(SIZE*) override { return E_NOTIMPL; }
};

TEST_F(MessageBox, CarriesTheModulesIconUnlessTheFlagsNameOne) {
    static const BYTE good[] = {'P'};
    static const BYTE broken[] = {'X'};
    const struct {
        std::vector<ModuleResource> resources;
        DWORD flags;
        bool has_icon;
    } rows[] = {
        {{{L"PNG", 104, good, 1}, {L"PNG", 107, good, 1}}, 0, true},
        {{{L"PNG", 104, broken, 1}, {L"PNG", 107, good, 1}}, 0, true},
        {{{L"PNG", 104, broken, 1}}, 0, false},
        {{}, 0, false},
        {{{L"PNG", 104, good, 1}}, 0x200, false},
    };
    int module = 0;
    SetModuleInstance(&module);
    for (const auto& row : rows) {
        const ComPtr<PictureTaker> taker = MakeObject<PictureTaker>();
        m_host->uix = ComPtr<KOV::IUIX_Inst>(static_cast<KOV::IUIX_Inst*>(taker.Get()));
        RegisterModuleResources(&module, row.resources.data(), row.resources.size());
        Ui::ShowMessageBox(m_host, row.flags, L"", {});
        UnregisterModuleResources(&module, row.resources.data());
        EXPECT_EQ(m_host->shown.has_icon, row.has_icon) << "row " << &row - rows;
        EXPECT_EQ(taker->numbers.size(), row.flags == 0 ? 4u : 0u);
    }
    SetModuleInstance(nullptr);
}

} // namespace
