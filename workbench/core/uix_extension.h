#pragma once

#include "host/object_bases.h"
#include "host/user_interface.h"
#include "workbench/core/commands.h"

/// "UIX" of a host without windows: commands, images and a theme without icons; what needs a window fails with 0x800705B3. A host
/// with windows derives from it.
class UixExtension : public cCoClassUnknownT<KOV::IUIX_Inst> {
public:
    explicit UixExtension(CommandCollection* commands) : m_commands(commands) {}

    HRESULT CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD* numbers, ULONG count) override;
    HRESULT CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) override;
    HRESULT CreateObj(const KOV::CreateUiObjectParameters* parameters, KOV::IUIX_Obj** out_object) override;
    HRESULT get_CmdManager(KOV::IUIX_CmdManager** out_manager) override;
    HRESULT get_Theme(KOV::IUIX_Theme** out_theme) override;
    HRESULT GetIcon(LPCWSTR name, KOV::IKOV_MultiSizeImage** out_icon) override;
    HRESULT CreateFileTypeIcon(LPWSTR extension, DWORD flags, KOV::IKOV_MultiSizeImage** out_icon) override;
    HRESULT CreateCmdBar(KOV::IUIX_Obj* parent, const RECT* rect, IUnknown* reserved1, IUnknown* reserved2, DWORD style,
                         KOV::IUIX_CmdBar** out_bar) override;
    HRESULT CreateCmdMenu(KOV::IUIX_CmdMenu** out_menu) override;
    HRESULT CreateCmdPanel(KOV::IUIX_CmdPanel** out_panel) override;
    HRESULT CreateNumberValue(KOV::IUIX_NumberValue** out_value) override;
    HRESULT get_Metric(DWORD which, LONG* out_value) override;

protected:
    ~UixExtension() override = default;

private:
    const ComPtr<CommandCollection> m_commands;
};
