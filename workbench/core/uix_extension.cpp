#include <algorithm>
#include <array>

#include "platform/errors.h"
#include "workbench/core/errors.h"
#include "workbench/core/extensions.h"

namespace {

constexpr ULONG MaxPictureSide = 4096;
/// Signature, then the header chunk up to width and height (ISO/IEC 15948, 5.2 and 11.2.2).
constexpr std::array<unsigned char, 16> PngStart = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R'};

class Picture final : public cCoClassUnknownT<KOV::IKOV_Picture> {
public:
    explicit Picture(SIZE size) : m_size(size) {}
    HRESULT get_Size(SIZE* out_size) override {
        if (out_size == nullptr) {
            return E_POINTER;
        }
        *out_size = m_size;
        return S_OK;
    }

private:
    const SIZE m_size;
};

class MultiSizeImage final : public cCoClassUnknownT<KOV::IKOV_MultiSizeImage> {
public:
    HRESULT AddPicture(KOV::IKOV_Picture* picture, DWORD) override {
        if (picture == nullptr) {
            return E_INVALIDARG;
        }
        return AtBorder(nullptr, [&] {
            m_pictures.emplace_back(picture);
            return S_OK;
        });
    }
    HRESULT Finish(ULONG* out_count) override {
        if (out_count == nullptr) {
            return E_POINTER;
        }
        *out_count = static_cast<ULONG>(m_pictures.size());
        return S_OK;
    }

private:
    std::vector<ComPtr<KOV::IKOV_Picture>> m_pictures;
};

LONG ReadSide(const unsigned char* bytes) {
    const ULONG side = ULONG{bytes[0]} << 24 | ULONG{bytes[1]} << 16 | ULONG{bytes[2]} << 8 | bytes[3];
    return side <= MaxPictureSide ? static_cast<LONG>(side) : 0;
}

class UixExtension final : public cCoClassUnknownT<KOV::IUIX_Inst> {
public:
    HRESULT CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD*, ULONG) override {
        if (out_image == nullptr) {
            return E_POINTER;
        }
        *out_image = MakeObject<MultiSizeImage>().Detach();
        return *out_image != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) override {
        if (out_picture == nullptr) {
            return E_POINTER;
        }
        *out_picture = nullptr;
        std::array<unsigned char, PngStart.size() + 8> start{};
        ULONG count = 0;
        if (stream == nullptr || FAILED(stream->Read(start.data(), start.size(), &count)) || count != start.size() ||
            !std::equal(PngStart.begin(), PngStart.end(), start.begin())) {
            return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
        }
        const SIZE size{ReadSide(start.data() + PngStart.size()), ReadSide(start.data() + PngStart.size() + 4)};
        if (size.cx == 0 || size.cy == 0) {
            return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
        }
        *out_picture = MakeObject<Picture>(size).Detach();
        return *out_picture != nullptr ? S_OK : E_OUTOFMEMORY;
    }
};

} // namespace

ComPtr<KOV::IUIX_Inst> MakeUixExtension() { return MakeObject<UixExtension>(); }
