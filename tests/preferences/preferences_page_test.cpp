#include "preferences/preferences_page.h"

#include "platform/text.h"
#include "preferences/preferences_fixture.h"

namespace {

constexpr const wchar_t* layout = L"DlgAppPrefs.SharePoint.Name";

struct Page : PreferencesWindows {
    Page() {
        HaveControls(layout, {L"cb.whenOpenDocumentCheckoutNone", L"check.whenOpenDocumentCheckOutNoneDisableEditing",
                              L"check.whenOpenCheckOutOtherShowWarning", L"check.whenOpenDocumentCheckOutOtherDisableEditing",
                              L"check.whenOpenNoPermissionsShowWarning", L"check.whenOpenNoPermissionsDisableEditing",
                              L"cb.whenSaveConflict", L"cb.afterSave", L"cb.closeNeedCheckIn", L"cb.closeDoesNotNeedCheckIn",
                              L"cb.defaultCheckInType", L"ed.defaultCheckInComment", L"btn.resetPreferences",
                              L"btn.advancedPreferences"});
    }
    ~Page() override {
        if (!ui.IsNull()) {
            ui->Destroy();
        }
    }

    /// The host shows the page for the first time.
    void Show() {
        page = Ui::CreatePreferencesPage(module.plugin);
        ASSERT_EQ(page->OnCreateNewUI(nullptr, this, nullptr, &ui), S_OK);
    }
    ScriptedControl& Control(const wchar_t* name) { return uix->controls[layout].at(name); }
    void Choose(const wchar_t* combo, LONGLONG value) {
        LONG ignored = 0;
        EXPECT_EQ(MakeObject<ScriptedControlObject>(Control(combo))->SelectItemByParam(value, &ignored), S_OK) << value;
        Commit(combo);
    }
    void Commit(const wchar_t* control) { EXPECT_NE(uix->window->Notify(KOV::UiNotify_Committed, control), 0u); }
    /// The value of the selected item; nothing without one.
    std::optional<LONGLONG> Chosen(const wchar_t* combo) {
        const ScriptedControl& control = Control(combo);
        return control.selected < 0 ? std::nullopt
                                    : std::optional(control.items[static_cast<std::size_t>(control.selected)].parameter);
    }

