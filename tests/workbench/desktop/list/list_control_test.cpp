#include <gtest/gtest.h>

#include <functional>

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>
#include <QVBoxLayout>

#include "host/tools/window_bases.h"
#include "support/unanswered.h"
#include "workbench/desktop/list/list_control.h"
#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/theme/icons.h"

namespace {

using Heard = std::vector<std::string>;
using namespace KOV::UIX_ListColumnStyle;

/// Rows with a name and its length, over which a test lays what it wants to happen in a callback.
class Rows final : public KOV::uiListCallbacksBase {
public:
    std::function<std::wstring(LONG row)> name = [](LONG row) { return L"name " + std::to_wstring(row); };
    std::function<void(LONG row, LONG confirmed)> on_click = [](LONG, LONG) {};
    std::function<void(LONG column, LONG button)> on_header = [](LONG, LONG) {};
    ComPtr<KOV::IKOV_MultiSizeImage> image;
    double opacity = 1;
    int questions = 0;
    LONG last_row = 0;

private:
    HRESULT List_OnGetItemText(KOV::IUIX_List*, const KOV::UiListItemId* item, LPCWSTR* out_text, ULONG* out_length,
                               DWORD* out_flags) override {
        ++questions;
        last_row = std::max(last_row, item->nItem);
        m_text = item->nColumn == 0 ? name(item->nItem) : std::to_wstring(name(item->nItem).size());
        *out_text = m_text.c_str();
        *out_length = static_cast<ULONG>(m_text.size());
        *out_flags = item->nColumn == 0 ? KOV::UIX_DrawText_Ellipsis : KOV::UIX_DrawText_Right;
        return S_OK;
    }
    HRESULT List_OnGetItemImageSize(KOV::IUIX_List*, const KOV::UiListItemId* item, SIZE* out_size) override {
        *out_size = {16, 16};
        return item->nColumn == 0 && !image.IsNull() ? S_OK : S_FALSE;
    }
    HRESULT List_OnGetItemImage(KOV::IUIX_List*, const KOV::UiListItemId*, KOV::IKOV_MultiSizeImage** out_image,
                                double* out_opacity) override {
        image.CopyTo(out_image);
        *out_opacity = opacity;
        return S_OK;
    }
    HRESULT List_OnItemClick(KOV::IUIX_List*, const KOV::UiListItemId* item, DWORD, DWORD, LONG confirmed) override {
        on_click(item->nItem, confirmed);
        return S_OK;
    }
    HRESULT List_OnHdrItemClicked(KOV::IUIX_List*, LONG column, LONG button) override {
        on_header(column, button);
        return S_OK;
    }

