#include <gtest/gtest.h>

#include "workbench/core/boxes.h"
#include "workbench/core/errors.h"

namespace {

constexpr std::string_view table = "<Localization><Module name='M' namespace='sp'/><Strings>"
                                   "<text id='btn.save'>&amp;Save&#10;now</text><text id='check'>Again?</text>"
                                   "<text id='minor'>Minor</text><text id='major'>Major</text><text id='label'>Comment</text>"
                                   "<text id='blank'> </text></Strings></Localization>";

class BoxesTest : public testing::Test {
protected:
    BoxesTest() { strings.Load(table); }

    std::wstring TextOf(const wchar_t* key) { return strings.Text(key).value(); }

    /// The record as the module fills it: the first button is called "ok", check and edit line have no keys.
    TranslatedBox ReadSaveBox(DWORD flags) {
        const std::wstring titles[] = {TextOf(L"sp.btn.save"), TextOf(L"btn.cancel"), TextOf(L"sp.minor"),
                                       TextOf(L"sp.major"),    TextOf(L"sp.check"),   TextOf(L"sp.label")};
        const KOV::MessageBoxItem buttons[] = {{L"ok", titles[0].c_str()}, {L"btn.cancel", titles[1].c_str()}};
        const KOV::MessageBoxItem radios[] = {{L"sp.minor", titles[2].c_str()}, {L"sp.major", titles[3].c_str()}};
        KOV::MessageBoxParameters record{};
        record.size = sizeof(record);
        record.flags = flags;
        record.message = L"$$$.sp.label";
        record.buttons = buttons;
        record.button_count = 2;
        record.default_button_id = *ids.Find(L"btn.cancel", true);
        record.radios = radios;
        record.radio_count = 2;
        record.radio_id = *ids.Find(L"sp.major", true);
        record.check_text = titles[4].c_str();
        record.check_state = 1;
        record.edit_label = titles[5].c_str();
        record.edit_text = L"a &lt; b &amp;amp; c";
        return ReadBoxRecord(record, strings, ids);
    }

    Strings strings;
    NameIds ids;
};

TEST_F(BoxesTest, ShowsTheRecordWithTheKeysThatItsTextsCameFrom) {
    const Box box = ReadSaveBox(KOV::UIX_MsgBox_IconError | KOV::UIX_MsgBox_EditLine).box;
    EXPECT_EQ(box.text, L"Comment");
    EXPECT_EQ(box.icon, BoxIcon::error);
    EXPECT_EQ(box.buttons[0].key, L"sp.btn.save") << "and not \"ok\"";
    EXPECT_EQ(box.buttons[0].title, L"&Save\nnow");
    EXPECT_EQ(box.buttons[1].key, L"btn.cancel");
    EXPECT_EQ(box.default_button, 1u);
    EXPECT_EQ(box.radio, 1u);
    EXPECT_EQ(box.check->item.key, L"sp.check");
    EXPECT_TRUE(box.check->is_checked);
    EXPECT_EQ(box.edit->label.key, L"sp.label");
    EXPECT_EQ(box.edit->text, L"a &lt; b &amp;amp; c");
    EXPECT_FALSE(box.edit->has_several_lines);
    EXPECT_FALSE(ReadSaveBox(0).box.edit);
}

TEST_F(BoxesTest, TextForMarkupIsPlainForTheUserAndEscapedInTheRecord) {
    const TranslatedBox box = ReadSaveBox(KOV::UIX_MsgBox_EditLine | BoxFlag_EditTextIsMarkup);
    EXPECT_EQ(box.box.edit->text, L"a < b &amp; c");
    EXPECT_TRUE(box.box.edit->has_several_lines);
    EXPECT_EQ(WriteBoxAnswer(box, UnansweredBox(box.box)).edit_text.View(), L"a &lt; b &amp;amp; c");
}

TEST_F(BoxesTest, AnswersWithTheNumbersOfTheRecord) {
    struct Row {
        const char* name;
        DWORD flags;
        BoxAnswer answer;
        DWORD button;
        const wchar_t* radio;
    };
    constexpr DWORD edit = KOV::UIX_MsgBox_EditLine;
    const DWORD cancel = *ids.Find(L"btn.cancel", true);
    const Row rows[] = {
        {"first", edit, {0, true, 0, L"x"}, 1, L"sp.minor"},
        {"second", edit, {1, false, 1, L""}, cancel, L"sp.major"},
        {"closed", edit, {std::nullopt, false, 0, L""}, 0, L"sp.minor"},
        {"no such button", edit, {7, false, 7, L""}, 0, L"sp.major"},
        {"required and empty", edit | KOV::UIX_MsgBox_EditTextRequired, {0, false, 0, L""}, 0, L"sp.minor"},
        {"required, but given up", edit | KOV::UIX_MsgBox_EditTextRequired, {1, false, 0, L""}, cancel, L"sp.minor"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const BoxResults results = WriteBoxAnswer(ReadSaveBox(row.flags), row.answer);
        EXPECT_EQ(results.button_id, row.button);
        EXPECT_EQ(results.radio_id, *ids.Find(row.radio, false));
        EXPECT_EQ(results.check_state, row.answer.is_checked ? 1u : 0u);
        EXPECT_EQ(results.edit_text.View(), row.answer.edit);
    }
}

TEST_F(BoxesTest, RefusesARecordThatCannotBeOne) {
    const KOV::MessageBoxItem button{L"ok", L"OK"};
    const KOV::MessageBoxItem nameless{nullptr, L"OK"};
    struct Row {
        const char* name;
        DWORD size;
        const KOV::MessageBoxItem* buttons;
        DWORD count;
    };
    const Row rows[] = {{"size", 100, &button, 1},
                        {"no button", 216, &button, 0},
                        {"no pointer", 216, nullptr, 1},
                        {"too many", 216, &button, 0x7FFFFFFF},
                        {"no key", 216, &nameless, 1}};
    for (const Row& row : rows) {
        KOV::MessageBoxParameters record{};
        record.size = row.size;
        record.buttons = row.buttons;
        record.button_count = row.count;
        EXPECT_THROW(ReadBoxRecord(record, strings, ids), HostException) << row.name;
    }
}

TEST_F(BoxesTest, ATableIsTakenWholeOrNotAtAll) {
    EXPECT_EQ(strings.Text(L"btn.cancel"), L"Cancel");
    EXPECT_EQ(strings.Text(L"sp.blank"), L" ");
    EXPECT_EQ(strings.Resolve(L"$$$.sp.none"), L"$$$.sp.none");
    for (const std::string_view broken :
         {"<Localization>", "<Localization><Strings/></Localization>",
          "<Localization><Module namespace='x'/><Strings><text id='a'>b</text><text>c</text></Strings></Localization>"}) {
        EXPECT_THROW(strings.Load(broken), HostException) << broken;
    }
    EXPECT_FALSE(strings.Text(L"x.a"));
}

} // namespace
