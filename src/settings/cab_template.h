#pragma once

#include "host/cab.h"
#include "platform/modules.h"

namespace KOV {
struct IAUX_Inst;
}

/// Numbers of the templates among the module's resources of type "XML".
constexpr WORD IDR_SETTINGS_CAB_XML = 103;
constexpr WORD IDR_ACCOUNT_DATA_CAB_XML = 108;
constexpr WORD IDR_OPEN_SAVE_DIALOG_PARAMETERS_CAB_XML = 109;

/// The published short name; texts are wide throughout.
inline LPWSTR MAKEINTRESOURCE(WORD number) noexcept { return MAKEINTRESOURCEW(number); }

/// Gives `o_cab` the schema in the module's resource `i_template_resource` (`MAKEINTRESOURCE`), with `i_template_name` as the
/// root's id. A resource that can't be found is passed on as no data, and the host's answer decides. `E_INVALIDARG` for a null
/// cab; else the host's failure. `i_aux_instance` isn't used.
HRESULT ApplyCabTemplate(KOV::IAUX_Inst* i_aux_instance, KOV::IAUX_Cab* o_cab, LPCWSTR i_template_resource,
                         LPCWSTR i_template_name);
