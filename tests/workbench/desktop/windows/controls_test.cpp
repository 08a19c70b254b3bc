// What controls tell their window, and what they don't.

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolTip>

#include "desk.h"

namespace {

constexpr const char* controls_text = R"(<dialogs><dialog id="D" title="Controls" width="400" height="300"><items>
<edit id="ed" x="10" y="10" width="100" height="20" style="#00000002"/>
<edit id="field" x="10" y="40" width="100" height="60" style="#00000102"/>
<edit id="number" x="10" y="110" width="38" height="20" style="#00040002"/>
<combo id="cb" x="10" y="140" width="100" height="20" style="#00000002"/>
<combo id="typed" x="10" y="170" width="100" height="20" style="#00000102" cue="Type here"/>
<check id="check" x="10" y="200" width="100" height="15" text="&amp;Tick"/>
<button id="btn" x="10" y="230" width="100" height="24" text="&amp;Press"/>
<label id="lb" x="150" y="10" width="100" height="15" text="Label"/>
<picture id="pic" x="150" y="40" width="30" height="30"/>
<group id="group" x="200" y="40" width="100" height="100" text="Group"/>
</items></dialog></dialogs>)";

class ControlsTest : public DeskTest {
protected:
    ControlsTest() {
        m_layouts = controls_text;
        m_module = CreateModule(L"D");
        for (const wchar_t* const text : {L"one", L"two", L"three"}) {
            EXPECT_EQ(Combo(L"cb")->InsertItem(-1, text, nullptr, nullptr, 10 + m_parameter, 0), S_OK);
            EXPECT_EQ(Combo(L"typed")->InsertItem(-1, text, nullptr, nullptr, 10 + m_parameter++, 0), S_OK);
        }
        WidgetOfModule(*m_module)->show();
        QApplication::setActiveWindow(WidgetOfModule(*m_module));
        m_heard.clear();
    }
    ~ControlsTest() override { EXPECT_EQ(m_module->Object().Destroy(), S_OK); }

    ComPtr<KOV::IUIX_Combo> Combo(const wchar_t* id) { return m_module->Item<KOV::IUIX_Combo>(id); }
    QLineEdit* Line(const char* id) { return Find<QLineEdit>(*m_module, id); }
    QPlainTextEdit* Field() { return Find<QPlainTextEdit>(*m_module, "field"); }
    QComboBox* Drop(const char* id) { return Find<QComboBox>(*m_module, id); }
    std::string TextOf(const wchar_t* id) {
        Bstr text;
        EXPECT_EQ(m_module->Dialog().GetItemText(id, &text), S_OK);
        return ToQString(static_cast<LPCWSTR>(text)).toStdString();
    }

    ComPtr<Module> m_module;
    LONGLONG m_parameter = 0;
};

} // namespace

