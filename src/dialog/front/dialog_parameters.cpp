#include "dialog/front/dialog_parameters.h"

#include "frame/diagnostics/diagnostics.h"
#include "settings/cab_node.h"
#include "settings/cab_template.h"

namespace Ui {

namespace {

HRESULT ApplySchema(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* i_cab) {
    return ApplyCabTemplate(i_aux_instance, i_cab, MAKEINTRESOURCE(IDR_OPEN_SAVE_DIALOG_PARAMETERS_CAB_XML),
                            L"OpenSaveDialogParametersCabTemplateV1");
}

} // namespace

HRESULT DialogParameters::LoadFromCab(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* i_cab) {
    TRACE_ENTER();
    CHECK_OR_RETURN(ApplySchema(i_aux_instance, i_cab));
    const CabNode root(i_cab);
    Flags = static_cast<DWORD>(root[L"Flags"].GetInt());
    Title = root[L"Title"].GetString();
    ActionBtnTitle = root[L"ActionBtnTitle"].GetString();
    CancelBtnTitle = root[L"CancelBtnTitle"].GetString();
    SettingsBtnTitle = root[L"SettingsBtnTitle"].GetString();
    FileFilters = root[L"FileFilters"].GetString();
    FileFilterIndex = root[L"FileFilterIndex"].GetInt();
    DefaultExt = root[L"DefaultExt"].GetString();
    InitialPathName = root[L"InitialPathName"].GetUnknown().As<KOV::IAFS_Name>();
    InitialFileName = root[L"InitialFileName"].GetString();
    SettingsBtnCallbacks = root[L"SettingsBtnCallbacks"].GetUnknown().As<KOV::ISettingsBtnCallbacks>();
    TRACE_RETURN(S_OK);
}

HRESULT DialogParameters::SaveToCab(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* o_cab) const {
    TRACE_ENTER();
    CHECK_OR_RETURN(ApplySchema(i_aux_instance, o_cab));
    CabNode(o_cab)[L"FileFilterIndex"].SetInt(FileFilterIndex);
    TRACE_RETURN(S_OK);
}

} // namespace Ui
