#include "workbench/desktop/commands/command_host.h"

#include <thread>

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "workbench/desktop/commands/info_bar_strip.h"
#include "workbench/desktop/commands/info_bar_widget.h"

namespace {

constexpr DWORD sharepoint = 5;
constexpr DWORD other = 6;

class Bar : public CommandTest {
protected:
    Bar() {
        actions = new CommandActions(*commands, *host, owner, &window);
        widget = new InfoBarWidget(
            *bar, *actions,
            [](DWORD kind) {
                return kind == sharepoint ? InfoBarLook{"SharePoint Document", "About <it>", ColorOf(0xF1C281), {}}
                                          : InfoBarLook{};
            },
            &window);
        auto* const layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(widget);
        layout->addStretch();
        window.resize(500, 300);
        window.show();
        check_in = Add(L"sp.cmd.checkIn", handler, L"Check &In");
        check_out = Add(L"sp.cmd.checkOut", handler, L"Check &Out");
    }
    void ShowSpan(DWORD kind, const wchar_t* text, const std::vector<DWORD>& buttons) {
        EXPECT_EQ(bar->BeginUpdate(), S_OK);
        EXPECT_EQ(bar->AddSpan(kind, 0), S_OK);
        EXPECT_EQ(bar->ClearSpan(kind), S_OK);
        EXPECT_EQ(bar->SetSpanText(kind, text), S_OK);
        for (const DWORD id : buttons) {
            EXPECT_EQ(bar->AddSpanCommand(kind, id, -1, 0, 0), S_OK);
        }
        EXPECT_EQ(bar->EndUpdate(), S_OK);
    }
    std::vector<InfoBarStrip*> Strips() {
        std::vector<InfoBarStrip*> strips;
        for (QObject* const child : widget->children()) {
            auto* const strip = dynamic_cast<InfoBarStrip*>(child);
            if (strip != nullptr && strip->isVisible()) {
                strips.push_back(strip);
            }
        }
        std::sort(strips.begin(), strips.end(), [](const QWidget* a, const QWidget* b) { return a->y() < b->y(); });
        return strips;
    }
    static QString TextOf(const InfoBarStrip* strip) { return strip->findChild<QLabel*>()->accessibleName(); }
    static std::vector<QPushButton*> ButtonsOf(const InfoBarStrip* strip) {
        std::vector<QPushButton*> buttons;
        for (QPushButton* const button : strip->findChildren<QPushButton*>()) {
            if (button->isVisible()) {
                buttons.push_back(button);
            }
        }
        std::sort(buttons.begin(), buttons.end(), [](const QWidget* a, const QWidget* b) { return a->x() < b->x(); });
        return buttons;
    }
    static std::vector<std::string> TextsOf(const std::vector<QPushButton*>& buttons) {
        std::vector<std::string> texts;
        for (const QPushButton* const button : buttons) {
            texts.push_back(button->text().toStdString());
        }
        return texts;
    }

