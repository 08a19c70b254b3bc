#include <algorithm>
#include <iterator>

#include "afs/file_detail.h"
#include "platform/text.h"
#include "platform/variant.h"

namespace {

bool SameName(const wchar_t* name1, const wchar_t* name2) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, name1, -1, name2, -1) == CSTR_EQUAL;
}

/// The row of a table by its name, letter case ignored; null when there is none.
template <class Row, std::size_t count>
const Row* FindRow(const Row (&rows)[count], const wchar_t* name) {
    const Row* const found =
        std::find_if(std::begin(rows), std::end(rows), [name](const Row& row) { return SameName(row.name, name); });
    return found == std::end(rows) ? nullptr : found;
}

} // namespace

/// What the host can read, set and run by name.
struct File::Tables {
    struct Property {
        const wchar_t* name;
        HRESULT (*get)(File& file, Variant& out_value);
        /// Null for what can only be read.
        HRESULT (*put)(File& file, const VARIANT& value);
    };
    struct Command {
        const wchar_t* name;
        void (*run)(File& file, const VARIANT& data);
    };

    static HRESULT GetTempFileName(File& file, Variant& out_value) {
        CHECK_OR_RETURN(file.m_cache != nullptr, FileResult::invalid_state);
        return file.m_cache->get_TempFileName(&out_value);
    }
    static HRESULT GetKeepCheckedOut(File& file, Variant& out_value) {
        out_value = Variant(file.m_keep_checked_out);
        return S_OK;
    }
    static HRESULT PutKeepCheckedOut(File& file, const VARIANT& value) {
        CHECK_OR_RETURN(value.vt == VT_BOOL, E_INVALIDARG);
        file.m_keep_checked_out = value.boolVal != VARIANT_FALSE;
        return S_OK;
    }
    static HRESULT GetCheckedOut(File& file, Variant& out_value) {
        CHECK_OR_RETURN(file.m_name->GetObject() != nullptr, FileResult::missing);
        const SharePoint::File::CheckOutState state = file.m_name->GetObject()->AsFile()->GetCheckOutState(nullptr);
        out_value = Variant(state == SharePoint::File::CheckOutState::me);
        return S_OK;
    }
    static void CheckIn(File& file, const VARIANT&) {
        const Preferences preferences = file.m_plugin->m_preferences_manager.Snapshot();
        file.CheckInByPreferences(Bits::Has(preferences.on_after_save, Preferences::Actions::check_out));
    }

    static constexpr Property properties[] = {
        {L"TempFileName", GetTempFileName, nullptr},
        {L"KeepCheckedOut", GetKeepCheckedOut, PutKeepCheckedOut},
        {L"CheckedOut", GetCheckedOut, nullptr},
    };

    static constexpr Command commands[] = {
        {L"PerformAfterSave", [](File& file, const VARIANT&) { file.PerformAfterSave(); }},
        {L"CheckInWithUi", [](File& file, const VARIANT&) { file.CheckInWithUi(false, nullptr); }},
        {L"CheckIn", CheckIn},
        {L"CheckOut", [](File& file, const VARIANT&) { file.CheckOut(true); }},
        {L"DiscardCheckOut", [](File& file, const VARIANT&) { file.DiscardCheckOut(); }},
        {L"ReopenCacheFile", [](File& file, const VARIANT& data) { file.ReopenCacheFile(data); }},
        {L"ResetCache", [](File& file, const VARIANT&) { file.ResetCache(); }},
    };
};

HRESULT File::get_Prop(LPCWSTR name, VARIANT* out_value) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(out_value != nullptr, E_POINTER);
    const Tables::Property* const property = FindRow(Tables::properties, name);
    CHECK_OR_RETURN(property != nullptr, E_INVALIDARG);
    Variant value;
    CHECK_OR_RETURN(property->get(*this, value));
    CHECK_OR_RETURN(VariantCopy(out_value, &value));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT File::put_Prop(LPCWSTR name, const VARIANT* value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(value != nullptr, E_INVALIDARG);
    const Tables::Property* const property = FindRow(Tables::properties, name);
    CHECK_OR_RETURN(property != nullptr && property->put != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(property->put(*this, *value));
    TRACE_RETURN(S_OK);
}

HRESULT File::Exec(LPCWSTR command, const VARIANT* data, VARIANT*, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    const Tables::Command* const found = FindRow(Tables::commands, command);
    if (found == nullptr) {
        const std::wstring name = command == nullptr ? L"" : command;
        THROW_LOGGED(HResultException(E_INVALIDARG, L"Unsupported command \"" + name + L"\""));
    }
    const Variant no_data;
    found->run(*this, data != nullptr ? *data : no_data);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}
