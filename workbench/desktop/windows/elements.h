#pragma once

#include "workbench/desktop/objects/ui_object.h"
#include "workbench/desktop/windows/layout.h"

/// How a kind of control takes part when its window grows along an axis.
struct Growth {
    bool may_grow;
    /// Negative when others had better grow.
    int gain;
};

/// A kind of control: the class behind it, and how it grows.
struct Element {
    ElementKind kind;
    /// The class. It is in no window yet, and has nothing of the layout but what decides its class.
    ComPtr<KOV::IUIX_Obj> (*make)(const LayoutItem& item, QWidget* parent);
    Growth (*horizontal)(const LayoutItem& item);
    Growth (*vertical)(const LayoutItem& item);
};

const Element& ElementOf(ElementKind kind);
