#include "workbench/desktop/windows/desktop_uix.h"

#include <QApplication>
#include <QStyle>
#include <QtDebug>

#include "platform/errors.h"
#include "workbench/core/errors.h"
#include "workbench/desktop/commands/command_bar.h"
#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/theme/icons.h"
#include "workbench/desktop/windows/application.h"
#include "workbench/desktop/windows/controls/number_value.h"
#include "workbench/desktop/windows/controls/wait_progress.h"
#include "workbench/desktop/windows/window.h"

namespace {

template <class Object, class Interface>
HRESULT Give(const ComPtr<Object>& object, Interface** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    ComPtr<Interface>(object).CopyTo(out_object);
    return *out_object != nullptr ? S_OK : E_OUTOFMEMORY;
}

ComPtr<KOV::IUIX_Obj> MakeWaitProgress(const KOV::CreateUiObjectParameters& parameters, KOV::IKOV_Inst& host) {
    UiObject* const around = PartOf(parameters.parent_object);
    if (around == nullptr || around->Widget() == nullptr || around->Owner() == nullptr) {
        throw HostException(E_INVALIDARG, "A wait control needs a control to lie in");
    }
    const ComPtr<WaitProgress> progress = MakeObject<WaitProgress>(around->Widget(), parameters.rect);
    if (progress.IsNull()) {
        throw HostException(E_OUTOFMEMORY, "There is no memory for a control");
    }
    DWORD id = 0;
    if (parameters.layout_id != nullptr) {
        (void)host.Str2ID(parameters.layout_id, VARIANT_TRUE, &id);
    }
    progress->Adopt(around->Owner(), parameters.parent_object, id);
    return progress;
}

} // namespace

DesktopUix::DesktopUix(KOV::IKOV_Inst& host, CommandCollection& commands, const QString& places_file)
    : UixExtension(&commands), m_surroundings{&host, MakeObject<Application>()}, m_commands(commands), m_places(places_file) {}

HRESULT DesktopUix::CreateMultiSizeImage(KOV::IKOV_MultiSizeImage** out_image, const DWORD*, ULONG) {
    return Give(MakeImage(), out_image);
}

HRESULT DesktopUix::CreateImageFromStream(IStream* stream, KOV::IKOV_Picture** out_picture) {
    return DecodePicture(stream, out_picture);
}

HRESULT DesktopUix::CreateObj(const KOV::CreateUiObjectParameters* parameters, KOV::IUIX_Obj** out_object) {
    if (out_object != nullptr) {
        *out_object = nullptr;
    }
    if (parameters == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        ComPtr<KOV::IUIX_Obj> object;
        try {
            if (parameters->kind == KOV::UIX_ObjKind_Window) {
                object = Window::Make(*parameters, m_surroundings, m_places);
            } else if (parameters->kind == KOV::UIX_ObjKind_WaitProgress) {
                object = MakeWaitProgress(*parameters, *m_surroundings.host);
            } else {
                return E_NOTIMPL;
            }
        } catch (const HostException& failure) {
            qCritical("%s", failure.what());
            throw;
        }
        if (out_object != nullptr) {
            *out_object = object.Detach();
        }
        return S_OK;
    });
}

HRESULT DesktopUix::GetIcon(LPCWSTR name, KOV::IKOV_MultiSizeImage** out_icon) {
    if (out_icon == nullptr) {
        return E_POINTER;
    }
    *out_icon = nullptr;
    const QIcon icon = ::GetIcon(ToQString(name));
    return icon.isNull() ? S_OK : Give(MakeImage(icon), out_icon);
}

HRESULT DesktopUix::CreateFileTypeIcon(LPWSTR extension, DWORD, KOV::IKOV_MultiSizeImage** out_icon) {
    return Give(MakeImage(FileTypeIcon(ToQString(static_cast<LPCWSTR>(extension)))), out_icon);
}

HRESULT DesktopUix::CreateCmdBar(KOV::IUIX_Obj* parent, const RECT*, IUnknown*, IUnknown*, DWORD style,
                                 KOV::IUIX_CmdBar** out_bar) {
    return CreateCommandBar(m_commands, parent, style, out_bar);
}

HRESULT DesktopUix::CreateNumberValue(KOV::IUIX_NumberValue** out_value) { return Give(MakeObject<NumberValue>(), out_value); }

HRESULT DesktopUix::get_Metric(DWORD which, LONG* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    *out_value = 0;
    if (which != KOV::UIX_Metric_ScrollBarWidth) {
        return E_NOTIMPL;
    }
    *out_value = QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    return S_OK;
}
