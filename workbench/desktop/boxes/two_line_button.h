#pragma once

#include <QPushButton>

/// A button with a description below its label, as wide as it gets.
class TwoLineButton final : public QPushButton {
public:
    TwoLineButton(const QString& label, QString description, QWidget* parent);

    const QString& Description() const { return m_description; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QString m_description;
};
