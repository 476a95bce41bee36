// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayContent.h"
#include "overlay/OverlayIcons.h"
#include "overlay/TextWidths.h"
#include "settings/PlatformTraits.h"

#include <QImage>
#include <QList>
#include <QRectF>
#include <QRegion>
#include <QWidget>
#include <memory>

namespace velkor {

class OverlayModel;
class Preferences;
class ShellIntegration;

// The overlay's drawing: one capsule pill with the selected candidate (icon,
// texts, chip) and under it one dot per candidate. Redraws on every change of
// the model or the preferences; its size hint is its natural size, padding for
// the shadow included, so the panel can size itself from it.
class OverlayView : public QWidget
{
    Q_OBJECT
public:
    static constexpr int Padding = 34; // transparent room for the shadow
    static constexpr int StackSpacing = 9;
    static constexpr int PillPaddingX = 16;
    static constexpr int PillPaddingY = 12;
    static constexpr int PillSpacing = 12;
    static constexpr int PillMinWidth = 200;
    static constexpr int IconSize = 42;
    static constexpr int ChipMinWidth = 34;
    static constexpr int ChipHeight = 32;
    static constexpr int ChipLeading = 4;
    static constexpr int DotSize = 6;
    static constexpr int DotSpacing = 6;
    static constexpr double SolidBackgroundAlpha = 0.95;

    OverlayView(OverlayModel& model, Preferences& prefs, ShellIntegration& shell,
                KeyNaming naming = KeyNaming::pc, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // Where things are drawn at the current size, in widget coordinates.
    QRectF pillRect() const;
    QRectF chipRect() const;
    QList<QRectF> dotRects() const;

    bool isLight() const;
    QColor accent() const;
    // Whether the platform blurs behind the pill (the setting is on and the
    // platform can); otherwise the pill is filled almost opaquely.
    bool blurActive() const;

    // Without a compositor nothing the window draws can be see-through: the
    // view then paints the pill and the dots opaquely on the panel colour,
    // with no shadow, and the window is cut to shape().
    void setComposited(bool composited);
    bool isComposited() const { return m_composited; }
    // The pixels the pill and the dots cover (those whose centre lies inside
    // them), in widget coordinates.
    QRegion shape() const;

signals:
    // The pill moved or changed size: the window updates its blur area.
    void pillGeometryChanged();

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    struct Geometry
    {
        QRectF pill;
        QRectF icon;
        QRectF primary;
        QRectF secondary;
        QRectF chip;
        QList<QRectF> dots;
    };

    // The texts' extents, shaped once per content: layout, paint, shape and
    // hit tests all ask for the geometry.
    struct Measures
    {
        double textColumnWidth = 0;
        double textColumnHeight = 0;
        double titleHeight = 0;
        QSizeF chip;
    };

    // The texts' faces, made again when the system's fonts change.
    struct Faces
    {
        TextWidths title;
        TextWidths secondary;
        TextWidths query;
        TextWidths badge;
    };
    static std::unique_ptr<Faces> makeFaces();
    TextWidths& chipFace(const OverlayChip& chip) const;

    void contentChanged();
    void measure();
    QSizeF naturalPillSize() const;
    Geometry geometryFor(const QSize& size) const;

    void paintShadow(QPainter& painter, const QRectF& pill);
    void paintBackground(QPainter& painter, const QRectF& pill) const;
    void paintIcon(QPainter& painter, const QRectF& frame);
    void paintTexts(QPainter& painter, const Geometry& geometry) const;
    void paintChip(QPainter& painter, const QRectF& frame) const;
    void paintDots(QPainter& painter, const QList<QRectF>& dots) const;

    OverlayModel& m_model;
    Preferences& m_prefs;
    ShellIntegration& m_shell;
    KeyNaming m_naming;
    OverlayContent m_content;
    std::unique_ptr<Faces> m_faces;
    Measures m_measures;
    // shape() of the last pill and dots it was asked for.
    mutable QRectF m_shapePill;
    mutable QList<QRectF> m_shapeDots;
    mutable QRegion m_shape;
    QImage m_shadow; // cached for m_shadowSize
    OverlayIcons m_icons;
    QSize m_shadowSize;
    bool m_composited = true;
};

} // namespace velkor
