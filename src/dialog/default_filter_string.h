#pragma once

#include <string>

#include "host/instance.h"

/// The types of files of a dialog for which the host named none: the host's own PDF type and all files, and in an Open dialog
/// between them all types that the host can read, without those that it can only convert. Main thread.
HRESULT BuildDefaultFilterString(KOV::IKOV_Inst* kov, bool is_open_dialog, std::wstring& out_text);
