#include "workbench/core/uix_extension.h"

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

class Theme final : public cCoClassUnknownT<KOV::IUIX_Theme> {};

constexpr HRESULT no_window_here = HRESULT_FROM_WIN32(1459);

template <class Object>
HRESULT Without(Object** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    *out_object = nullptr;
    return no_window_here;
}

template <class Object>
HRESULT Give(ComPtr<Object> object, Object** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    *out_object = object.Detach();
    return *out_object != nullptr ? S_OK : E_OUTOFMEMORY;
}

} // namespace

HRESULT UixExtension::CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD*, ULONG) {
    if (out_image == nullptr) {
        return E_POINTER;
    }
    *out_image = MakeObject<MultiSizeImage>().Detach();
    return *out_image != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT UixExtension::CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) {
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

HRESULT UixExtension::CreateObj(const KOV::CreateUiObjectParameters*, KOV::IUIX_Obj** out_object) {
    if (out_object != nullptr) {
        *out_object = nullptr;
    }
    return no_window_here;
}

HRESULT UixExtension::get_CmdManager(KOV::IUIX_CmdManager** out_manager) {
    return Give(ComPtr<KOV::IUIX_CmdManager>(m_commands), out_manager);
}

HRESULT UixExtension::get_Theme(KOV::IUIX_Theme** out_theme) {
    return Give(ComPtr<KOV::IUIX_Theme>(MakeObject<Theme>()), out_theme);
}

HRESULT UixExtension::GetIcon(LPCWSTR, KOV::IKOV_MultiSizeImage** out_icon) {
    if (out_icon == nullptr) {
        return E_POINTER;
    }
    *out_icon = nullptr;
    return S_OK;
}

HRESULT UixExtension::CreateFileTypeIcon(LPWSTR, DWORD, KOV::IKOV_MultiSizeImage** out_icon) { return Without(out_icon); }

HRESULT UixExtension::CreateCmdBar(KOV::IUIX_Obj*, const RECT*, IUnknown*, IUnknown*, DWORD, KOV::IUIX_CmdBar** out_bar) {
    return Without(out_bar);
}

HRESULT UixExtension::CreateCmdMenu(KOV::IUIX_CmdMenu** out_menu) { return Give(MakeCommandMenu(), out_menu); }

HRESULT UixExtension::CreateCmdPanel(KOV::IUIX_CmdPanel** out_panel) { return Give(MakeCommandPanel(), out_panel); }

HRESULT UixExtension::CreateNumberValue(KOV::IUIX_NumberValue** out_value) { return Without(out_value); }

HRESULT UixExtension::get_Metric(DWORD, LONG* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    *out_value = 0;
    return no_window_here;
}

ComPtr<KOV::IUIX_Inst> MakeUixExtension(CommandCollection* commands) { return MakeObject<UixExtension>(commands); }
