#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "workbench/core/errors.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/windows/layout.h"
#include "workbench/desktop/windows/neighbours.h"

namespace {

std::string ModuleLayoutsText() {
    std::ifstream file(KOV_SOURCE_DIR "/src/resources/layouts.xml", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Layout ModuleLayout(const wchar_t* id) {
    const std::string text = ModuleLayoutsText();
    return ReadLayout(text.data(), text.size(), id);
}

std::string IdOf(const Layout& layout, std::size_t index) { return ToQString(layout.items[index].id).toStdString(); }

std::string Around(const std::string& dialog) { return "<dialogs>" + dialog + "</dialogs>"; }
std::string AroundItem(const std::string& item) {
    return Around(R"(<dialog id="D" width="100" height="100"><items>)" + item + "</items></dialog>");
}

} // namespace

TEST(Layout, ReadsTheModulesFiveWindows) {
    const std::string text = ModuleLayoutsText();
    std::vector<std::pair<std::wstring, std::size_t>> read;
    for (const Layout& layout : ReadLayouts(text.data(), text.size())) {
        read.emplace_back(layout.id, layout.items.size());
    }
    const std::vector<std::pair<std::wstring, std::size_t>> expected = {{L"OpenDialog", 12},
                                                                        {L"SaveDialog", 12},
                                                                        {L"WebBrowserDialog", 0},
                                                                        {L"DlgAppPrefs.SharePoint.Name", 27},
                                                                        {L"AdvancedPreferencesDialog", 13}};
    EXPECT_EQ(read, expected);
    const Layout open = ModuleLayout(L"OpenDialog");
    EXPECT_EQ(open.fixed_area, 40);
    EXPECT_EQ(open.default_item, L"btn.ok");
    EXPECT_EQ(open.items[5].kind, ElementKind::list);
    EXPECT_EQ(open.items[5].rect, QRect(8, 40, 672, 359));
    EXPECT_EQ(open.items[5].style, 0x4502u);
    EXPECT_TRUE(open.items[9].is_fixed);
    EXPECT_EQ(open.items[9].text, L"$$$.sp.btn.open");
}

TEST(Layout, NamesWhatIsBroken) {
    struct Row {
        const char* name;
        std::string text;
        const char* words;
    };
    const Row rows[] = {
        {"empty", "", "at byte 0"},
        {"cut", R"(<dialogs><dialog id="D" wid)", "at byte"},
        {"another root", "<windows/>", "the root isn't <dialogs>"},
        {"no such window", Around(""), "no window layout \"D\""},
        {"no width", Around(R"(<dialog id="D" height="10"><items/></dialog>)"), "<dialog id=\"D\"> has no good width: \"\""},
        {"a width with letters", Around(R"(<dialog id="D" width="10px" height="10"><items/></dialog>)"), "width: \"10px\""},
        {"a width past all screens", Around(R"(<dialog id="D" width="99999" height="10"><items/></dialog>)"), "width: \"99999\""},
        {"no items", Around(R"(<dialog id="D" width="10" height="10"/>)"), "<dialog id=\"D\"> has no items"},
        {"a strip and nothing else", Around(R"(<dialog id="D" width="10" height="10"><fixedArea size="10"/><items/></dialog>)"),
         "fixedArea"},
        {"an unknown kind", AroundItem(R"(<slider id="s" x="0" y="0" width="1" height="1"/>)"), "<slider id=\"s\"> is no kind"},
        {"no id", AroundItem(R"(<check x="0" y="0" width="1" height="1"/>)"), "<check> has no id"},
        {"the same id twice",
         AroundItem(R"(<check id="c" x="0" y="0" width="1" height="1"/><edit id="c" x="0" y="0" width="1" height="1"/>)"),
         "two controls <edit id=\"c\">"},
        {"a negative place", AroundItem(R"(<check id="c" x="-1" y="0" width="1" height="1"/>)"), "has no good x: \"-1\""},
        {"no height", AroundItem(R"(<check id="c" x="0" y="0" width="1" height="0"/>)"), "has no good height: \"0\""},
        {"a decimal style", AroundItem(R"(<check id="c" x="0" y="0" width="1" height="1" style="2"/>)"), "style: \"2\""},
    };
    for (const Row& row : rows) {
        try {
            (void)ReadLayout(row.text.data(), row.text.size(), L"D");
            ADD_FAILURE() << row.name << " was read";
        } catch (const HostException& failure) {
            EXPECT_NE(std::string(failure.what()).find(row.words), std::string::npos) << row.name << ": " << failure.what();
        }
    }
}

TEST(Layout, FindsTheNameOfAControlBesideOrAboveIt) {
    struct Row {
        const wchar_t* layout;
        const char* item;
        const char* name;
    };
    const Row rows[] = {
        {L"OpenDialog", "ed.name", "lb.name"},
        {L"OpenDialog", "cb.filter", ""},
        {L"OpenDialog", "lst.files", ""},
        {L"OpenDialog", "btn.ok", ""},
        {L"DlgAppPrefs.SharePoint.Name", "cb.afterSave", "lb.afterSave"},
        {L"DlgAppPrefs.SharePoint.Name", "ed.defaultCheckInComment", "lb.defaultCheckInComment"},
        {L"AdvancedPreferencesDialog", "ed.numberOfDaysToStoreLogs", "lb.numberOfDaysToStoreLogs"},
        {L"AdvancedPreferencesDialog", "ed.hiddenPaths", "check.hidePaths"},
        {L"AdvancedPreferencesDialog", "cb.logLevel", ""},
    };
    for (const Row& row : rows) {
        const Layout layout = ModuleLayout(row.layout);
        for (std::size_t index = 0; index < layout.items.size(); ++index) {
            if (IdOf(layout, index) == row.item) {
                const std::optional<std::size_t> name = NameOfItem(layout, index);
                EXPECT_EQ(name ? IdOf(layout, *name) : "", row.name) << row.item;
            }
        }
    }
}

TEST(Layout, IsReadLineByLineWithTheStripLast) {
    const auto order_of = [](const wchar_t* id) {
        const Layout layout = ModuleLayout(id);
        std::string order;
        for (const std::size_t index : ReadingOrder(layout)) {
            order += IdOf(layout, index) + " ";
        }
        return order;
    };
    EXPECT_EQ(order_of(L"OpenDialog"),
              "pic1 cb.url lb.url btn.navigate btn.signOut lst.files lb.name ed.name cb.filter btn.settings "
              "btn.ok btn.cancel ");
    EXPECT_EQ(
        order_of(L"AdvancedPreferencesDialog"),
        "group.OpenSaveDialog check.hidePaths ed.hiddenPaths group.Logging cb.logLevel ed.currenLogFile "
        "lb.numberOfDaysToStoreLogs ed.numberOfDaysToStoreLogs btn.openLog btn.openLogFolder btn.clearLogs btn.ok btn.cancel ");
}

TEST(Layout, EndsItsStripWhereTheAreaAboveEnds) {
    for (const wchar_t* const id : {L"OpenDialog", L"SaveDialog"}) {
        const Layout layout = Tidied(ModuleLayout(id));
        std::map<std::string, QRect> rects;
        for (std::size_t index = 0; index < layout.items.size(); ++index) {
            rects[IdOf(layout, index)] = layout.items[index].rect;
        }
        EXPECT_EQ(rects["btn.cancel"].right(), rects["lst.files"].right());
        EXPECT_EQ(rects["lst.files"].left(), layout.size.width() - 1 - rects["lst.files"].right()) << "even margins";
        EXPECT_EQ(rects["btn.cancel"].left() - rects["btn.ok"].right(), rects["btn.ok"].left() - rects["btn.settings"].right());
    }
}