    std::wstring m_text;
};

class Window final : public KOV::uiCoObjImplT<Window, KOV::IUIX_ObjImpl> {
public:
    std::function<void(const KOV::UiNotification&)> on_notification;

private:
    HRESULT OnEvent(KOV::UiEvent* io_event) override {
        if (io_event->code == KOV::UiEvent_Notification) {
            on_notification(*reinterpret_cast<const KOV::UiNotification*>(io_event->parameter));
        }
        return S_OK;
    }
};

class List : public testing::Test {
protected:
    void SetUp() override {
        window_implementation = MakeObject<Window>();
        window_implementation->on_notification = [this](const KOV::UiNotification& notification) {
            EXPECT_EQ(notification.control_id, 7u);
            heard.push_back("kind " + std::to_string(notification.kind));
            on_selection();
        };
        core = WindowCore::Create(window, {host, nullptr});
        core->SetImplementation(window_implementation);
        list = MakeObject<ListControl>(window);
        list->Adopt(core, nullptr, 7);
        (void)list->SetStyle(list_style_multi_select, ~0u);
        auto* const layout = new QVBoxLayout(window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(list->Widget());
        window->resize(600, 300);
        window->show();
        EXPECT_EQ(list->InsertColumn(-1, 400, L"Name", 0, L"The <b>name</b>", 0, 0), S_OK);
        EXPECT_EQ(list->InsertColumn(-1, 150, L"Length", 0, L"", 0, 0), S_OK);
        rows = MakeObject<Rows>();
        rows->on_click = [this](LONG row, LONG confirmed) {
            heard.push_back("click " + std::to_string(row) + (confirmed != 0 ? " confirmed" : ""));
        };
        rows->on_header = [this](LONG column, LONG button) {
            heard.push_back("header " + std::to_string(column) + " by " + std::to_string(button));
        };
        EXPECT_EQ(list->put_Callbacks(rows), S_OK);
    }
    void TearDown() override {
        if (core != nullptr) {
            core->Destroy();
        }
        list.Release();
        delete window;
    }

    void Fill(int count) {
        for (int row = 0; row < count; ++row) {
            ASSERT_EQ(list->InsertItem(-1, 0, 0), S_OK);
        }
        QCoreApplication::processEvents();
    }
    QTreeView& View() { return *static_cast<QTreeView*>(list->Widget()); }
    QPoint PointOf(int row) { return View().visualRect(View().model()->index(row, 0)).center(); }
    void Press(int row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(View().viewport(), Qt::LeftButton, modifiers, PointOf(row));
    }
    void Release(int row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseRelease(View().viewport(), Qt::LeftButton, modifiers, PointOf(row));
    }
    void Click(int row, Qt::KeyboardModifiers modifiers = {}) {
        Press(row, modifiers);
        Release(row, modifiers);
    }
    /// The second press and its release, as they follow a click.
    void ClickAgain(int row) {
        QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, PointOf(row));
        Release(row);
    }
    void DoubleClick(int row) {
        Click(row);
        ClickAgain(row);
    }
    void ClickHeader(int column, Qt::MouseButton button = Qt::LeftButton) {
        QHeaderView& header = *View().header();
        QTest::mouseClick(header.viewport(), button, {},
                          QPoint(header.sectionViewportPosition(column) + header.sectionSize(column) / 2, header.height() / 2));
    }
    std::vector<LONG> Selected() {
        std::vector<LONG> selected;
        LONGLONG position = -17; // what stands there before the first question doesn't matter
        LONG row = 0;
        for (HRESULT found = list->GetFirstSelItem(&position, &row); found == S_OK;
             found = list->GetNextSelItem(&position, &row)) {
            selected.push_back(row);
        }
        return selected;
    }
    Heard TakeHeard() { return std::exchange(heard, {}); }

