#include "dialog/folder_rows.h"

#include <map>
#include <utility>

#include "dialog/folder_columns.h"
#include "dialog/logical_ranks.h"
#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"
#include "platform/paths.h"

namespace {

/// The extension of a file's address without the dot; empty where the address can't be read.
std::wstring AddressExtension(KOV::IAFS_FileSys* file_system, KOV::IAFS_Name* name) {
    Bstr address;
    if (FAILED(file_system->NameToString(name, 0, nullptr, &address)) || address.m_str == nullptr) {
        return {};
    }
    const wchar_t* const extension = PathFindExtensionW(address);
    return *extension == 0 ? std::wstring() : extension + 1;
}

class RowMaker {
public:
    RowMaker(KOV::IAFS_FileSys* file_system, FolderRows& rows) : m_file_system(file_system), m_rows(rows) {}

    HRESULT Add(const FolderItem& item) {
        Bstr title;
        DWORD attributes = 0;
        CHECK_OR_RETURN(item.info->get_Title(&title));
        CHECK_OR_RETURN(item.info->get_Attributes(&attributes));
        FolderRow& row = m_rows.rows.emplace_back();
        row.item = item;
        row.is_folder = Bits::Has(attributes, KOV::AFS_FileAttribute_Folder);
        m_rows.folder_count += row.is_folder ? 1 : 0;
        row.title = title.View();
        (void)item.info->get_CreationTime(&row.creation_time);
        (void)item.info->get_LastWriteTime(&row.last_write_time);
        if (!row.is_folder) {
            CompleteFile(row);
        }
        return S_OK;
    }

    void Rank() {
        std::vector<std::wstring_view> texts;
        texts.reserve(m_rows.rows.size());
        for (const FolderRow& row : m_rows.rows) {
            texts.emplace_back(row.title);
        }
        const std::vector<std::uint32_t> title_ranks = LogicalRanks(texts);
        for (std::size_t i = 0; i < title_ranks.size(); ++i) {
            m_rows.rows[i].title_rank = title_ranks[i];
        }
        texts.clear();
        for (const FileKind& kind : m_rows.kinds) {
            texts.push_back(kind.Extension());
        }
        const std::vector<std::uint32_t> kind_ranks = LogicalRanks(texts);
        for (std::size_t i = 0; i < kind_ranks.size(); ++i) {
            m_rows.kinds[i].rank = kind_ranks[i];
        }
    }

private:
    void CompleteFile(FolderRow& row) {
        ULONGLONG size = 0;
        if (SUCCEEDED(row.item.info->get_Size(&size))) {
            row.size = size;
        }
        const std::wstring extension = PathFindExtensionW(row.title.c_str());
        row.title.resize(row.title.size() - extension.size());
        row.kind = &KindOf(extension, AddressExtension(m_file_system, row.item.name));
    }

    FileKind& KindOf(std::wstring dotted_extension, std::wstring address_extension) {
        auto [found, is_new] = m_kinds.try_emplace({dotted_extension, address_extension}, nullptr);
        if (is_new) {
            FileKind& kind = m_rows.kinds.emplace_back();
            kind.dotted_extension = std::move(dotted_extension);
            kind.address_extension = std::move(address_extension);
            found->second = &kind;
        }
        return *found->second;
    }

    KOV::IAFS_FileSys* const m_file_system;
    FolderRows& m_rows;
    std::map<std::pair<std::wstring, std::wstring>, FileKind*> m_kinds;
};

} // namespace

HRESULT FolderRows::Make(KOV::IAFS_FileSys* file_system, const std::vector<FolderItem>& items,
                         std::shared_ptr<FolderRows>& out_rows) {
    TRACE_ENTER(L"{}", items.size());
    out_rows.reset();
    auto rows = std::make_shared<FolderRows>();
    rows->rows.reserve(items.size());
    RowMaker maker(file_system, *rows);
    for (const FolderItem& item : items) {
        CHECK_OR_RETURN(maker.Add(item));
    }
    maker.Rank();
    for (std::size_t column = 0; column < rows->orders.size(); ++column) {
        rows->orders[column] = OrderByColumn(*rows, column);
    }
    out_rows = std::move(rows);
    TRACE_RETURN(S_OK);
}
