// SPDX-License-Identifier: MIT
#include "app/MenuBarIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace velkor::MenuBarIcon {

QImage render(int size, const QColor& color)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / GridUnits, size / GridUnits);

    QPen pen(color, StrokeUnits, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);

    // The ring, open at the upper right where the bolt leaves it.
    QPainterPath ring;
    const QRectF circle(3, 3, 18, 18);
    ring.arcMoveTo(circle, 70);
    ring.arcTo(circle, 70, 290);
    painter.drawPath(ring);

    // The bolt: the quick jump from one app to the next.
    const QPointF bolt[] = {{13.5, 5.5}, {9.0, 12.5}, {15.0, 11.5}, {10.5, 18.5}};
    painter.drawPolyline(bolt, 4);
    return image;
}

QIcon icon(const QColor& color)
{
    QIcon result;
    for (const int size : {16, MenuBarSize, 22, 24, 32, 2 * MenuBarSize, 48, 64})
        result.addPixmap(QPixmap::fromImage(render(size, color)));
    result.setIsMask(true);
    return result;
}

} // namespace velkor::MenuBarIcon