    ComPtr<KOV::IUIX_PropSheetPage> page;
    ComPtr<KOV::IUIX_Obj> ui;
};

struct ComboRow {
    const wchar_t* control;
    const wchar_t* texts; ///< what all keys of the combo begin with
    std::uint32_t Preferences::*field;
    std::vector<ComboItem> items; ///< the end of the key, and the value
};

const ComboRow combo_rows[] = {
    {L"cb.whenOpenDocumentCheckoutNone",
     L"$$$.sp.cbitem.whenOpenDocumentCheckoutNone.",
     &Preferences::on_open_checked_out_none,
     {{L"open", 0}, {L"checkOut", 8}, {L"ask", 1}}},
    {L"cb.whenSaveConflict",
     L"$$$.sp.cbitem.whenSaveConflict.",
     &Preferences::on_save_conflict,
     {{L"cancel", 0}, {L"overwrite", 32}, {L"ask", 1}}},
    {L"cb.afterSave",
     L"$$$.sp.cbitem.afterSave.",
     &Preferences::on_after_save,
     {{L"checkIn", 16}, {L"checkInCheckOut", 24}, {L"keepCheckOut", 8}, {L"ask", 1}}},
    {L"cb.closeNeedCheckIn",
     L"$$$.sp.cbitem.closeNeedCheckIn.",
     &Preferences::on_close_checked_out_need_check_in,
     {{L"checkIn", 16}, {L"checkInCheckOut", 24}, {L"keepCheckOut", 8}, {L"ask", 1}}},
    {L"cb.closeDoesNotNeedCheckIn",
     L"$$$.sp.cbitem.closeDoesNotNeedCheckIn.",
     &Preferences::on_close_checked_out_no_need_check_in,
     {{L"discardCheckOut", 0}, {L"keepCheckOut", 8}, {L"ask", 1}}},
    {L"cb.defaultCheckInType",
     L"$$$.sp.cbitem.defaultCheckInType.",
     &Preferences::default_check_in_type,
     {{L"minor", 0}, {L"major", 1}, {L"overwrite", 2}}},
};

TEST_F(Page, EachChoiceIsShownForItsValueAndWrittenThroughAtOnce) {
    Show();
    for (const ComboRow& row : combo_rows) {
        SCOPED_TRACE(Utf8FromWide(row.control));
        const ScriptedControl& control = Control(row.control);
        ASSERT_EQ(control.items.size(), row.items.size());
        for (std::size_t i = 0; i < row.items.size(); ++i) {
            EXPECT_EQ(control.items[i].text, row.texts + row.items[i].text);
            ASSERT_EQ(control.items[i].parameter, row.items[i].parameter);
            Choose(row.control, row.items[i].parameter);
            EXPECT_EQ(Chosen(row.control), row.items[i].parameter);
            const std::uint32_t others = row.field == &Preferences::on_open_checked_out_none ? 6 : 0;
            EXPECT_EQ(Manager().Snapshot().*row.field, row.items[i].parameter | others);
            EXPECT_EQ(Stored().*row.field, row.items[i].parameter | others);
        }
    }
}

TEST_F(Page, AFieldSelectsTheItemOfItsValueOrNone) {
    const struct {
        const wchar_t* control;
        std::uint32_t Preferences::*field;
        std::uint32_t value;
        std::optional<LONGLONG> chosen;
    } rows[] = {
        {L"cb.whenOpenDocumentCheckoutNone", &Preferences::on_open_checked_out_none, 6, 0},
        {L"cb.whenOpenDocumentCheckoutNone", &Preferences::on_open_checked_out_none, 14, 8},
        {L"cb.whenOpenDocumentCheckoutNone", &Preferences::on_open_checked_out_none, 15, std::nullopt},
        {L"cb.afterSave", &Preferences::on_after_save, 24, 24},
        {L"cb.afterSave", &Preferences::on_after_save, 26, std::nullopt},
        {L"cb.defaultCheckInType", &Preferences::default_check_in_type, 2, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.control) + " " + std::to_string(row.value));
        Manager().Change([&](Preferences& io_current) { io_current.*row.field = row.value; });
        for (auto& [name, control] : uix->controls[layout]) {
            control.items.clear();
            control.selected = -1;
        }
        Show();
        EXPECT_EQ(Chosen(row.control), row.chosen);
        ui->Destroy();
        ui.Release();
    }
}

TEST_F(Page, EachCheckBoxIsOneBitAndLeavesTheOthers) {
    const struct {
        const wchar_t* control;
        std::uint32_t Preferences::*field;
        std::uint32_t bit;
    } rows[] = {
        {L"check.whenOpenDocumentCheckOutNoneDisableEditing", &Preferences::on_open_checked_out_none, 4},
        {L"check.whenOpenCheckOutOtherShowWarning", &Preferences::on_open_checked_out_other, 1},
        {L"check.whenOpenDocumentCheckOutOtherDisableEditing", &Preferences::on_open_checked_out_other, 4},
        {L"check.whenOpenNoPermissionsShowWarning", &Preferences::on_open_without_write_permissions, 1},
        {L"check.whenOpenNoPermissionsDisableEditing", &Preferences::on_open_without_write_permissions, 4},
    };
    Show();
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.control));
        const std::uint32_t before = Manager().Snapshot().*row.field;
        EXPECT_EQ(before & 2, 2u); // the bit that no control shows
        const bool was_set = (before & row.bit) != 0;
        EXPECT_EQ(Control(row.control).check, was_set ? 1 : 0);
        for (const bool set : {!was_set, was_set}) {
            Control(row.control).check = set ? 1 : 0;
            Commit(row.control);
            EXPECT_EQ(Stored().*row.field, set ? before | row.bit : before & ~row.bit);
            EXPECT_EQ(Control(row.control).check, set ? 1 : 0);
        }
    }
}

