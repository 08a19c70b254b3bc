#include "workbench/desktop/server_dialog.h"

#include <string_view>

#include "platform/errors.h"

namespace {

constexpr DWORD confirmed = 1;

/// What the host has to say to a dialog; all else is left to the provider.
constexpr std::string_view parameters_template = R"(<?xml version="1.0" encoding="UTF-8"?>
<CabTemplate>
  <ItemSet id="HostDialogParameters_Dict">
    <Item id="DefaultExt" type="String"/>
    <Item id="InitialFileName" type="String"/>
  </ItemSet>
  <Root id="HostDialogParameters" type="Dictionary" itemSet="HostDialogParameters_Dict"/>
</CabTemplate>
)";

void PutText(KOV::IAUX_Cab& cab, const wchar_t* key, const std::wstring& text) {
    Variant name;
    name.vt = VT_BSTR;
    name.bstrVal = Bstr(std::wstring_view(key)).Detach();
    ComPtr<KOV::IAUX_CabItem> item;
    Check(cab.GetItem(&name, &item));
    Check(item->put_String(text.c_str()));
}

ComPtr<KOV::IAUX_Cab> MakeParameters(const ServerAccess& access, DWORD kind) {
    ComPtr<KOV::IAUX_Cab> parameters;
    Check(access.Provider()->CreateDlgParams(kind, &parameters));
    Check(parameters->SetTemplate2(parameters_template.data(), static_cast<ULONG>(parameters_template.size()),
                                   L"HostDialogParameters"));
    return parameters;
}

std::wstring ExtensionOf(const std::wstring& title) {
    const std::size_t dot = title.rfind(L'.');
    return dot == std::wstring::npos ? std::wstring() : title.substr(dot + 1);
}

ComPtr<KOV::IAFS_NamesCollection> Show(const ServerAccess& access, DWORD kind, KOV::IAFS_Name* folder, KOV::IAUX_Cab* parameters,
                                       HWND window) {
    ComPtr<KOV::IAFS_NamesCollection> names;
    DWORD choice = 0;
    Check(access.Provider()->ShowDlg(kind, folder, parameters, window, &names, &choice));
    ULONG count = 0;
    if (choice != confirmed || names.IsNull() || FAILED(names->get_Count(&count)) || count == 0) {
        throw Failure{UserCanceled, {}};
    }
    return names;
}

} // namespace

ComPtr<KOV::IAFS_NamesCollection> ShowOpenDialog(const ServerAccess& access, KOV::IAFS_Name* folder, HWND window) {
    const ComPtr<KOV::IAUX_Cab> parameters = MakeParameters(access, KOV::AFS_Dlg_OpenFiles);
    return Show(access, KOV::AFS_Dlg_OpenFiles, folder, parameters, window);
}

ComPtr<KOV::IAFS_Name> ShowSaveDialog(const ServerAccess& access, KOV::IAFS_Name* folder, const std::wstring& title,
                                      HWND window) {
    const ComPtr<KOV::IAUX_Cab> parameters = MakeParameters(access, KOV::AFS_Dlg_SaveFile);
    PutText(*parameters, L"InitialFileName", title);
    PutText(*parameters, L"DefaultExt", ExtensionOf(title));
    const ComPtr<KOV::IAFS_NamesCollection> names = Show(access, KOV::AFS_Dlg_SaveFile, folder, parameters, window);
    ComPtr<KOV::IAFS_Name> name;
    Check(names->get_Item(0, &name));
    return name;
}
