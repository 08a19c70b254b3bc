#pragma once

/// Which files the list shows: those of the type that is chosen in a drop-down. Main thread.

#include <memory>
#include <vector>

#include "dialog/extension_lists.h"
#include "host/controls.h"
#include "host/file_system.h"

/// Lets all files through.
class NamesFilter {
public:
    virtual ~NamesFilter() = default;
    virtual bool IsValid(KOV::IAFS_Name* name) const;
    /// The same of a file whose address ends in `extension`, without the dot.
    virtual bool IsValidExtension(std::wstring_view extension) const;
};

class FilesExtensionFilter final : public NamesFilter {
public:
    FilesExtensionFilter(KOV::IAFS_FileSys* file_system, KOV::IUIX_Combo* combo);
    ~FilesExtensionFilter() override;

    /// Fills the drop-down with the types of a filter string, instead of what it held, and chooses the first.
    HRESULT SetFilter(LPCWSTR filter_string);
    /// Empties the drop-down.
    HRESULT Clear();

    /// Without a chosen type all files are valid; with one, a name that can't be read isn't.
    bool IsValid(KOV::IAFS_Name* name) const override;
    bool IsValidExtension(std::wstring_view extension) const override;
    /// Fits a typed name to the chosen type (`FitExtension`); true when it changed it. `default_extension` may be null.
    bool AddFilterExtension(std::wstring& io_name, LPCWSTR default_extension) const;

private:
    HRESULT InsertTypes(std::vector<FileType> types);
    const ExtensionList* Selected() const;
    /// Null when the item can't be read.
    const ExtensionList* ListOf(LONG item) const;

    ComPtr<KOV::IAFS_FileSys> m_file_system;
    ComPtr<KOV::IUIX_Combo> m_combo;
    /// What the parameters of the drop-down's items are: addresses of these.
    std::vector<std::unique_ptr<const ExtensionList>> m_lists;
};
