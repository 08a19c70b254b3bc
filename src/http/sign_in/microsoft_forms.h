#pragma once

#include <string>

#include "host/instance.h"

/// Signs in on the pages of a server, in a browser window of the host: shows `sign_in_url` until the user reaches `return_url`
/// (null or empty: any page) with the cookies `FedAuth` and `rtFa` of `i_resource_url`, the site's scheme and host, in the
/// process's cookie store. `out_header` receives them as one line that opens later requests. Blocks until the window is closed;
/// any thread. `S_OK` with an empty `out_header` when the host made no window; `E_CANCELED` when the user closed it;
/// `E_UNEXPECTED` for a return without `FedAuth`; else the host's failure. `out_header` stays untouched on failure.
HRESULT AuthenticateWithMicrosoftForms(std::wstring& out_header, LPCWSTR sign_in_url, LPCWSTR return_url, LPCWSTR i_resource_url,
                                       KOV::IKOV_Inst* kov_inst);