    const ComPtr<UnansweredHost> host = MakeObject<UnansweredHost>();
    QWidget* window = new QWidget;
    std::shared_ptr<WindowCore> core;
    ComPtr<Window> window_implementation;
    ComPtr<ListControl> list;
    ComPtr<Rows> rows;
    Heard heard;
    std::function<void()> on_selection = [] {};
};

TEST_F(List, AsksOnlyForRowsThatShowHoweverManyThereAre) {
    rows->name = [](LONG row) { return std::to_wstring(row); };
    Fill(100'000);
    View().grab();
    EXPECT_EQ(View().model()->rowCount(), 100'000);
    EXPECT_LT(rows->last_row, 40);
    EXPECT_LT(rows->questions, 1000);
    View().scrollToBottom();
    View().grab();
    EXPECT_EQ(rows->last_row, 99'999);
}

TEST_F(List, TellsViewsOfRowsThatWereAddedOneByOneAtOnce) {
    int insertions = 0;
    QObject::connect(View().model(), &QAbstractItemModel::rowsInserted, &View(), [&] { ++insertions; });
    Fill(1000);
    EXPECT_EQ(insertions, 1);
    // Rows in front of those that wait, and a question in between.
    EXPECT_EQ(list->InsertItem(1000, 0, 0), S_OK);
    EXPECT_EQ(list->InsertItem(0, 0, 0), S_OK);
    EXPECT_EQ(list->InsertItem(1, 0, 0), S_OK);
    EXPECT_EQ(list->InsertItem(1004, 0, 0), E_INVALIDARG);
    EXPECT_EQ(list->InsertItem(-2, 0, 0), E_INVALIDARG);
    EXPECT_EQ(Selected(), (std::vector<LONG>{}));
    EXPECT_EQ(View().model()->rowCount(), 1003);
    EXPECT_EQ(insertions, 3);
}

TEST_F(List, ASelectionMovesWithRowsThatComeBeforeIt) {
    Fill(5);
    Click(2);
    EXPECT_EQ(list->InsertItem(0, 0, 0), S_OK);
    EXPECT_EQ(Selected(), (std::vector<LONG>{3}));
}

TEST_F(List, AClickTellsOfTheSelectionFirstAndOnlyWhenItChanged) {
    Fill(20);
    Click(3);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click 3"}));
    Click(3);
    EXPECT_EQ(TakeHeard(), (Heard{"click 3"}));
    Click(5, Qt::ControlModifier);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click 5"}));
    EXPECT_EQ(Selected(), (std::vector<LONG>{3, 5}));
}

TEST_F(List, TellsOfAGestureOnce) {
    Fill(20);
    Press(1);
    for (int row = 2; row <= 6; ++row) {
        QTest::mouseMove(View().viewport(), PointOf(row));
        QMouseEvent move(QEvent::MouseMove, PointOf(row), View().viewport()->mapToGlobal(PointOf(row)), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(View().viewport(), &move);
    }
    EXPECT_EQ(TakeHeard(), (Heard{}));
    EXPECT_EQ(Selected(), (std::vector<LONG>{1, 2, 3, 4, 5, 6})) << "asked in the middle of the gesture";
    Release(6);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6"})) << "no click: pressed on another row than released";
    QTest::keyClick(&View(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6"}));
    EXPECT_EQ(Selected().size(), 20u);
    QTest::keyClick(&View(), Qt::Key_Home);
    QTest::keyClick(&View(), Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "kind 6"}));
    EXPECT_EQ(Selected(), (std::vector<LONG>{0, 1}));
    QTest::keyClick(&View(), Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(TakeHeard(), (Heard{})) << "the selection is the same";
}

TEST_F(List, IsEnteredByTheKeyboardAtTheRowWithTheFocus) {
    Fill(2);
    window->show();
    window->activateWindow();
    View().setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return View().hasFocus(); }));
    list->DeleteAllItems();
    Fill(1);
    EXPECT_EQ(View().currentIndex().row(), 0) << "else nothing shows the focus";
    EXPECT_TRUE(Selected().empty());
    QTest::keyClick(&View(), Qt::Key_Down);
    EXPECT_EQ(Selected(), (std::vector<LONG>{0})) << "the only row there is";
    QTest::keyClick(&View(), Qt::Key_Space, Qt::ControlModifier);
    ASSERT_TRUE(Selected().empty());
    Fill(1);
    QTest::keyClick(&View(), Qt::Key_N);
    EXPECT_EQ(Selected(), (std::vector<LONG>{0})) << "the first of two that begin like this";
    QTest::keyClick(&View(), Qt::Key_Down);
    EXPECT_EQ(Selected(), (std::vector<LONG>{1}));
}

TEST_F(List, GivesManySelectedRowsInAscendingOrder) {
    Fill(100'000);
    QItemSelection every_third;
    std::vector<LONG> expected;
    for (int row = 99'999; row >= 0; row -= 3) {
        every_third.select(View().model()->index(row, 0), View().model()->index(row, 1));
        expected.insert(expected.begin(), row);
    }
    View().selectionModel()->select(every_third, QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(Selected(), expected);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6"}));
}

TEST_F(List, AWalkGoesOnAfterTheRowOfItsPosition) {
    Fill(10);
    for (const int row : {8, 2, 5}) {
        Click(row, Qt::ControlModifier);
    }
    LONGLONG position = 0;
    LONG row = 0;
    EXPECT_EQ(list->GetFirstSelItem(&position, &row), S_OK);
    LONGLONG other = 0;
    LONG first = 0;
    EXPECT_EQ(list->GetFirstSelItem(&other, &first), S_OK);
    EXPECT_EQ(list->GetNextSelItem(&position, &row), S_OK);
    EXPECT_EQ(std::pair(first, row), std::pair(LONG{2}, LONG{5})) << "two walks at once";
    EXPECT_EQ(list->GetNextSelItem(&position, nullptr), E_POINTER);
    EXPECT_EQ(list->GetFirstSelItem(nullptr, &row), E_POINTER);
}

TEST_F(List, ADoubleClickEndsWithAConfirmedOne) {
    Fill(20);
    DoubleClick(4);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click 4", "click 4 confirmed"}));
}

TEST_F(List, TwoClicksOnDifferentItemsConfirmNothing) {
    Fill(20);
    Click(4);
    // What was clicked first is gone when the second press comes.
    (void)list->DeleteAllItems();
    Fill(20);
    (void)TakeHeard();
    ClickAgain(4);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click 4"}));
}

TEST_F(List, AClickBesideTheRowsSelectsNothing) {
    Fill(2);
    Click(1);
    (void)TakeHeard();
    QTest::mouseClick(View().viewport(), Qt::LeftButton, {}, QPoint(20, View().viewport()->height() - 3));
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click -1"}));
    QTest::mouseDClick(View().viewport(), Qt::LeftButton, {}, QPoint(20, View().viewport()->height() - 3));
    QTest::mouseRelease(View().viewport(), Qt::LeftButton, {}, QPoint(20, View().viewport()->height() - 3));
    EXPECT_EQ(TakeHeard(), (Heard{"click -1"}));
}

TEST_F(List, OtherButtonsClickNothing) {
    Fill(5);
    QTest::mouseClick(View().viewport(), Qt::RightButton, {}, PointOf(1));
    QTest::mouseClick(View().viewport(), Qt::MiddleButton, {}, PointOf(1));
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6"})) << "the right button selects, as a menu would need it";
    ClickHeader(0, Qt::RightButton);
    EXPECT_EQ(TakeHeard(), (Heard{}));
}

TEST_F(List, AClickOnAHeadClearsTheSelectionBeforeTheRowsChangeTheirPlaces) {
    Fill(5);
    QTest::keyClick(&View(), Qt::Key_A, Qt::ControlModifier);
    (void)TakeHeard();
    std::vector<LONG> selected{-1};
    rows->on_header = [&](LONG column, LONG button) {
        heard.push_back("header " + std::to_string(column) + " by " + std::to_string(button));
        selected = Selected();
    };
    ClickHeader(1);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "header 1 by 1"}));
    EXPECT_EQ(selected, (std::vector<LONG>{}));
    ClickHeader(0);
    EXPECT_EQ(TakeHeard(), (Heard{"header 0 by 1"}));
}

TEST_F(List, ShowsTheSortingThatTheColumnsStylesName) {
    struct Row {
        DWORD style_of_name;
        DWORD style_of_length;
        int shown;
        Qt::SortOrder order; // whose arrow Qt draws
    };
    const Row table[] = {
        {UIX_ListColumnStyle_IconUp, 0, 0, Qt::DescendingOrder},
        {UIX_ListColumnStyle_IconDown, 0, 0, Qt::AscendingOrder},
        {0, UIX_ListColumnStyle_IconUp, 1, Qt::DescendingOrder},
        {0, 0, -1, Qt::AscendingOrder},
    };
    constexpr DWORD both = UIX_ListColumnStyle_IconUp | UIX_ListColumnStyle_IconDown;
    for (const Row& row : table) {
        EXPECT_EQ(list->SetColumn(0, 16, nullptr, nullptr, nullptr, 0, row.style_of_name, both, 0), S_OK);
        EXPECT_EQ(list->SetColumn(1, 16, nullptr, nullptr, nullptr, 0, row.style_of_length, both, 0), S_OK);
        ClickHeader(1); // by which Qt's header turns its own arrow
        EXPECT_EQ(View().header()->isSortIndicatorShown(), row.shown >= 0);
        if (row.shown >= 0) {
            EXPECT_EQ(View().header()->sortIndicatorSection(), row.shown);
            EXPECT_EQ(View().header()->sortIndicatorOrder(), row.order);
        }
        DWORD style = 77;
        EXPECT_EQ(list->GetColumnStyle(0, &style), S_OK);
        EXPECT_EQ(style, row.style_of_name);
    }
    DWORD style = 77;
    EXPECT_EQ(list->GetColumnStyle(2, &style), E_INVALIDARG);
    EXPECT_EQ(style, 0u);
    EXPECT_EQ(list->SetColumn(-1, 16, nullptr, nullptr, nullptr, 0, 1, 1, 0), E_INVALIDARG);
    EXPECT_EQ(list->SetColumn(0, 4, L"Other", nullptr, nullptr, 0, 0, 0, 0), E_NOTIMPL);
    // Bits outside the mask stay.
    EXPECT_EQ(list->SetColumn(0, 16, nullptr, nullptr, nullptr, 0, both, UIX_ListColumnStyle_IconUp, 0), S_OK);
    EXPECT_EQ(list->GetColumnStyle(0, &style), S_OK);
    EXPECT_EQ(style, UIX_ListColumnStyle_IconUp);
}

TEST_F(List, DeletingAllItemsTellsOnlyOfASelectionThatWas) {
    Fill(5);
    EXPECT_EQ(list->DeleteAllItems(), S_OK);
    EXPECT_EQ(TakeHeard(), (Heard{}));
    Fill(5);
    Click(1);
    (void)TakeHeard();
    std::vector<LONG> selected{-1};
    on_selection = [&] { selected = Selected(); };
    EXPECT_EQ(list->DeleteAllItems(), S_OK);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6"}));
    EXPECT_EQ(selected, (std::vector<LONG>{}));
    // Rows that still wait go too.
    EXPECT_EQ(list->InsertItem(-1, 0, 0), S_OK);
    EXPECT_EQ(list->DeleteAllItems(), S_OK);
    QCoreApplication::processEvents();
    EXPECT_EQ(View().model()->rowCount(), 0);
}

TEST_F(List, ADisabledListTellsNothing) {
    Fill(5);
    Click(1);
    (void)TakeHeard();
    list->Widget()->setEnabled(false);
    EXPECT_EQ(list->DeleteAllItems(), S_OK);
    EXPECT_EQ(TakeHeard(), (Heard{}));
}

TEST_F(List, LeavesEnterAndEscapeToTheWindow) {
    struct Parent : QWidget {
        std::vector<int> keys;
        void keyPressEvent(QKeyEvent* event) override { keys.push_back(event->key()); }
    };
    Parent parent;
    list->Widget()->setParent(&parent);
    parent.show();
    Fill(3);
    Click(1);
    (void)TakeHeard();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        QTest::keyClick(&View(), key);
    }
    EXPECT_EQ(parent.keys, (std::vector<int>{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}));
    EXPECT_EQ(TakeHeard(), (Heard{}));
    list->Widget()->setParent(window);
}

TEST_F(List, FindsRowsByTheStartOfTheirNames) {
    QApplication::setKeyboardInputInterval(60'000);
    const std::wstring names[] = {L"Alpha", L"beta", L"Bread", L"bark", L"\u05D0\u05D1", L"<b>old</b>"};
    rows->name = [&](LONG row) { return names[row]; };
    Fill(6);
    struct Row {
        const char16_t* typed;
        LONG found;
    };
    const Row table[] = {{u"BR", 2}, {u"b", 1}, {u"bbb", 3}, {u"ba", 3}, {u"<b", 5}, {u"\u05D0", 4}, {u"x", 0}, {u" ", 0}};
    for (const Row& row : table) {
        View().setCurrentIndex(View().model()->index(0, 0));
        for (const char16_t* letter = row.typed; *letter != 0; ++letter) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(QChar(*letter)));
            QApplication::sendEvent(&View(), &press);
        }
        EXPECT_EQ(Selected(), (std::vector<LONG>{row.found})) << QString::fromUtf16(row.typed).toStdString();
    }
}

