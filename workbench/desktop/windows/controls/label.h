#pragma once

#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/controls/control.h"
#include "workbench/desktop/windows/controls/label_face.h"

/// A line of plain text that nobody edits. Where it is too long it has an ellipsis, and a tool tip with the whole.
class Label final : public UiObjectT<>, public Control {
public:
    explicit Label(QWidget* parent);

    void Fill(const LayoutItem& item) override;
    /// A text that may have its ellipsis in the middle, such as a path, asks for no room.
    QSize Least() const override;
    HRESULT PutText(const QString& text) override;
    HRESULT GetText(QString& out_text) const override;

private:
    LabelFace* Face() const { return static_cast<LabelFace*>(Widget()); }

    /// Only a text of the layout's is worth a wider window: another may be of any length.
    bool m_is_of_layout = true;
};
