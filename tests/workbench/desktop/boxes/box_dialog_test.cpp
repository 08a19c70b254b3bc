// Questions as a person sees them: real windows, driven by the names of their controls.

#include <thread>

#include <QAbstractButton>
#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "workbench/core/main_loop.h"
#include "workbench/desktop/boxes/desktop_questions.h"
#include "workbench/desktop/boxes/message_text.h"
#include "workbench/desktop/boxes/two_line_button.h"
#include "workbench/desktop/modal_person.h"
#include "workbench/desktop/objects/message_pump.h"

namespace {

Box SaveBox() {
    Box box;
    box.text = L"The file <b>a.pdf</b> changed.";
    box.icon = BoxIcon::question;
    box.buttons = {{L"sp.btn.overwrite", L"&Overwrite\n- CHANGES & <i>more</i> WILL BE LOST"},
                   {L"sp.btn.save", L"&Save"},
                   {L"btn.cancel", L"&Cancel"}};
    box.default_button = 1;
    return box;
}

struct Boxes : testing::Test {
    BoxAnswer Ask(const Box& box, ModalPerson::Turn turn) {
        person.Next(std::move(turn));
        return questions.Ask(box);
    }

    MainLoop loop;
    MessagePump pump{loop};
    QWidget main_window;
    DesktopQuestions questions{loop, [this] { return &main_window; }};
    ModalPerson person;
};

TEST_F(Boxes, TheButtonThatWasPressedIsTheAnswer) {
    const Box box = SaveBox();
    for (std::size_t i = 0; i < box.buttons.size(); ++i) {
        const BoxAnswer answer = Ask(box, [&](QDialog& dialog) {
            Child<QAbstractButton>(dialog, QString::fromStdWString(box.buttons[i].key).toUtf8()).click();
        });
        EXPECT_EQ(answer.button, i);
    }
}

TEST_F(Boxes, EscapeAndCloseAreNoButton) {
    EXPECT_EQ(Ask(SaveBox(), [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }).button, std::nullopt);
    EXPECT_EQ(Ask(SaveBox(), [](QDialog& dialog) { dialog.close(); }).button, std::nullopt);
}

TEST_F(Boxes, EnterIsTheDefaultButtonAndMnemonicsWork) {
    EXPECT_EQ(Ask(SaveBox(), [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Return); }).button, 1u);
    const BoxAnswer answer = Ask(SaveBox(), [](QDialog& dialog) {
        QTest::keyClick(&dialog, Qt::Key_O, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); })); // a mnemonic shows the button pressed for a moment
    });
    EXPECT_EQ(answer.button, 0u);
}

TEST_F(Boxes, ButtonsStandInTheirOrderWithTheSecondLineAsDescription) {
    (void)Ask(SaveBox(), [](QDialog& dialog) {
        auto& overwrite = Child<TwoLineButton>(dialog, "sp.btn.overwrite");
        EXPECT_EQ(overwrite.text(), "&Overwrite");
        EXPECT_EQ(overwrite.Description(), "- CHANGES & <i>more</i> WILL BE LOST");
        EXPECT_EQ(overwrite.accessibleName(), "Overwrite");
        const auto at = [&](const char* name) {
            auto& button = Child<QAbstractButton>(dialog, name);
            return button.mapTo(&dialog, QPoint(0, 0));
        };
        EXPECT_LT(at("sp.btn.overwrite").y(), at("sp.btn.save").y());
        EXPECT_LT(at("sp.btn.save").x(), at("btn.cancel").x());
        EXPECT_EQ(at("sp.btn.save").y(), at("btn.cancel").y());
        dialog.reject();
    });
}

