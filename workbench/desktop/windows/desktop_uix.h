#pragma once

#include <memory>

#include "workbench/core/uix_extension.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/windows/window_places.h"

/// "UIX" of the desktop: windows out of layouts, controls, icons of the theme. Main thread, but for images.
class DesktopUix final : public UixExtension {
public:
    /// `host` and `commands` outlive it. `places_file` keeps where windows stood; empty keeps nothing.
    DesktopUix(KOV::IKOV_Inst& host, CommandCollection& commands, const QString& places_file);

    HRESULT CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD* numbers, ULONG count) override;
    HRESULT CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) override;
    /// A window, or the wait control. A broken layout is 0x8007000D, and its fault is written to the program's errors.
    HRESULT CreateObj(const KOV::CreateUiObjectParameters* parameters, KOV::IUIX_Obj** out_object) override;
    HRESULT GetIcon(LPCWSTR name, KOV::IKOV_MultiSizeImage** out_icon) override;
    HRESULT CreateFileTypeIcon(LPWSTR extension, DWORD flags, KOV::IKOV_MultiSizeImage** out_icon) override;
    HRESULT CreateCmdBar(KOV::IUIX_Obj* parent, const RECT* rect, IUnknown* reserved1, IUnknown* reserved2, DWORD style,
                         KOV::IUIX_CmdBar** out_bar) override;
    HRESULT CreateNumberValue(KOV::IUIX_NumberValue** out_value) override;
    HRESULT get_Metric(DWORD which, LONG* out_value) override;

    /// For windows that the program makes itself.
    const Surroundings& Around() const noexcept { return m_surroundings; }
    const WindowPlaces& Places() const noexcept { return m_places; }

private:
    ~DesktopUix() override = default;

    Surroundings m_surroundings;
    CommandCollection& m_commands;
    const WindowPlaces m_places;
};
