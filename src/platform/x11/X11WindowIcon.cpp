// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowIcon.h"

#include <QImage>
#include <QList>
#include <QPixmap>
#include <algorithm>
#include <cstring>

namespace velkor::x11 {

namespace {

constexpr quint32 PreferredMin = 42;
constexpr quint32 PreferredMax = 84;
// Larger frames are not icons but a client's mistake; reading them would
// only cost memory.
constexpr quint32 MaxSide = 1024;

struct Frame
{
    quint32 width = 0;
    quint32 height = 0;
    const quint32* pixels = nullptr;

    quint32 side() const { return std::max(width, height); }
};

QList<Frame> framesOf(const quint32* data, size_t count)
{
    QList<Frame> frames;
    size_t at = 0;
    while (data && count - at >= 2) {
        const quint32 width = data[at];
        const quint32 height = data[at + 1];
        at += 2;
        if (width > MaxSide || height > MaxSide)
            break; // the sizes are garbage, so is every later offset
        const size_t pixels = size_t(width) * size_t(height);
        if (pixels > count - at)
            break;
        if (pixels > 0)
            frames.append({width, height, data + at});
        at += pixels;
    }
    return frames;
}

// The frames for a 42-point icon; otherwise the smallest larger frame (scaled
// down looks better than scaled up), else the largest one.
QList<Frame> suitable(const QList<Frame>& frames)
{
    QList<Frame> chosen;
    for (const Frame& frame : frames)
        if (frame.side() >= PreferredMin && frame.side() <= PreferredMax)
            chosen.append(frame);
    if (!chosen.isEmpty() || frames.isEmpty())
        return chosen;
    const auto better = [](const Frame& a, const Frame& b) {
        const bool aLarger = a.side() > PreferredMax;
        const bool bLarger = b.side() > PreferredMax;
        if (aLarger != bLarger)
            return aLarger;
        return aLarger ? a.side() < b.side() : a.side() > b.side();
    };
    chosen.append(*std::min_element(frames.begin(), frames.end(), better));
    return chosen;
}

QImage imageOf(const Frame& frame)
{
    // Format_ARGB32 is 0xAARRGGBB in host order, as the cardinals are.
    QImage image(int(frame.width), int(frame.height), QImage::Format_ARGB32);
    for (quint32 y = 0; y < frame.height; ++y)
        std::memcpy(image.scanLine(int(y)), frame.pixels + size_t(y) * frame.width,
                    size_t(frame.width) * sizeof(quint32));
    return image;
}

} // namespace

QIcon iconFromNetWmIcon(const quint32* data, size_t count)
{
    QIcon icon;
    for (const Frame& frame : suitable(framesOf(data, count)))
        icon.addPixmap(QPixmap::fromImage(imageOf(frame)));
    return icon;
}

} // namespace velkor::x11