TEST_F(Page, AChoiceSetsItsBitsAndKeepsTheRest) {
    Manager().Change([](Preferences& io_current) {
        io_current.on_after_save = 0x80000000 | 2 | 16;
        io_current.on_open_checked_out_none = 15;
    });
    Show();
    Choose(L"cb.afterSave", 1);
    EXPECT_EQ(Manager().Snapshot().on_after_save, 0x80000000 | 2 | 1);
    EXPECT_EQ(Manager().Snapshot().on_open_checked_out_none, 15u) << "a combo without a selection changed its field";
    Choose(L"cb.whenOpenDocumentCheckoutNone", 8);
    EXPECT_EQ(Manager().Snapshot().on_open_checked_out_none, 14u);
    Control(L"cb.defaultCheckInType").selected = -1;
    Commit(L"cb.afterSave");
    EXPECT_EQ(Manager().Snapshot().default_check_in_type, 0u);
}

TEST_F(Page, AnEmptiedCommentKeepsTheOldOneAndShowsItAgain) {
    Manager().Change([](Preferences& io_current) { io_current.default_check_in_message = L"old <b> & \u202Eword"; });
    Show();
    EXPECT_EQ(Control(L"ed.defaultCheckInComment").text, L"old <b> & \u202Eword");
    Control(L"ed.defaultCheckInComment").text.clear();
    Commit(L"ed.defaultCheckInComment");
    EXPECT_EQ(Stored().default_check_in_message, L"old <b> & \u202Eword");
    EXPECT_EQ(Control(L"ed.defaultCheckInComment").text, L"old <b> & \u202Eword");
    Control(L"ed.defaultCheckInComment").text = L"new";
    Commit(L"ed.defaultCheckInComment");
    EXPECT_EQ(Stored().default_check_in_message, L"new");
}

TEST_F(Page, AResetArrivesWithTheNextChangeOrApply) {
    Manager().Change([](Preferences& io_current) {
        io_current.on_after_save = 8;
        io_current.hide_paths = true;
        io_current.hidden_paths = {L"x"};
        io_current.days_to_store_logs = 3;
    });
    Manager().Save();
    Show();
    EXPECT_NE(uix->window->Notify(KOV::UiNotify_Clicked, L"btn.resetPreferences", false), 0u);
    EXPECT_EQ(Chosen(L"cb.afterSave"), 1);
    EXPECT_EQ(Manager().Snapshot().on_after_save, 8u);
    EXPECT_EQ(Stored().hidden_paths, std::vector<std::wstring>{L"x"});
    VARIANT_BOOL is_in_force = VARIANT_TRUE;
    ASSERT_EQ(page->get_HasChanges(&is_in_force), S_OK);
    EXPECT_EQ(is_in_force, VARIANT_FALSE);

    EXPECT_EQ(page->OnApply(nullptr, 0), S_OK);
    EXPECT_EQ(Manager().Snapshot().on_after_save, 8u) << "the flag 0 collected";
    EXPECT_EQ(page->OnApply(nullptr, 1), S_OK);
    const Preferences stored = Stored();
    EXPECT_EQ(stored.on_after_save, 1u);
    EXPECT_FALSE(stored.hide_paths);
    EXPECT_EQ(stored.hidden_paths, g_default_preferences.hidden_paths);
    EXPECT_EQ(stored.days_to_store_logs, 10u);
    ASSERT_EQ(page->get_HasChanges(&is_in_force), S_OK);
    EXPECT_EQ(is_in_force, VARIANT_TRUE);
}

TEST_F(Page, AMissingControlLeavesItsFieldAndNothingElse) {
    uix->controls[layout].erase(L"cb.whenSaveConflict");
    uix->controls[layout].erase(L"check.whenOpenCheckOutOtherShowWarning");
    uix->controls[layout].erase(L"ed.defaultCheckInComment");
    Manager().Change([](Preferences& io_current) {
        io_current.on_open_checked_out_other = 7;
        io_current.on_save_conflict = 32;
        io_current.default_check_in_message = L"kept";
    });
    Show();
    Choose(L"cb.afterSave", 16);
    const Preferences now = Manager().Snapshot();
    EXPECT_EQ(now.on_after_save, 16u);
    EXPECT_EQ(now.on_open_checked_out_other, 7u);
    EXPECT_EQ(now.on_save_conflict, 32u);
    EXPECT_EQ(now.default_check_in_message, L"kept");
}