    QWidget window;
    const ComPtr<InfoBar> bar = MakeObject<InfoBar>();
    CommandActions* actions = nullptr;
    InfoBarWidget* widget = nullptr;
    DWORD check_in = 0;
    DWORD check_out = 0;
};

TEST_F(Bar, ComesAndGoesWithItsCause) {
    EXPECT_FALSE(widget->isVisible());
    ShowSpan(sharepoint, L"The file is checked out to you.", {check_in, check_out});
    Turn();
    ASSERT_EQ(Strips().size(), 1u);
    const InfoBarStrip* const strip = Strips().front();
    EXPECT_EQ(TextOf(strip), "The file is checked out to you.");
    EXPECT_EQ(strip->accessibleName(), "SharePoint Document");
    EXPECT_EQ(strip->accessibleDescription(), "The file is checked out to you.");
    EXPECT_EQ(strip->toolTip(), "<span>About &lt;it&gt;</span>");
    EXPECT_EQ(TextsOf(ButtonsOf(strip)), (std::vector<std::string>{"Check In", "Check Out"}));
    const QImage picture = window.grab().toImage();
    EXPECT_EQ(QColor(picture.pixel(2, 2)), QColor(0x81, 0xC2, 0xF1));
    EXPECT_EQ(bar->RemoveSpan(sharepoint), S_OK);
    EXPECT_FALSE(widget->isVisible());
    Turn();
    EXPECT_TRUE(widget->findChildren<QFrame*>().empty());
}

TEST_F(Bar, ShowsWhatStandsAtTheEndOfTheOuterUpdate) {
    EXPECT_EQ(bar->BeginUpdate(), S_OK);
    ShowSpan(sharepoint, L"in the middle", {check_in});
    EXPECT_FALSE(widget->isVisible());
    ShowSpan(sharepoint, L"at the end", {check_out});
    EXPECT_FALSE(widget->isVisible());
    EXPECT_EQ(bar->EndUpdate(), S_OK);
    ASSERT_EQ(Strips().size(), 1u);
    EXPECT_EQ(TextOf(Strips().front()), "at the end");
    EXPECT_EQ(TextsOf(ButtonsOf(Strips().front())), (std::vector<std::string>{"Check Out"}));
}

TEST_F(Bar, KeepsTheOrderOfItsSpansAndTheFocusInThoseThatStay) {
    ShowSpan(other, L"one", {});
    ShowSpan(sharepoint, L"two", {check_in});
    ShowSpan(7, L"three", {});
    Turn();
    QPushButton* const button = ButtonsOf(Strips()[1]).front();
    ASSERT_EQ(Strips().size(), 3u);
    ShowSpan(other, L"one more", {check_out});
    EXPECT_EQ(bar->RemoveSpan(7), S_OK);
    ShowSpan(sharepoint, L"two", {check_in});
    Turn();
    ASSERT_EQ(Strips().size(), 2u);
    EXPECT_EQ(TextOf(Strips()[0]), "one more");
    EXPECT_EQ(TextOf(Strips()[1]), "two");
    EXPECT_EQ(ButtonsOf(Strips()[1]).front(), button) << "the same button as before";
}

TEST_F(Bar, ShowsTextsLetterByLetterAndWrapsThem) {
    const std::wstring name = std::wstring(255, L'x') + L" \u05E9\u05DC\u05D5\u05DD \U0001F600";
    const std::wstring text = L"The file is checked out to <b>" + name + L"</b> & others.";
    ShowSpan(sharepoint, text.c_str(), {check_in});
    Turn();
    const QLabel* const label = Strips().front()->findChild<QLabel*>();
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_EQ(label->accessibleName().toStdWString(), text);
    EXPECT_EQ(label->text().remove(QChar(0x200B)).toStdWString(), text);
    EXPECT_LE(window.minimumSizeHint().width(), 500) << "a long name doesn't widen the window";
    EXPECT_GT(label->height(), 3 * label->fontMetrics().height());
    EXPECT_LE(ButtonsOf(Strips().front()).front()->geometry().right(), window.width());
}

TEST_F(Bar, RunsCommandsForItsOwnViewAndFollowsTheirStates) {
    ShowSpan(sharepoint, L"text", {check_in});
    Turn();
    QPushButton* const button = ButtonsOf(Strips().front()).front();
    ComPtr<KOV::IUIX_Obj> used_in;
    handler->on_execute = [&](KOV::IUIX_Obj* object) { used_in = object; };
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(used_in.Get(), owner.Get());
    handler->on_state = [](KOV::IUIX_Obj*, DWORD* out_state) {
        *out_state = KOV::UIX_CmdState_Disabled;
        return S_OK;
    };
    EXPECT_EQ(commands->UpdateCmdState(1, 0), S_OK);
    Turn();
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(commands->Delete(check_in), S_OK);
    EXPECT_FALSE(button->isVisible());
}

TEST_F(Bar, TakesACommandThatChangesTheBarWhileItsButtonIsPressed) {
    ShowSpan(sharepoint, L"not checked out", {check_out});
    Turn();
    handler->on_execute = [&](KOV::IUIX_Obj*) {
        ShowSpan(sharepoint, L"checked out to you", {check_in});
        EXPECT_EQ(bar->RemoveSpan(sharepoint), S_OK);
        ShowSpan(sharepoint, L"again", {check_in});
    };
    QTest::mouseClick(ButtonsOf(Strips().front()).front(), Qt::LeftButton);
    Turn();
    ASSERT_EQ(Strips().size(), 1u);
    EXPECT_EQ(TextOf(Strips().front()), "again");
    EXPECT_EQ(TextsOf(ButtonsOf(Strips().front())), (std::vector<std::string>{"Check In"}));
}

TEST_F(Bar, ShowsChangesOfOtherThreadsAtTheNextTurn) {
    std::thread([&] { ShowSpan(sharepoint, L"from afar", {}); }).join();
    EXPECT_FALSE(widget->isVisible());
    Turn();
    EXPECT_TRUE(widget->isVisible());
    std::thread([&] { ShowSpan(sharepoint, L"too late", {}); }).join();
    delete widget;
    Turn();
    ShowSpan(sharepoint, L"to nobody", {});
}

} // namespace