TEST_F(List, ColumnsKeepTheirSharesOfTheWidth) {
    QHeaderView& header = *View().header();
    EXPECT_EQ(list->InsertColumn(-1, 48, L"Last", 0, L"", 0, 0), S_OK);
    EXPECT_EQ(header.sectionSize(0), 400);
    EXPECT_EQ(header.sectionSize(1), 150);
    EXPECT_EQ(header.sectionSize(2), View().viewport()->width() - 550) << "the last one takes what is left";
    Fill(1000); // with a scroll bar beside the columns
    EXPECT_LE(header.length(), View().viewport()->width());
    const double before = 400.0 / 598;
    window->resize(1200, 300);
    QCoreApplication::processEvents();
    EXPECT_NEAR(1.0 * header.sectionSize(0) / View().viewport()->width(), before, 0.005);
    header.resizeSection(0, 300); // as a drag does
    window->resize(600, 300);
    QCoreApplication::processEvents();
    EXPECT_NEAR(header.sectionSize(0), 150, 2);
    EXPECT_FALSE(View().horizontalScrollBar()->isVisible());
}

TEST_F(List, ATextIsDrawnOnOneLineAndLetterByLetter) {
    const std::wstring names[] = {L"<h1>big</h1>\nsecond", L"\U0001F600 \u05E9\u05DC\u05D5\u05DD.pdf", std::wstring(255, L'w')};
    rows->name = [&](LONG row) { return names[row]; };
    Fill(3);
    const QAbstractItemModel& model = *View().model();
    EXPECT_EQ(model.data(model.index(0, 0)).toString(), "<h1>big</h1> second");
    EXPECT_EQ(model.data(model.index(1, 0)).toString().toStdWString(), names[1]);
    View().grab();
    EXPECT_EQ(View().visualRect(model.index(0, 0)).height(), View().visualRect(model.index(2, 0)).height());
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).toString(), "<span>The &lt;b&gt;name&lt;/b&gt;</span>");
}

