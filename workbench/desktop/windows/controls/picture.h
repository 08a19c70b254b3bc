#pragma once

#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"

class IconView;

/// A picture; with `picture_style_line` a line between parts of a window.
class Picture final : public UiObjectT<KOV::IUIX_Picture>, public Control {
public:
    Picture(QWidget* parent, bool is_line);

    void Fill(const LayoutItem& item) override;

    /// Null shows nothing. `E_NOTIMPL` for a line.
    HRESULT put_Image(KOV::IKOV_MultiSizeImage* image) override;

private:
    IconView* Face() const;

    const bool m_is_line;
};
