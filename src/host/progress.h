#pragma once

#include "platform/com.h"

namespace KOV {

constexpr DWORD UIX_ProgressStyle_Endless = 0x10;

/// Shows how far a long operation got, and takes the user's wish to end it. Any thread.
struct IKOV_ProgressMon : IUnknown {
    virtual HRESULT put_Title(LPCWSTR title) = 0;
    /// The main line; may hold `<b>` and `</b>`.
    virtual HRESULT put_Text(LPCWSTR text) = 0;
    /// The second line.
    virtual HRESULT put_Status(LPCWSTR status) = 0;
    /// `UIX_ProgressStyle_Endless`: nothing can be measured, the bar moves.
    virtual HRESULT SetStyle(DWORD style) = 0;
    virtual HRESULT put_Total(double total) = 0;
    virtual HRESULT put_Pos(double position) = 0;
    /// Shows it. What was begun is ended by `Stop` or by the last release.
    virtual HRESULT Start() = 0;
    virtual HRESULT Stop() = 0;
    virtual HRESULT get_Canceled(VARIANT_BOOL* out_canceled) = 0;

protected:
    ~IKOV_ProgressMon() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_ProgressMon, "{C4AB38F9-D5BE-43D0-ADB3-33FB65DEE3EB}");