TEST_F(ControlsTest, TellOfAPersonsDoingAndOfTextsAlone) {
    struct Row {
        const char* name;
        std::function<void()> action;
        Heard heard;
    };
    KOV::IUIX_Dialog& dialog = m_module->Dialog();
    const auto focus = [&](const char* id) { Find(*m_module, id)->setFocus(); };
    const Row rows[] = {
        {"a click", [&] { QTest::mouseClick(Find(*m_module, "btn"), Qt::LeftButton); }, {"3 btn"}},
        {"a tick", [&] { Find<QCheckBox>(*m_module, "check")->click(); }, {"3 check", "33 check"}},
        {"the program's tick", [&] { EXPECT_EQ(dialog.SetItemCheck(L"check", 0, 1), S_OK); }, {}},
        {"a letter", [&] { focus("ed"), QTest::keyClicks(Line("ed"), "a"); }, {"5 ed"}},
        {"a field that is left", [&] { focus("btn"); }, {"33 ed"}},
        {"a field that is left as it was", [&] { focus("ed"), focus("btn"); }, {}},
        {"Enter in a field",
         [&] { focus("ed"), QTest::keyClicks(Line("ed"), "b"), QTest::keyClick(Line("ed"), Qt::Key_Return); },
         {"5 ed", "33 ed"}},
        {"the program's text", [&] { EXPECT_EQ(dialog.SetItemText(L"ed", L"new"), S_OK); }, {"5 ed"}},
        {"the same text again", [&] { EXPECT_EQ(dialog.SetItemText(L"ed", L"new"), S_OK); }, {}},
        {"the program's text, left", [&] { focus("ed"), focus("btn"); }, {}},
        {"lines", [&] { focus("field"), QTest::keyClicks(Field(), "x"); }, {"5 field"}},
        {"lines that are left", [&] { focus("btn"); }, {"33 field"}},
        {"the program's lines", [&] { EXPECT_EQ(dialog.SetItemText(L"field", L"a\nb"), S_OK); }, {"5 field"}},
        {"the same lines again",
         [&] { EXPECT_EQ(dialog.SetItemText(L"field", L"a\nb"), S_OK), focus("field"), focus("btn"); },
         {}},
        {"the program's choice", [&] { EXPECT_EQ(dialog.SelectComboItem(L"cb", 0), S_OK); }, {}},
        {"a person's choice", [&] { QTest::keyClick(Drop("cb"), Qt::Key_Down); }, {"6 cb", "33 cb"}},
        {"the same choice again", [&] { emit Drop("cb")->activated(Drop("cb")->currentIndex()); }, {}},
        {"a choice by its parameter", [&] { EXPECT_EQ(Combo(L"cb")->SelectItemByParam(12, nullptr), S_OK); }, {}},
        {"a typed address", [&] { focus("typed"), QTest::keyClicks(Drop("typed")->lineEdit(), "z"); }, {"5 typed"}},
        {"a typed address that is left", [&] { focus("btn"); }, {"33 typed"}},
        {"a new title of a button", [&] { EXPECT_EQ(dialog.SetItemText(L"btn", L"Go"), S_OK); }, {}},
        {"a new text of a label", [&] { EXPECT_EQ(dialog.SetItemText(L"lb", L"Go"), S_OK); }, {}},
    };
    for (const Row& row : rows) {
        m_heard.clear();
        row.action();
        EXPECT_EQ(m_heard, row.heard) << row.name;
    }
}

TEST_F(ControlsTest, TellOfNothingWhileTheyAreDisabled) {
    for (const wchar_t* const id : {L"ed", L"field", L"typed"}) {
        ASSERT_EQ(m_module->Dialog().EnableItem(id, VARIANT_FALSE), S_OK);
        ASSERT_EQ(m_module->Dialog().SetItemText(id, L"other"), S_OK);
        EXPECT_EQ(TextOf(id), "other");
    }
    ASSERT_EQ(m_module->Dialog().EnableItem(L"check", VARIANT_FALSE), S_OK);
    Find<QCheckBox>(*m_module, "check")->click();
    EXPECT_EQ(m_heard, Heard());
}

