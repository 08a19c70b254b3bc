#pragma once

#include "host/controls.h"
#include "workbench/desktop/objects/ui_object.h"

/// A turning ring that shows that something is under way, in the middle of the control that it lies in. Hidden until it is shown.
class WaitProgress final : public UiObjectT<KOV::IUIX_WaitProgress> {
public:
    /// `rect` gives its size.
    WaitProgress(QWidget* parent, const RECT& rect);

    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override;
    HRESULT Start() override;
    HRESULT Stop() override;
};