TEST_F(Page, WithoutItsControlsItKeepsTheStoreAsItIs) {
    Manager().Change([](Preferences& io_current) { io_current.default_check_in_message = L"kept"; });
    Manager().Save();
    page = Ui::CreatePreferencesPage(module.plugin);
    ComPtr<KOV::IUIX_ObjImpl> implementation;
    ASSERT_EQ(page->QueryInterface(&implementation), S_OK);
    const auto window = MakeObject<ScriptedWindow>(uix->controls[layout], implementation, nullptr);
    implementation->put_Obj(window); // its controls are yet to come
    EXPECT_EQ(page->OnApply(nullptr, 1), S_OK);
    EXPECT_EQ(window->Notify(KOV::UiNotify_Committed, L"cb.afterSave"), 0u);
    EXPECT_EQ(window->Notify(KOV::UiNotify_Clicked, L"btn.resetPreferences"), 0u);
    EXPECT_EQ(Manager().Snapshot().default_check_in_message, L"kept");
    EXPECT_EQ(Stored().default_check_in_message, L"kept");
    window->Destroy();
}

TEST_F(Page, HandsOnWhatTheHostMadeOfItsWindow) {
    for (const HRESULT result : {S_FALSE, E_ACCESSDENIED}) {
        uix->create_result = result;
        page = Ui::CreatePreferencesPage(module.plugin);
        EXPECT_EQ(page->OnCreateNewUI(nullptr, this, nullptr, &ui), result);
        ui->Destroy();
    }
}

TEST_F(Page, OtherNotificationsChangeNothing) {
    Show();
    Control(L"check.whenOpenNoPermissionsShowWarning").check = 1;
    for (const DWORD kind : {KOV::UiNotify_Clicked, KOV::UiNotify_TextChanged, KOV::UiNotify_SelectionChanged}) {
        EXPECT_EQ(uix->window->Notify(kind, L"check.whenOpenNoPermissionsShowWarning"), 0u) << kind;
    }
    EXPECT_EQ(Manager().Snapshot().on_open_without_write_permissions, 6u);
}

TEST_F(Page, SaysWhatItIs) {
    page = Ui::CreatePreferencesPage(module.plugin);
    EXPECT_TRUE(uix->asked.empty()) << "a window was made before the page is shown";
    Bstr name;
    Bstr title;
    Bstr tip;
    ASSERT_EQ(page->get_Name(&name), S_OK);
    ASSERT_EQ(page->get_Title(&title), S_OK);
    ASSERT_EQ(page->get_Tip(&tip), S_OK);
    EXPECT_EQ(name.View(), L"SharePoint");
    EXPECT_EQ(title.View(), L"SharePoint Options");
    EXPECT_EQ(tip.m_str, nullptr);
    EXPECT_EQ(page->get_Name(nullptr), E_POINTER);
    EXPECT_EQ(page->OnCreateNewUI(nullptr, this, nullptr, nullptr), E_POINTER);
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    ASSERT_EQ(page->get_Icon(&icon), S_OK);
    EXPECT_EQ(icon.Get(), module.plugin->m_icon.Get());

    const RECT rect{1, 2, 30, 40};
    ASSERT_EQ(page->OnCreateNewUI(nullptr, this, &rect, &ui), S_OK);
    const KOV::CreateUiObjectParameters& asked = uix->asked.at(0);
    EXPECT_EQ(asked.parent_window, this);
    EXPECT_EQ(asked.kind, 1u);
    EXPECT_EQ(asked.style, 18u);
    EXPECT_EQ(asked.flags, 2u);
    EXPECT_EQ(asked.window_style, 0u);
    EXPECT_EQ(asked.rect.bottom, 40);
    EXPECT_EQ(uix->layouts.at(0), layout);
}

} // namespace