TEST_F(ControlsTest, AComboSelectsNothingByItself) {
    const ComPtr<KOV::IUIX_Combo> combo = Combo(L"cb");
    LONG index = 0;
    LONG count = 0;
    LONGLONG parameter = 0;
    EXPECT_EQ(combo->get_SelItem(&index), S_OK);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(combo->SelectItemByParam(11, &index), S_OK);
    EXPECT_EQ(index, 1);
    EXPECT_TRUE(FAILED(combo->SelectItemByParam(99, &index))) << "no such item";
    EXPECT_EQ(combo->get_SelItem(&index), S_OK);
    EXPECT_EQ(index, 1) << "the selection stays";
    EXPECT_EQ(combo->InsertItem(0, L"zero", nullptr, nullptr, -5, 0), S_OK);
    EXPECT_EQ(combo->get_SelItem(&index), S_OK);
    EXPECT_EQ(index, 2) << "the selection goes with its item";
    EXPECT_EQ(combo->GetItemParam(0, &parameter), S_OK);
    EXPECT_EQ(parameter, -5);
    EXPECT_EQ(combo->get_Count(&count), S_OK);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(combo->GetItemParam(4, &parameter), E_INVALIDARG);
    EXPECT_EQ(combo->put_SelItem(-1), S_OK);
    EXPECT_EQ(combo->Clear(), S_OK);
    EXPECT_EQ(combo->get_Count(&count), S_OK);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(combo->InsertItem(-1, L"$$$.btn.cancel", L"$$$.btn.close", nullptr, 0, 0), S_OK);
    EXPECT_EQ(Drop("cb")->itemText(0), "Cancel") << "texts are looked up";
    EXPECT_EQ(m_heard, Heard());
}

TEST_F(ControlsTest, ATypedTextOutlivesNewItems) {
    ASSERT_EQ(m_module->Dialog().SetItemText(L"typed", L"https://server"), S_OK);
    m_heard.clear();
    ASSERT_EQ(Combo(L"typed")->InsertItem(0, L"other", nullptr, nullptr, 0, 0), S_OK);
    EXPECT_EQ(TextOf(L"typed"), "https://server");
    EXPECT_EQ(m_heard, Heard());
    EXPECT_EQ(Drop("typed")->lineEdit()->placeholderText(), "Type here");
}

TEST_F(ControlsTest, ANumberTakesWhatItsRangeAllows) {
    ComPtr<KOV::IUIX_NumberValue> value;
    ASSERT_EQ(m_uix->CreateNumberValue(&value), S_OK);
    ASSERT_EQ(value->put_AllowedChars(L"0123456789"), S_OK);
    ASSERT_EQ(value->SetRange(0, -1, L"", 0.0, 999.0, 1.0, 10.0), S_OK);
    const ComPtr<KOV::IUIX_Edit> edit = m_module->Item<KOV::IUIX_Edit>(L"number");
    ASSERT_EQ(edit->put_NumberValue(value), S_OK);
    ASSERT_EQ(edit->put_NumberMode(3), S_OK);
    ASSERT_EQ(value->put_Value(30), S_OK);
    QLineEdit* const line = Line("number");
    const auto number = [&] {
        double read = -1;
        EXPECT_EQ(value->get_Value(&read), S_OK);
        return read;
    };
    EXPECT_EQ(TextOf(L"number"), "30");
    struct Row {
        const char* typed;
        const char* shown;
        double value;
    };
    const Row rows[] = {{"7", "7", 7}, {"x-1.5", "15", 15}, {"9999", "999", 999}, {"", "999", 999}};
    for (const Row& row : rows) {
        line->setFocus();
        line->selectAll();
        QTest::keyClick(line, Qt::Key_Delete);
        QTest::keyClicks(line, row.typed);
        Find(*m_module, "btn")->setFocus();
        EXPECT_EQ(TextOf(L"number"), row.shown) << row.typed;
        EXPECT_EQ(number(), row.value) << row.typed;
    }
    QTest::keyClick(line, Qt::Key_Up);
    EXPECT_EQ(number(), 999) << "the end of the range";
    QTest::keyClick(line, Qt::Key_PageDown);
    QTest::keyClick(line, Qt::Key_Down);
    EXPECT_EQ(TextOf(L"number"), "988");
    EXPECT_EQ(value->put_Value(-3), S_OK);
    EXPECT_EQ(TextOf(L"number"), "0");
    EXPECT_EQ(value->SetRange(0, -1, L"", 5, 1, 1, 1), E_INVALIDARG);
}

