#pragma once

#include <QLabel>

/// A label of plain text that shows an ellipsis, and a tool tip with the whole, where the text is too long.
class LabelFace final : public QLabel {
public:
    explicit LabelFace(QWidget* parent);

    void SetElide(Qt::TextElideMode mode);
    Qt::TextElideMode Elide() const noexcept { return m_elide; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// Letter by letter, but for a label that names a control, where "&" marks the key that leads there.
    int DrawFlags() const;
    QString Drawn() const;

    Qt::TextElideMode m_elide = Qt::ElideRight;
};
