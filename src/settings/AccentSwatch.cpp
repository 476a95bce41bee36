// SPDX-License-Identifier: MIT
#include "settings/AccentSwatch.h"

#include <QPainter>

namespace velkor {

namespace {
constexpr int CircleDiameter = 20;
constexpr QSize RectSize(34, 22);
constexpr double RectRadius = 5;
constexpr QSize PreviewSize(44, 28);
constexpr double PreviewRadius = 8;
constexpr double MarkedRing = 2;
constexpr double PlainRing = 1;
// Room around the sample for the ring.
constexpr int Inset = 2;
} // namespace

AccentSwatch::AccentSwatch(Shape shape, QWidget* parent) : QAbstractButton(parent), m_shape(shape)
{
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

void AccentSwatch::setColor(const QColor& color)
{
    m_color = color;
    update();
}

void AccentSwatch::setMarked(bool marked)
{
    m_marked = marked;
    update();
}

QSize AccentSwatch::sampleSize() const
{
    switch (m_shape) {
    case Shape::circle:
        return {CircleDiameter, CircleDiameter};
    case Shape::roundedRect:
        return RectSize;
    case Shape::preview:
        return PreviewSize;
    }
    return RectSize;
}

double AccentSwatch::cornerRadius() const
{
    return m_shape == Shape::preview ? PreviewRadius : RectRadius;
}

QSize AccentSwatch::sizeHint() const
{
    return sampleSize() + QSize(2 * Inset, 2 * Inset);
}

void AccentSwatch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF rect(QPointF(0, 0), QSizeF(sampleSize()));
    rect.moveCenter(QRectF(this->rect()).center());

    QColor ring = QColor(128, 128, 128, 128);
    double ringWidth = PlainRing;
    if (m_marked) {
        ring = palette().color(QPalette::WindowText);
        ringWidth = MarkedRing;
    }
    painter.setBrush(m_color);
    painter.setPen(QPen(ring, ringWidth));
    const double half = ringWidth / 2;
    const QRectF inner = rect.adjusted(half, half, -half, -half);
    if (m_shape == Shape::circle)
        painter.drawEllipse(inner);
    else
        painter.drawRoundedRect(inner, cornerRadius(), cornerRadius());
}

} // namespace velkor