TEST_F(ControlsTest, ShowEveryTextLetterByLetter) {
    const std::wstring texts[] = {L"<b>bold</b> & <img src=\"x\">", L"\x5D3\x5D5\x5D7 & co", std::wstring(255, L'w'),
                                  L"smile \x1F600", L"$$$.no.such.key"};
    for (const std::wstring& text : texts) {
        for (const wchar_t* const id : {L"ed", L"field", L"typed", L"lb", L"btn", L"check", L"group"}) {
            ASSERT_EQ(m_module->Dialog().SetItemText(id, text.c_str()), S_OK);
            EXPECT_EQ(TextOf(id), ToQString(text).toStdString());
        }
        QLabel* const label = Find<QLabel>(*m_module, "lb");
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        QHelpEvent tip(QEvent::ToolTip, QPoint(1, 1), label->mapToGlobal(QPoint(1, 1)));
        QApplication::sendEvent(label, &tip);
        EXPECT_TRUE(label->toolTip().isEmpty() || label->toolTip() == PlainTip(ToQString(text)))
            << "a cut text stands in the tip";
    }
}

TEST_F(ControlsTest, LookTextsUpButNotWhereAPersonTypes) {
    for (const wchar_t* const id : {L"ed", L"field", L"typed"}) {
        ASSERT_EQ(m_module->Dialog().SetItemText(id, L"$$$.btn.close"), S_OK);
        EXPECT_EQ(TextOf(id), "$$$.btn.close");
    }
    for (const wchar_t* const id : {L"btn", L"lb", L"check", L"group"}) {
        ASSERT_EQ(m_module->Dialog().SetItemText(id, L"$$$.btn.close"), S_OK);
        EXPECT_EQ(TextOf(id), "&Close");
    }
}

