#pragma once

/// What a window asks of its controls beside the host's interfaces. Main thread.

#include <QSize>
#include <QString>

#include "platform/types.h"
#include "workbench/desktop/windows/layout.h"

class Control {
public:
    /// Takes its texts, icon and style from the layout. Once, after the control was put into its window.
    virtual void Fill(const LayoutItem& item) = 0;
    /// The size below which its text would be cut; 0 where any will do.
    virtual QSize Least() const { return {0, 0}; }
    /// `E_NOTIMPL` by a control that shows no text. An equal text changes nothing.
    virtual HRESULT PutText(const QString&) { return E_NOTIMPL; }
    virtual HRESULT GetText(QString&) const { return E_NOTIMPL; }
    /// Whether a person types into it: its text stands for nothing else then.
    virtual bool IsTypedInto() const { return false; }
    /// 0 or 1. `E_NOTIMPL` by a control that can't be ticked.
    virtual HRESULT PutCheck(LONG) { return E_NOTIMPL; }
    virtual HRESULT GetCheck(LONG&) const { return E_NOTIMPL; }

protected:
    ~Control() = default;
};
