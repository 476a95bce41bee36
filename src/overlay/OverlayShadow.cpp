// SPDX-License-Identifier: MIT
#include "overlay/OverlayShadow.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <vector>

namespace velkor::OverlayShadow {

namespace {

// One horizontal or vertical running-average pass over an 8-bit buffer.
void boxPass(std::vector<int>& buffer, int width, int height, int radius, bool horizontal)
{
    const int lines = horizontal ? height : width;
    const int length = horizontal ? width : height;
    const int stride = horizontal ? 1 : width;
    std::vector<int> line(size_t(length), 0);
    const int span = 2 * radius + 1;
    for (int l = 0; l < lines; ++l) {
        const int start = horizontal ? l * width : l;
        for (int i = 0; i < length; ++i)
            line[size_t(i)] = buffer[size_t(start + i * stride)];
        int sum = 0;
        for (int i = -radius; i <= radius; ++i)
            sum += (i >= 0 && i < length) ? line[size_t(i)] : 0;
        for (int i = 0; i < length; ++i) {
            buffer[size_t(start + i * stride)] = sum / span;
            const int out = i - radius;
            const int in = i + radius + 1;
            sum -= (out >= 0) ? line[size_t(out)] : 0;
            sum += (in < length) ? line[size_t(in)] : 0;
        }
    }
}

} // namespace

int margin(int blurRadius)
{
    return blurRadius * 3 / 2 + 2;
}

QImage capsule(const QSize& size, int blurRadius, const QColor& color)
{
    const int m = margin(blurRadius);
    const QSize full = size + QSize(2 * m, 2 * m);
    if (size.isEmpty())
        return {};

    QImage shape(full, QImage::Format_Alpha8);
    shape.fill(0);
    {
        QPainter painter(&shape);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF rect(m, m, size.width(), size.height());
        const qreal radius = rect.height() / 2;
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawRoundedRect(rect, radius, radius);
    }

    // Three box passes approximate a Gaussian whose sigma is half the radius.
    const int w = full.width();
    const int h = full.height();
    std::vector<int> alpha(size_t(w) * size_t(h));
    for (int y = 0; y < h; ++y) {
        const uchar* row = shape.constScanLine(y);
        for (int x = 0; x < w; ++x)
            alpha[size_t(y) * size_t(w) + size_t(x)] = row[x];
    }
    const int box = std::max(1, blurRadius / 2);
    for (int pass = 0; pass < 3; ++pass) {
        boxPass(alpha, w, h, box, true);
        boxPass(alpha, w, h, box, false);
    }

    QImage shadow(full, QImage::Format_ARGB32_Premultiplied);
    const QRgb base = color.rgba();
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<QRgb*>(shadow.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int a = alpha[size_t(y) * size_t(w) + size_t(x)] * qAlpha(base) / 255;
            row[x] = qPremultiply(qRgba(qRed(base), qGreen(base), qBlue(base), a));
        }
    }
    return shadow;
}

} // namespace velkor::OverlayShadow