TEST_F(Boxes, ChoicesCheckAndEditGoInAndComeOut) {
    Box box = SaveBox();
    box.check = BoxCheck{{L"sp.check", L"Don't ask again <b>&here</b>"}, false};
    box.radios = {{L"sp.minor", L"M&inor"}, {L"sp.major", L"M&ajor"}};
    box.radio = 1;
    box.edit = BoxEdit{{L"sp.comment", L"&Comment:"}, L"first <b>&amp;</b>\nsecond", false, true};
    const BoxAnswer answer = Ask(box, [](QDialog& dialog) {
        auto& edit = Child<QPlainTextEdit>(dialog, "sp.comment");
        EXPECT_TRUE(edit.hasFocus());
        EXPECT_EQ(edit.toPlainText(), "first <b>&amp;</b>\nsecond");
        EXPECT_EQ(edit.accessibleName(), "Comment:");
        EXPECT_TRUE(Child<QRadioButton>(dialog, "sp.major").isChecked());
        EXPECT_FALSE(Child<QCheckBox>(dialog, "sp.check").isChecked());
        edit.setPlainText("third\nfourth");
        Child<QRadioButton>(dialog, "sp.minor").click();
        Child<QCheckBox>(dialog, "sp.check").click();
        Child<QAbstractButton>(dialog, "btn.cancel").click();
    });
    EXPECT_EQ(answer.button, 2u);
    EXPECT_EQ(answer.edit, L"third\nfourth");
    EXPECT_EQ(answer.radio, 0u);
    EXPECT_TRUE(answer.is_checked);
}

TEST_F(Boxes, ARequiredTextHoldsBackTheFirstButtonAlone) {
    Box box;
    box.text = L"Where?";
    box.buttons = {{L"sp.btn.connect", L"C&onnect"}, {L"btn.cancel", L"&Cancel"}};
    for (const bool has_several_lines : {false, true}) {
        box.edit = BoxEdit{{L"sp.url", L"URL"}, L"", true, has_several_lines};
        const BoxAnswer answer = Ask(box, [&](QDialog& dialog) {
            auto& connect = Child<QPushButton>(dialog, "sp.btn.connect");
            EXPECT_FALSE(connect.isEnabled());
            EXPECT_TRUE(Child<QPushButton>(dialog, "btn.cancel").isEnabled());
            auto& edit = Child<QWidget>(dialog, "sp.url");
            QTest::keyClick(&edit, Qt::Key_X);
            EXPECT_TRUE(connect.isEnabled());
            QTest::keyClick(&edit, Qt::Key_Backspace);
            EXPECT_FALSE(connect.isEnabled());
            QTest::keyClicks(&edit, "https://a");
            connect.click();
        });
        EXPECT_EQ(answer.button, 0u);
        EXPECT_EQ(answer.edit, L"https://a");
    }
}

TEST_F(Boxes, AQuestionOfAnotherThreadStandsInFrontOfTheMainThreads) {
    std::thread worker;
    BoxAnswer of_worker;
    Box other = SaveBox();
    other.text = L"other";
    person.Next([&](QDialog& below) {
        QEventLoop until_answered;
        person.Next([&](QDialog& dialog) {
            EXPECT_EQ(dialog.parentWidget(), &below);
            EXPECT_EQ(Child<MessageText>(dialog, "text").toPlainText(), "other");
            Child<QAbstractButton>(dialog, "sp.btn.save").click();
        });
        worker = std::thread([&] {
            of_worker = questions.Ask(other);
            loop.Post([&] { until_answered.quit(); });
        });
        until_answered.exec();
        Child<QAbstractButton>(below, "btn.cancel").click();
    });
    EXPECT_EQ(questions.Ask(SaveBox()).button, 2u);
    worker.join();
    EXPECT_EQ(of_worker.button, 1u);
}

TEST_F(Boxes, ABoxThatGoesWithItsWindowIsUnanswered) {
    auto window = std::make_unique<QWidget>();
    DesktopQuestions over_window(loop, [&] { return window.get(); });
    Box box = SaveBox();
    box.check = BoxCheck{{L"sp.check", L"Again"}, true};
    person.Next([&](QDialog&) { window.reset(); });
    const BoxAnswer answer = over_window.Ask(box);
    EXPECT_EQ(answer.button, std::nullopt);
    EXPECT_TRUE(answer.is_checked);
}

