#pragma once

/// Images that cross the host's interfaces.

#include <QIcon>

#include "host/user_interface.h"

/// An image of an icon. Main thread.
ComPtr<KOV::IKOV_MultiSizeImage> MakeImage(QIcon icon);
/// An empty image that takes pictures. Any thread; one thread at a time fills it, before anybody shows it.
ComPtr<KOV::IKOV_MultiSizeImage> MakeImage();
/// Decodes a picture in the PNG format, at most 4096 pixels wide and high; 0x8007000D for another. Any thread.
HRESULT DecodePicture(IStream* stream, KOV::IKOV_Picture** out_picture);

/// The icon that an image holds; a null icon for null and for an image that isn't the desktop's. Main thread.
QIcon IconOf(KOV::IKOV_MultiSizeImage* image);
