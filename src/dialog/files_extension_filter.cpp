#include "dialog/files_extension_filter.h"

#include "frame/diagnostics/diagnostics.h"
#include "platform/bstr.h"

bool NamesFilter::IsValid(KOV::IAFS_Name*) const { return true; }

bool NamesFilter::IsValidExtension(std::wstring_view) const { return true; }

FilesExtensionFilter::FilesExtensionFilter(KOV::IAFS_FileSys* file_system, KOV::IUIX_Combo* combo)
    : m_file_system(file_system), m_combo(combo) {
    TRACE_ENTER();
}

FilesExtensionFilter::~FilesExtensionFilter() {
    TRACE_ENTER();
    (void)Clear(); // a failure is logged there
}

HRESULT FilesExtensionFilter::SetFilter(LPCWSTR filter_string) {
    TRACE_ENTER();
    CHECK_OR_RETURN(filter_string != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(Clear());
    const HRESULT result = InsertTypes(ParseFilterString(filter_string));
    if (!m_lists.empty()) {
        CHECK_OR_RETURN(m_combo->put_SelItem(0));
    }
    CHECK_OR_RETURN(result);
    TRACE_RETURN(S_OK);
}

/// The first that fails ends it; those before it serve.
HRESULT FilesExtensionFilter::InsertTypes(std::vector<FileType> types) {
    for (FileType& type : types) {
        m_lists.push_back(std::make_unique<const ExtensionList>(std::move(type.extensions)));
        const HRESULT result = m_combo->InsertItem(-1, type.title.c_str(), type.title.c_str(), nullptr,
                                                   reinterpret_cast<LONGLONG>(m_lists.back().get()), 0);
        if (FAILED(result)) {
            m_lists.pop_back();
            return result;
        }
    }
    return S_OK;
}

HRESULT FilesExtensionFilter::Clear() {
    TRACE_ENTER();
    // The lists go even if the drop-down keeps its items: none of these reads a parameter that isn't of a list here.
    const HRESULT result = m_combo->Clear();
    m_lists.clear();
    CHECK_OR_RETURN(result);
    TRACE_RETURN(S_OK);
}

const ExtensionList* FilesExtensionFilter::ListOf(LONG item) const {
    LONGLONG parameter = 0;
    if (FAILED(m_combo->GetItemParam(item, &parameter))) {
        return nullptr;
    }
    for (const auto& list : m_lists) {
        if (reinterpret_cast<LONGLONG>(list.get()) == parameter) {
            return list.get();
        }
    }
    return nullptr;
}

const ExtensionList* FilesExtensionFilter::Selected() const {
    LONG item = -1;
    return FAILED(m_combo->get_SelItem(&item)) || item < 0 ? nullptr : ListOf(item);
}

bool FilesExtensionFilter::IsValid(KOV::IAFS_Name* name) const {
    const ExtensionList* const selected = Selected();
    if (selected == nullptr || IsAllFiles(*selected)) {
        return true;
    }
    Bstr text;
    if (FAILED(m_file_system->NameToString(name, 0, nullptr, &text)) || text.m_str == nullptr) {
        return false;
    }
    return HoldsExtension(*selected, ExtensionOf(text));
}

bool FilesExtensionFilter::IsValidExtension(std::wstring_view extension) const {
    const ExtensionList* const selected = Selected();
    return selected == nullptr || IsAllFiles(*selected) || HoldsExtension(*selected, extension);
}

bool FilesExtensionFilter::AddFilterExtension(std::wstring& io_name, LPCWSTR default_extension) const {
    TRACE_ENTER();
    LONG count = 0;
    (void)m_combo->get_Count(&count);
    std::vector<const ExtensionList*> all;
    for (LONG item = 0; item < count; ++item) {
        all.push_back(ListOf(item));
    }
    const bool is_changed = FitExtension(io_name, Selected(), all, default_extension);
    TRACE_LEAVE(L"{}", is_changed);
    return is_changed;
}