TEST_F(List, DrawsImagesWithTheirOpacityAndTextsOnTheirSide) {
    rows->name = [](LONG) { return std::wstring(); };
    rows->image = MakeImage(GetIcon("error"));
    Fill(1);
    const auto redness = [&] {
        const QImage picture = View().viewport()->grab(View().visualRect(View().model()->index(0, 0))).toImage();
        int most = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < 40; ++x) {
                most = std::max(most, qRed(picture.pixel(x, y)) - qBlue(picture.pixel(x, y)));
            }
        }
        return most;
    };
    const int full = redness();
    rows->opacity = 0.25;
    EXPECT_EQ(list->RedrawItems(0, 1, 0), S_OK);
    const int faded = redness();
    EXPECT_GT(full, 100);
    EXPECT_NEAR(faded, full / 4, 12);
}

TEST_F(List, AsksAgainForWhatShowsWhenItIsToldSo) {
    Fill(100'000);
    const auto questions_of = [&](auto&& change) {
        QCoreApplication::processEvents();
        rows->questions = 0;
        change();
        QCoreApplication::processEvents();
        return rows->questions;
    };
    (void)questions_of([&] { View().grab(); }); // the rows that came are laid out
    EXPECT_EQ(questions_of([] {}), 0);
    const int of_redraw = questions_of([&] { EXPECT_EQ(list->RedrawItems(0, 100'000, 0), S_OK); });
    EXPECT_GT(of_redraw, 0);
    EXPECT_LT(of_redraw, 200);
    EXPECT_GT(questions_of([&] { EXPECT_EQ(list->put_Callbacks(rows), S_OK); }), 0);
}

TEST_F(List, HoldsItsCallbacksDuringACall) {
    Fill(3);
    const ComPtr<Rows> others = MakeObject<Rows>();
    others->name = [](LONG) { return L"other"; };
    bool has_returned = false;
    Rows* const bare = rows;
    rows->on_click = [&, bare](LONG, LONG) {
        EXPECT_EQ(list->put_Callbacks(others), S_OK);
        bare->questions = 0; // still there
        has_returned = true;
    };
    rows.Release();
    Click(1);
    EXPECT_TRUE(has_returned);
    EXPECT_EQ(View().model()->data(View().model()->index(1, 0)).toString(), "other");
    EXPECT_EQ(list->put_Callbacks(nullptr), S_OK);
    EXPECT_EQ(View().model()->data(View().model()->index(1, 0)).toString(), "");
    View().grab();
}

TEST_F(List, ACallbackMayEmptyAndRefillTheList) {
    Fill(30);
    rows->on_click = [&](LONG row, LONG confirmed) {
        heard.push_back("click " + std::to_string(row));
        if (confirmed != 0) {
            EXPECT_EQ(list->DeleteAllItems(), S_OK);
            Fill(2);
        }
    };
    DoubleClick(20 % 8);
    EXPECT_EQ(TakeHeard(), (Heard{"kind 6", "click 4", "click 4", "kind 6"}));
    EXPECT_EQ(View().model()->rowCount(), 2);
    EXPECT_EQ(Selected(), (std::vector<LONG>{}));
}

/// Where a module may end the window with the list in it.
enum class Moment { selection, click, confirmed, header, key };

class ListThatEnds : public List, public testing::WithParamInterface<std::tuple<Moment, bool>> {};

TEST_P(ListThatEnds, InACallbackOfItsOwn) {
    const auto [moment, is_at_once] = GetParam();
    Fill(5);
    const auto end = [&, is_at_once = is_at_once] {
        core->Destroy();
        list.Release();
        rows.Release();
        if (is_at_once) {
            delete std::exchange(window, nullptr);
        } else {
            std::exchange(window, nullptr)->deleteLater();
        }
    };
    const auto expect_end = [&](Moment here) {
        if (here == moment && window != nullptr) {
            heard.push_back("end");
            end();
        }
    };
    on_selection = [&] { expect_end(moment == Moment::key ? Moment::key : Moment::selection); };
    rows->on_click = [&](LONG, LONG confirmed) { expect_end(confirmed != 0 ? Moment::confirmed : Moment::click); };
    rows->on_header = [&](LONG, LONG) { expect_end(Moment::header); };
    switch (moment) {
    case Moment::header:
        ClickHeader(1);
        break;
    case Moment::key:
        QTest::keyClick(&View(), Qt::Key_Down);
        break;
    case Moment::confirmed:
        DoubleClick(2);
        break;
    default:
        Click(2);
        break;
    }
    EXPECT_EQ(heard.back(), "end");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(list.IsNull());
}

INSTANTIATE_TEST_SUITE_P(Moments, ListThatEnds,
                         testing::Combine(testing::Values(Moment::selection, Moment::click, Moment::confirmed, Moment::header,
                                                          Moment::key),
                                          testing::Bool()));

TEST_F(List, FailsOnceItsWidgetIsGone) {
    Fill(3);
    delete std::exchange(window, nullptr);
    LONGLONG position = 0;
    LONG row = 0;
    DWORD style = 0;
    EXPECT_EQ(list->InsertItem(-1, 0, 0), window_is_gone);
    EXPECT_EQ(list->InsertColumn(-1, 10, L"", 0, L"", 0, 0), window_is_gone);
    EXPECT_EQ(list->SetColumn(0, 16, nullptr, nullptr, nullptr, 0, 1, 1, 0), window_is_gone);
    EXPECT_EQ(list->GetColumnStyle(0, &style), window_is_gone);
    EXPECT_EQ(list->DeleteAllItems(), window_is_gone);
    EXPECT_EQ(list->RedrawItems(0, 3, 0), window_is_gone);
    EXPECT_EQ(list->GetFirstSelItem(&position, &row), window_is_gone);
    EXPECT_EQ(list->put_Callbacks(nullptr), window_is_gone);
}

} // namespace
