#include "workbench/desktop/windows/controls/picture.h"

#include <algorithm>

#include <QFrame>
#include <QIcon>
#include <QPainter>

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/theme/icons.h"

/// Draws the icon anew in each size and on each screen, so that it stays sharp.
class IconView final : public QWidget {
public:
    explicit IconView(QWidget* parent) : QWidget(parent) {}

    void SetIcon(const QIcon& icon) {
        m_icon = icon;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        m_icon.paint(&painter, rect(), Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
    }

private:
    QIcon m_icon;
};

namespace {

QWidget* MakeLine(QWidget* parent) {
    auto* const line = new QFrame(parent); // its parent owns it
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace

Picture::Picture(QWidget* parent, bool is_line)
    : UiObjectT(is_line ? MakeLine(parent) : new IconView(parent)), m_is_line(is_line) {}

IconView* Picture::Face() const { return m_is_line ? nullptr : static_cast<IconView*>(Widget()); }

void Picture::Fill(const LayoutItem& item) {
    if (Face() != nullptr && !item.icon.empty()) {
        Face()->SetIcon(::GetIcon(ToQString(item.icon)));
    }
}

HRESULT Picture::put_Image(KOV::IKOV_MultiSizeImage* image) {
    if (m_is_line) {
        return E_NOTIMPL;
    }
    if (Face() == nullptr) {
        return window_is_gone;
    }
    Face()->SetIcon(IconOf(image));
    return S_OK;
}
