#pragma once

#include "platform/wininet/objects.h"

namespace wininet {

/// As InternetSetOptionW and InternetQueryOptionW on a handle's object.
DWORD SetOption(Object& object, DWORD option, LPCVOID buffer, DWORD length);
DWORD QueryOption(const Object& object, DWORD option, LPVOID buffer, DWORD& length);

/// INTERNET_OPTION_END_BROWSER_SESSION.
DWORD EndBrowserSession();

/// As HttpQueryInfoW.
DWORD QueryInfo(const RequestObject& request, DWORD info, LPVOID buffer, DWORD& length, DWORD* index);

} // namespace wininet
