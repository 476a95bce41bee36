// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QSize>

namespace velkor::OverlayShadow {

// A soft shadow of a capsule of the given size: the capsule filled with
// color, blurred by about blurRadius. The image is larger than the capsule
// by margin(blurRadius) on every side.
QImage capsule(const QSize& size, int blurRadius, const QColor& color);

// How far the shadow reaches beyond the shape.
int margin(int blurRadius);

} // namespace velkor::OverlayShadow
