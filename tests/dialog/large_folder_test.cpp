// The dialog over a folder of 100,000 items, which exists nowhere.

#include "dialog/dialog_fixture.h"
#include "dialog/named_folder.h"
#include "dialog/open_save_dialog.h"

namespace {

constexpr int file_count = 100'000;

class LargeFolder : public DialogTest {
protected:
    LargeFolder() {
        for (int i = 0; i < file_count; ++i) {
            // From the last to the first, as no server lists them.
            const int number = file_count - i;
            const std::wstring title = L"Document " + std::to_wstring(number) + (number % 4 == 0 ? L".fdf" : L".pdf");
            folder->items.push_back(MakeObject<NamedItemInfo>(ItemFacts{.title = title, .size = static_cast<ULONGLONG>(number)}));
        }
    }

    HRESULT Open(KOV::IAFS_NamesCollection** out_names) {
        Ui::OpenSaveDialog dialog(Module().host, folder);
        Ui::DialogParameters wishes;
        wishes.Flags = Ui::DialogFlag_AllowMultiSelect;
        wishes.FileFilters = Bstr(L"PDF|*.pdf|All files|*.*||");
        wishes.InitialPathName = folder->folder->m_name;
        return dialog.ShowOpenSinglePlace(out_names, wishes, folder->folder->m_name, nullptr, g_default_preferences);
    }
    static void ExpectEnds(const wchar_t* first, const wchar_t* last) {
        EXPECT_EQ(ShownDialog::Cell(0, 0), first);
        EXPECT_EQ(ShownDialog::Cell(ShownDialog::Rows() - 1, 0), last);
    }

    ComPtr<NamedFolder> folder = MakeObject<NamedFolder>();
};

TEST_F(LargeFolder, IsFilteredAndSortedWhole) {
    person.Then([] {
        EXPECT_EQ(ShownDialog::Rows(), file_count * 3 / 4);
        ExpectEnds(L"Document 1", L"Document 99999");
        ShownDialog::ChooseFilter(1);
        EXPECT_EQ(ShownDialog::Rows(), file_count);
        ExpectEnds(L"Document 1", L"Document 100000");
        ShownDialog::ClickHeader(0);
        ExpectEnds(L"Document 100000", L"Document 1");
        ShownDialog::ClickHeader(1);
        ExpectEnds(L"Document 4", L"Document 99999");
        ShownDialog::ClickHeader(4);
        ExpectEnds(L"Document 1", L"Document 100000");
        ShownDialog::Press("btn.cancel");
    });
    ComPtr<KOV::IAFS_NamesCollection> names;
    EXPECT_EQ(Open(&names), E_CANCELED);
}

TEST_F(LargeFolder, CanBePickedWhole) {
    person.Then([] {
        ShownDialog::List().setFocus();
        QTest::keyClick(&ShownDialog::List(), Qt::Key_A, Qt::ControlModifier);
        ShownDialog::Press("btn.ok");
    });
    ComPtr<KOV::IAFS_NamesCollection> names;
    ASSERT_EQ(Open(&names), S_OK);
    ULONG count = 0;
    EXPECT_EQ(names->get_Count(&count), S_OK);
    EXPECT_EQ(count, static_cast<ULONG>(file_count * 3 / 4));
    ComPtr<KOV::IAFS_Name> first;
    ASSERT_EQ(names->get_Item(0, &first), S_OK);
    EXPECT_EQ(first.Get(), static_cast<KOV::IAFS_Name*>(folder->items.back()->m_name)) << "in the order of the list";
}

} // namespace
