#pragma once

#include <string>

#include "settings/cab_node.h"

class Plugin;

/// The way of secrets into and out of a cab: its String items hold what the host's cipher made of them, never plain text.
/// An empty text is an empty item, which the cipher never sees.
namespace CabEncryptor {

/// Clears the field first, so that a failure never leaves an older or plain text behind. `value` may be null.
/// `E_POINTER` for a null plugin, else the failure of the host's step.
HRESULT SaveEncryptedString(Plugin* i_plugin, const CabNode& cab_node, const wchar_t* pzsFieldName, const wchar_t* value);

/// `out_value` is empty after a failure. A text that the cipher didn't make comes back as it stands and goes out enciphered
/// at the next save.
HRESULT LoadEncryptedString(Plugin* i_plugin, const CabNode& cab_node, const wchar_t* pzsFieldName, std::wstring& out_value);

} // namespace CabEncryptor
