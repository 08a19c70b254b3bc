#include "workbench/desktop/objects/images.h"

#include <vector>

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QPixmap>

#include "host/object_bases.h"
#include "platform/errors.h"

namespace {

constexpr int longest_side = 4096;
/// Nothing that is a picture of an icon comes near.
constexpr qsizetype most_bytes = 16 * 1024 * 1024;
constexpr HRESULT no_picture = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

struct IDesktopPicture : IUnknown {
    virtual const QImage& Pixels() const noexcept = 0;

protected:
    ~IDesktopPicture() = default;
};

struct IDesktopImage : IUnknown {
    virtual QIcon Icon() = 0;

protected:
    ~IDesktopImage() = default;
};

} // namespace
KOV_INTERFACE_ID(IDesktopPicture, "{0E5F7B55-0C39-4B07-9A1E-7C3A15C0B6D2}");
KOV_INTERFACE_ID(IDesktopImage, "{B7B3F6E1-5A0C-4A26-8E8B-2F5C9E1D4433}");
namespace {

class Picture final : public cCoClassUnknownT<KOV::IKOV_Picture, IDesktopPicture> {
public:
    explicit Picture(QImage pixels) : m_pixels(std::move(pixels)) {}
    HRESULT get_Size(SIZE* out_size) override {
        if (out_size == nullptr) {
            return E_POINTER;
        }
        *out_size = {m_pixels.width(), m_pixels.height()};
        return S_OK;
    }
    const QImage& Pixels() const noexcept override { return m_pixels; }

private:
    const QImage m_pixels;
};

/// Pictures come on any thread, and pixmaps live on the main one alone: so the icon is made when it is first shown.
class Image final : public cCoClassUnknownT<KOV::IKOV_MultiSizeImage, IDesktopImage> {
public:
    explicit Image(QIcon icon) : m_icon(std::move(icon)) {}

    HRESULT AddPicture(KOV::IKOV_Picture* picture, DWORD) override {
        const ComPtr<IDesktopPicture> pixels = ComPtr<KOV::IKOV_Picture>(picture).As<IDesktopPicture>();
        if (pixels.IsNull()) {
            return E_INVALIDARG;
        }
        m_pictures.push_back(pixels->Pixels());
        return S_OK;
    }
    HRESULT Finish(ULONG* out_count) override {
        if (out_count == nullptr) {
            return E_POINTER;
        }
        *out_count = static_cast<ULONG>(m_pictures.size());
        return S_OK;
    }
    QIcon Icon() override {
        for (const QImage& picture : std::exchange(m_pictures, {})) {
            m_icon.addPixmap(QPixmap::fromImage(picture));
        }
        return m_icon;
    }

private:
    QIcon m_icon;
    std::vector<QImage> m_pictures;
};

QByteArray ReadAll(IStream* stream) {
    QByteArray bytes;
    char block[16 * 1024];
    ULONG count = 0;
    while (bytes.size() <= most_bytes && SUCCEEDED(stream->Read(block, sizeof(block), &count)) && count > 0) {
        bytes.append(block, count);
    }
    return bytes;
}

} // namespace

ComPtr<KOV::IKOV_MultiSizeImage> MakeImage(QIcon icon) { return MakeObject<Image>(std::move(icon)); }

ComPtr<KOV::IKOV_MultiSizeImage> MakeImage() { return MakeObject<Image>(QIcon()); }

HRESULT DecodePicture(IStream* stream, KOV::IKOV_Picture** out_picture) {
    if (out_picture == nullptr) {
        return E_POINTER;
    }
    *out_picture = nullptr;
    if (stream == nullptr) {
        return E_INVALIDARG;
    }
    QByteArray bytes = ReadAll(stream);
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "png");
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (bytes.size() > most_bytes || size.isEmpty() || size.width() > longest_side || size.height() > longest_side) {
        return no_picture;
    }
    QImage pixels = reader.read();
    if (pixels.isNull()) {
        return no_picture;
    }
    *out_picture = MakeObject<Picture>(std::move(pixels)).Detach();
    return *out_picture != nullptr ? S_OK : E_OUTOFMEMORY;
}

QIcon IconOf(KOV::IKOV_MultiSizeImage* image) {
    const ComPtr<IDesktopImage> desktop = ComPtr<KOV::IKOV_MultiSizeImage>(image).As<IDesktopImage>();
    return desktop.IsNull() ? QIcon() : desktop->Icon();
}
