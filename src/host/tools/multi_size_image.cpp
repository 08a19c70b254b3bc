#include "host/tools/multi_size_image.h"

#include <vector>

#include "host/tools/resources.h"

namespace {

void AddPicture(KOV::IUIX_Inst* uix, KOV::IKOV_MultiSizeImage* image, WORD number) {
    const ComPtr<IStream> stream = OpenResourceStream(number, L"PNG");
    ComPtr<KOV::IKOV_Picture> picture;
    if (!stream.IsNull() && SUCCEEDED(uix->CreateImageFromStream(stream, &picture)) && !picture.IsNull()) {
        (void)image->AddPicture(picture, 0); // a size that isn't taken is left out
    }
}

} // namespace

ComPtr<KOV::IKOV_MultiSizeImage> BuildMultiSizeImage(KOV::IUIX_Inst* uix, std::span<const WORD> numbers) {
    const std::vector<DWORD> wide_numbers(numbers.begin(), numbers.end());
    ComPtr<KOV::IKOV_MultiSizeImage> image;
    if (uix == nullptr ||
        FAILED(uix->CreateMultiSizeImage(&image, wide_numbers.data(), static_cast<ULONG>(wide_numbers.size()))) ||
        image.IsNull()) {
        return nullptr;
    }
    for (const WORD number : numbers) {
        AddPicture(uix, image, number);
    }
    ULONG count = 0;
    return SUCCEEDED(image->Finish(&count)) && count > 0 ? image : nullptr;
}
