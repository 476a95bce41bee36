// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QRectF>
#include <memory>

class QWindow;

namespace velkor {

// The native side of the overlay: a floating, non-activating panel on every
// Space that is brought forward without activating Velkor, and the blur
// behind the pill in a child window of its own just below it (AppKit's own
// frame view is left alone). Lives as a child of the window it serves.
class MacOverlayWindow final : public QObject
{
    Q_OBJECT
public:
    // Makes a created, not yet shown, window an overlay.
    static void prepare(QWindow* window);
    // The overlay prepare() made of window, or null.
    static MacOverlayWindow* of(QWindow* window);

    ~MacOverlayWindow() override;

    // Orders the shown window to the front of its level, Velkor staying
    // inactive, with the blur below it.
    void orderFront();
    // The blur behind area (window coordinates, top-left origin); an empty
    // area removes it. A radius of 0 rounds it into a capsule.
    void setBlur(const QRectF& area, qreal cornerRadius);

    // The blur's child window; defined where it is made.
    struct Blur;

private:
    explicit MacOverlayWindow(QWindow* window);
    void placeBlur();
    void hideBlur();

    QWindow* m_window;
    QRectF m_blurArea;
    qreal m_blurRadius = 0;
    std::unique_ptr<Blur> m_blur;
};

} // namespace velkor
