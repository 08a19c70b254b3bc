#pragma once

#include "host/commands.h"
#include "host/controls.h"
#include "host/list.h"
#include "host/property_sheets.h"
#include "host/ui_object.h"
#include "platform/com.h"

namespace KOV {

/// One decoded picture.
struct IKOV_Picture : IUnknown {
    virtual HRESULT get_Size(SIZE* out_size) = 0;

protected:
    ~IKOV_Picture() = default;
};

/// One image at several sizes.
struct IKOV_MultiSizeImage : IUnknown {
    virtual HRESULT AddPicture(IKOV_Picture* picture, DWORD reserved) = 0;
    /// Completes the image and gives the number of its pictures.
    virtual HRESULT Finish(ULONG* out_count) = 0;

protected:
    ~IKOV_MultiSizeImage() = default;
};

/// The theme that icons come from.
struct IUIX_Theme : IUnknown {
protected:
    ~IUIX_Theme() = default;
};

constexpr DWORD UIX_Metric_ScrollBarWidth = 2;

/// The user interface extension, "UIX". Main thread, but for the making of images.
struct IUIX_Inst : IUnknown {
    /// An empty image that takes one picture a size. `numbers` are the resource numbers of the pictures to come.
    virtual HRESULT CreateMultiSizeImage(IKOV_MultiSizeImage** out_image, const DWORD* numbers, ULONG count) = 0;
    /// Decodes a picture in the PNG format.
    virtual HRESULT CreateImageFromStream(IStream* stream, IKOV_Picture** out_picture) = 0;

    /// A window out of a layout, or a control. `out_object` may be null: the implementation object has it then. A host without
    /// windows fails with 0x800705B3.
    virtual HRESULT CreateObj(const CreateUiObjectParameters* parameters, IUIX_Obj** out_object) = 0;
    virtual HRESULT get_CmdManager(IUIX_CmdManager** out_manager) = 0;
    virtual HRESULT get_Theme(IUIX_Theme** out_theme) = 0;
    /// An icon of the theme by its name; null with success when the theme has none.
    virtual HRESULT GetIcon(LPCWSTR name, IKOV_MultiSizeImage** out_icon) = 0;
    /// The icon of a type of files, by its extension with the dot.
    virtual HRESULT CreateFileTypeIcon(LPWSTR extension, DWORD flags, IKOV_MultiSizeImage** out_icon) = 0;
    virtual HRESULT CreateCmdBar(IUIX_Obj* parent, const RECT* rect, IUnknown* reserved1, IUnknown* reserved2, DWORD style,
                                 IUIX_CmdBar** out_bar) = 0;
    virtual HRESULT CreateCmdMenu(IUIX_CmdMenu** out_menu) = 0;
    virtual HRESULT CreateCmdPanel(IUIX_CmdPanel** out_panel) = 0;
    virtual HRESULT CreateNumberValue(IUIX_NumberValue** out_value) = 0;
    /// A size of the desktop's, in pixels.
    virtual HRESULT get_Metric(DWORD which, LONG* out_value) = 0;

protected:
    ~IUIX_Inst() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_Picture, "{60006B0F-BD03-4F27-AE44-E2AB5596E8B5}");
KOV_INTERFACE_ID(KOV::IKOV_MultiSizeImage, "{896A6FA3-A5BC-4535-86B6-077228F6608D}");
KOV_INTERFACE_ID(KOV::IUIX_Theme, "{AB0F03B9-9B30-40B3-984E-FB6D72A8A8E8}");
KOV_INTERFACE_ID(KOV::IUIX_Inst, "{048BF578-486E-451D-B8F6-94DADEBE7915}");
