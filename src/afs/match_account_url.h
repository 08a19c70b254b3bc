#pragma once

#include <string>

#include "platform/types.h"

/// Does `i_url` belong to the account at `account_url`? 0 no; 1 yes; 2 yes, and it names `account_user`. Scheme, host, user and
/// path are compared without letter case, the port isn't compared. With `any_path` every path on the host belongs. A null or
/// empty `i_url` is 0. A URL that can't be parsed gives its system error as an HRESULT, and leaves 0. Any thread.
HRESULT MatchAccountUrl(LPCWSTR i_url, const std::wstring& account_url, const std::wstring& account_user, bool any_path,
                        LONG& out_result);