TEST(MarkedText, OnlyBoldIsMarkup) {
    const struct {
        const wchar_t* text;
        std::vector<TextRun> runs;
    } rows[] = {
        {L"plain & <i>text</i> <img src='x'> &lt;b&gt;", {{"plain & <i>text</i> <img src='x'> &lt;b&gt;", false}}},
        {L"file <b>a.pdf</b>?", {{"file ", false}, {"a.pdf", true}, {"?", false}}},
        {L"<B>x</B> <b >y", {{"<B>x</B> <b >y", false}}},
        {L"a</b>b<b>c", {{"a", false}, {"b", false}, {"c", true}}},
        {L"", {}},
        {L"<b></b>", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SplitMarkedText(row.text), row.runs) << QString::fromWCharArray(row.text).toStdString();
    }
}

TEST_F(Boxes, TextsAreShownLetterByLetterWhateverTheyHold) {
    const QString hostile =
        QString::fromUtf8("<img src=\"http://x/\"> & <a href='x'>\u202Egpj.exe</a> &amp; \U0001F600\n  two  blanks");
    Box box = SaveBox();
    box.text = L"File <b>" + hostile.toStdWString() + L"</b>.";
    (void)Ask(box, [&](QDialog& dialog) {
        EXPECT_EQ(Child<MessageText>(dialog, "text").toPlainText(), "File " + hostile + ".");
        dialog.reject();
    });
}

TEST_F(Boxes, ALongNameIsBrokenAndALongTextScrolls) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    Box box = SaveBox();
    for (const std::wstring& text : {std::wstring(255, L'w'), std::wstring(20000, L'w')}) {
        box.text = text;
        (void)Ask(box, [&](QDialog& dialog) {
            EXPECT_LT(dialog.width(), screen.width());
            EXPECT_LT(dialog.height(), screen.height());
            dialog.reject();
        });
    }
}

TEST_F(Boxes, AnAccountIsAskedForWithTheServersOwnWords) {
    DesktopAccountPrompt prompt(loop, [this] { return &main_window; });
    const AccountDemand demand{L"srv<b>", L"401 <b>Unauthorized</b>", L"ann", L""};
    person.Next([](QDialog& dialog) {
        EXPECT_TRUE(Child<MessageText>(dialog, "host").toPlainText().startsWith("srv<b> "));
        EXPECT_EQ(Child<MessageText>(dialog, "status").toPlainText(), "401 <b>Unauthorized</b>");
        EXPECT_EQ(Child<QLineEdit>(dialog, "ed.user").text(), "ann");
        auto& password = Child<QLineEdit>(dialog, "ed.password");
        EXPECT_TRUE(password.hasFocus());
        EXPECT_EQ(password.echoMode(), QLineEdit::Password);
        QTest::keyClicks(&password, "se cret");
        QTest::keyClick(&password, Qt::Key_Return);
    });
    const std::optional<AccountAnswer> answer = prompt.Ask(demand);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->user, L"ann");
    EXPECT_EQ(answer->password, L"se cret");
    person.Next([](QDialog& dialog) { // it was refused, and only the password is typed anew
        EXPECT_EQ(Child<QLineEdit>(dialog, "ed.user").text(), "ann");
        EXPECT_TRUE(Child<QLineEdit>(dialog, "ed.password").hasFocus());
        dialog.reject();
    });
    EXPECT_FALSE(prompt.Ask({demand.host, demand.status_text, L"", L""}));
    person.Next([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_FALSE(prompt.Ask(demand));
    person.Next([](QDialog& dialog) {
        Child<QLineEdit>(dialog, "ed.user").clear();
        EXPECT_FALSE(Child<QPushButton>(dialog, "btn.ok").isEnabled());
        Child<QPushButton>(dialog, "btn.cancel").click();
    });
    EXPECT_FALSE(prompt.Ask(demand));
}

} // namespace