TEST_F(ControlsTest, AnEditShowsTheStartOfALongTextAndKeepsTheWholeUntilItIsEdited) {
    const std::wstring start(100'000, L'x');
    const auto set = [&](const std::wstring& text) { ASSERT_EQ(m_module->Dialog().SetItemText(L"ed", text.c_str()), S_OK); };
    const auto expect_text = [&](const std::wstring& text) { EXPECT_TRUE(TextOf(L"ed") == ToQString(text).toStdString()); };
    set(start + L"1");
    EXPECT_LT(Line("ed")->text().size(), 10'000);
    expect_text(start + L"1");
    EXPECT_EQ(m_heard, Heard{"5 ed"});
    // A change that nobody sees is one.
    m_heard.clear();
    set(start + L"2");
    expect_text(start + L"2");
    EXPECT_EQ(m_heard, Heard{"5 ed"});
    m_heard.clear();
    set(start + L"2");
    EXPECT_EQ(m_heard, Heard());
    // What a person has changed is what is seen.
    const QString shown = Line("ed")->text();
    QTest::keyClick(Line("ed"), Qt::Key_End);
    QTest::keyClick(Line("ed"), Qt::Key_Backspace);
    expect_text(ToWide(shown.chopped(1)));
    EXPECT_EQ(m_heard, Heard{"5 ed"});
    // From the long to what was shown of it, and to a short one.
    set(start);
    m_heard.clear();
    set(ToWide(Line("ed")->text()));
    expect_text(ToWide(shown));
    EXPECT_EQ(m_heard, Heard{"5 ed"});
    set(L"short");
    expect_text(L"short");
}

TEST_F(ControlsTest, FailWhereTheyCannotAnswer) {
    KOV::IUIX_Dialog& dialog = m_module->Dialog();
    LONG check = 0;
    Bstr text;
    ComPtr<KOV::IUIX_Obj> object;
    EXPECT_TRUE(FAILED(dialog.GetItem(L"none", 1, &object)));
    EXPECT_TRUE(FAILED(dialog.GetItem(nullptr, 1, &object)));
    EXPECT_TRUE(FAILED(dialog.SetItemText(L"none", L"x")));
    EXPECT_TRUE(FAILED(dialog.EnableItem(L"none", VARIANT_TRUE)));
    EXPECT_TRUE(FAILED(dialog.SelectComboItem(L"cb", 3)));
    EXPECT_TRUE(FAILED(dialog.SelectComboItem(L"ed", 0)));
    EXPECT_EQ(dialog.SetItemCheck(L"btn", 1, 1), E_NOTIMPL);
    EXPECT_EQ(dialog.SetItemCheck(L"check", 2, 1), E_INVALIDARG);
    EXPECT_EQ(dialog.GetItemCheck(L"ed", &check), E_NOTIMPL);
    EXPECT_EQ(dialog.SetItemText(L"pic", L"x"), E_NOTIMPL);
    EXPECT_EQ(dialog.SetItemText(L"cb", L"x"), E_NOTIMPL);
    EXPECT_EQ(dialog.GetItemText(L"pic", &text), E_NOTIMPL);
}

TEST_F(ControlsTest, GiveTheFocusBackToAControlThatWasDisabled) {
    QWidget* const window = WidgetOfModule(*m_module);
    ASSERT_EQ(m_module->Dialog().SetItemText(L"ed", L"plan.pdf"), S_OK);
    Find(*m_module, "ed")->setFocus();
    ASSERT_EQ(m_module->Dialog().EnableItem(L"ed", VARIANT_FALSE), S_OK);
    ASSERT_EQ(m_module->Dialog().EnableItem(L"field", VARIANT_FALSE), S_OK) << "where the focus strayed to";
    ASSERT_NE(window->focusWidget(), Find(*m_module, "ed"));
    ASSERT_EQ(m_module->Dialog().EnableItem(L"field", VARIANT_TRUE), S_OK);
    ASSERT_EQ(m_module->Dialog().EnableItem(L"ed", VARIANT_TRUE), S_OK);
    EXPECT_EQ(window->focusWidget(), Find(*m_module, "ed"));
    EXPECT_EQ(Line("ed")->selectedText(), "plan.pdf") << "what is typed next takes the place of the text";

    ASSERT_EQ(m_module->Dialog().EnableItem(L"ed", VARIANT_FALSE), S_OK);
    Find(*m_module, "btn")->setFocus();
    ASSERT_EQ(m_module->Dialog().EnableItem(L"ed", VARIANT_TRUE), S_OK);
    EXPECT_EQ(window->focusWidget(), Find(*m_module, "btn")) << "a person has moved on";
}

TEST_F(ControlsTest, AnswerAfterTheirWindowIsGone) {
    ComPtr<KOV::IUIX_Obj> object;
    ASSERT_EQ(m_module->Dialog().GetItem(L"ed", 1, &object), S_OK);
    const ComPtr<KOV::IUIX_Combo> combo = Combo(L"cb");
    const ComPtr<KOV::IUIX_Edit> edit = m_module->Item<KOV::IUIX_Edit>(L"number");
    HWND window = nullptr;
    ASSERT_EQ(object->get_WndHandle(&window), S_OK);
    const ComPtr<Module> other = CreateModule(L"D");
    ASSERT_EQ(m_module->Object().Destroy(), S_OK);
    std::swap(m_module, *const_cast<ComPtr<Module>*>(&other));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    HWND again = nullptr;
    EXPECT_EQ(object->get_WndHandle(&again), S_OK);
    EXPECT_EQ(again, window);
    RECT rect;
    LONG index = 0;
    EXPECT_EQ(object->get_ClientRect(&rect), window_is_gone);
    EXPECT_EQ(object->Show(5, -1), window_is_gone);
    EXPECT_EQ(combo->get_SelItem(&index), window_is_gone);
    EXPECT_EQ(combo->Clear(), window_is_gone);
    EXPECT_EQ(edit->put_NumberMode(3), window_is_gone);
    ComPtr<KOV::IUIX_Obj> parent;
    EXPECT_EQ(object->get_Parent(&parent), S_OK);
    EXPECT_TRUE(parent.IsNull());
}
