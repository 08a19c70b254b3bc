#pragma once

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

/// The user interface extension, "UIX". Main thread.
struct IUIX_Inst : IUnknown {
    /// An empty image that takes one picture a size. `numbers` are the resource numbers of the pictures to come.
    virtual HRESULT CreateMultiSizeImage(IKOV_MultiSizeImage** out_image, const DWORD* numbers, ULONG count) = 0;
    /// Decodes a picture in the PNG format.
    virtual HRESULT CreateImageFromStream(IStream* stream, IKOV_Picture** out_picture) = 0;

protected:
    ~IUIX_Inst() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_Picture, "{60006B0F-BD03-4F27-AE44-E2AB5596E8B5}");
KOV_INTERFACE_ID(KOV::IKOV_MultiSizeImage, "{896A6FA3-A5BC-4535-86B6-077228F6608D}");
KOV_INTERFACE_ID(KOV::IUIX_Inst, "{048BF578-486E-451D-B8F6-94DADEBE7915}");
