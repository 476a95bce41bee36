// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>
#include <QColor>

namespace velkor {

// A colour sample that can be clicked: a circle (a preset) or a small rounded
// rectangle (the custom colour), drawn without button chrome.
class AccentSwatch : public QAbstractButton
{
    Q_OBJECT
public:
    enum class Shape
    {
        circle,      // a preset
        roundedRect, // the custom colour
        preview      // the editor's larger sample
    };

    explicit AccentSwatch(Shape shape, QWidget* parent = nullptr);

    void setColor(const QColor& color);
    QColor color() const { return m_color; }

    // The strong ring that marks the current choice.
    void setMarked(bool marked);
    bool isMarked() const { return m_marked; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QSize sampleSize() const;
    double cornerRadius() const;

    Shape m_shape;
    QColor m_color;
    bool m_marked = false;
};

} // namespace velkor
