// SPDX-License-Identifier: MIT
#include "overlay/OverlayView.h"

#include "overlay/OverlayFonts.h"
#include "overlay/OverlayModel.h"
#include "overlay/OverlayShadow.h"
#include "overlay/Theme.h"
#include "platform/ShellIntegration.h"
#include "settings/Preferences.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace velkor {

namespace {

constexpr int TitlePixels = 19;
constexpr int SecondaryPixels = 12;
constexpr int BadgePixels = 16;
constexpr int QueryPixels = 14;
constexpr double ChipRadius = 9;
constexpr double QueryChipPadding = 9;
constexpr double BadgeChipPadding = 8;
constexpr double TextLineGap = 1;
constexpr int ShadowBlur = 14;
constexpr int ShadowOffsetY = 5;
constexpr double ShadowAlpha = 0.28;
// With blur behind, the tint lets the blurred desktop show through.
constexpr double BlurTintAlpha = 0.6;

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(float(alpha));
    return color;
}

QColor windowColor(bool light)
{
    return light ? QColor(236, 236, 236) : QColor(44, 44, 46);
}

QColor labelColor(bool light)
{
    return light ? QColor(0, 0, 0, 217) : QColor(255, 255, 255, 230);
}

QPainterPath capsulePath(const QRectF& rect)
{
    QPainterPath path;
    const double radius = rect.height() / 2;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

// The pixels whose centre lies inside the capsule (a circle when square), row
// by row: the window's edge is then where the antialiased edge is half covered.
void appendCapsuleRows(const QRectF& rect, QList<QRect>& rows)
{
    const double radius = std::min(rect.width(), rect.height()) / 2;
    const double centreY = rect.center().y();
    for (int y = int(std::floor(rect.top())); y < int(std::ceil(rect.bottom())); ++y) {
        const double dy = std::abs(y + 0.5 - centreY);
        if (dy >= radius)
            continue;
        const double dx = std::sqrt(radius * radius - dy * dy);
        const int left = int(std::ceil(rect.left() + radius - dx - 0.5));
        const int right = int(std::floor(rect.right() - radius + dx - 0.5));
        if (right >= left)
            rows.append(QRect(left, y, right - left + 1, 1));
    }
}

// Where the pill and the dots sit in a panel wider than they need: on the
// side the panel is pinned to the screen by, so that they stay where a panel
// of their own width would have put them.
enum class Anchor
{
    left,
    centre,
    right
};

// The row of dots under the pill, one per candidate.
double dotsWidth(int count)
{
    return count > 0 ? count * OverlayView::DotSize + (count - 1) * OverlayView::DotSpacing : 0;
}

Anchor anchorOf(OverlayPosition position)
{
    switch (position) {
    case OverlayPosition::topLeft:
    case OverlayPosition::bottomLeft:
        return Anchor::left;
    case OverlayPosition::topRight:
    case OverlayPosition::bottomRight:
        return Anchor::right;
    case OverlayPosition::center:
        break;
    }
    return Anchor::centre;
}

} // namespace

OverlayView::OverlayView(OverlayModel& model, Preferences& prefs, ShellIntegration& shell,
                         KeyNaming naming, QWidget* parent)
    : QWidget(parent), m_model(model), m_prefs(prefs), m_shell(shell), m_naming(naming),
      m_content(OverlayContent::of(model)), m_faces(makeFaces()), m_icons(shell)
{
    measure();
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    connect(&m_model, &OverlayModel::changed, this, &OverlayView::contentChanged);
    connect(&m_prefs, &Preferences::changed, this, [this] { update(); });
}

std::unique_ptr<OverlayView::Faces> OverlayView::makeFaces()
{
    return std::make_unique<Faces>(Faces{
        TextWidths(OverlayFonts::title(TitlePixels)),
        TextWidths(OverlayFonts::system(SecondaryPixels, QFont::Normal)),
        TextWidths(OverlayFonts::monospaced(QueryPixels)),
        TextWidths(OverlayFonts::title(BadgePixels)),
    });
}

TextWidths& OverlayView::chipFace(const OverlayChip& chip) const
{
    return chip.monospaced ? m_faces->query : m_faces->badge;
}

void OverlayView::contentChanged()
{
    // The model notifies on every write, and a session's refresh writes
    // five times; only a change of what is shown costs a layout and paint.
    OverlayContent content = OverlayContent::of(m_model);
    if (content == m_content)
        return;
    m_content = std::move(content);
    measure();
    updateGeometry();
    update();
    emit pillGeometryChanged();
}

bool OverlayView::isLight() const
{
    return Theme::isLight(m_prefs.theme(), Theme::systemIsLight());
}

QColor OverlayView::accent() const
{
    return Theme::readableAccent(m_prefs.accentHex(), isLight());
}

bool OverlayView::blurActive() const
{
    return m_composited && m_prefs.blurEnabled() && m_shell.canBlurBehind();
}

void OverlayView::setComposited(bool composited)
{
    if (composited == m_composited)
        return;
    m_composited = composited;
    update();
}

QRegion OverlayView::shape() const
{
    const Geometry g = geometryFor(size());
    if (g.pill == m_shapePill && g.dots == m_shapeDots && !m_shape.isEmpty())
        return m_shape;
    QList<QRect> rows;
    appendCapsuleRows(g.pill, rows);
    for (const QRectF& dot : g.dots)
        appendCapsuleRows(dot, rows);
    // Given at once, top to bottom and left to right, the rows make the
    // region in one pass; added one by one, each copies it again.
    std::sort(rows.begin(), rows.end(), [](const QRect& a, const QRect& b) {
        return a.y() != b.y() ? a.y() < b.y() : a.x() < b.x();
    });
    QRegion region;
    region.setRects(rows.constData(), int(rows.size()));
    m_shapePill = g.pill;
    m_shapeDots = g.dots;
    m_shape = region;
    return region;
}

void OverlayView::measure()
{
    TextWidths& title = m_faces->title;
    m_measures.titleHeight = title.height();
    double width = title.advance(m_content.primary);
    double height = m_measures.titleHeight;
    if (m_content.secondary) {
        TextWidths& secondary = m_faces->secondary;
        width = std::max(width, secondary.advance(*m_content.secondary));
        height += TextLineGap + secondary.height();
    }
    m_measures.textColumnWidth = std::ceil(width);
    m_measures.textColumnHeight = std::ceil(height);
    m_measures.chip = {};
    if (m_content.chip) {
        const OverlayChip& chip = *m_content.chip;
        const double padding = chip.monospaced ? QueryChipPadding : BadgeChipPadding;
        const double text = chipFace(chip).advance(chip.text);
        m_measures.chip = {std::max<double>(ChipMinWidth, std::ceil(text + 2 * padding)),
                           ChipHeight};
    }
}

void OverlayView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    // Another icon theme or font: the kept icons and tiles show the old one.
    if (event->type() == QEvent::ThemeChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::ApplicationFontChange)
        m_icons.forgetAll();
    // The system font changed under the texts.
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange) {
        m_faces = makeFaces();
        measure();
        updateGeometry();
        update();
        emit pillGeometryChanged();
    }
}

QSizeF OverlayView::naturalPillSize() const
{
    double width =
        PillPaddingX + IconSize + PillSpacing + m_measures.textColumnWidth + PillPaddingX;
    double inner = std::max<double>(IconSize, m_measures.textColumnHeight);
    if (m_content.chip) {
        width += PillSpacing + ChipLeading + m_measures.chip.width();
        inner = std::max<double>(inner, ChipHeight);
    }
    return {std::max<double>(width, PillMinWidth), inner + 2 * PillPaddingY};
}

QSize OverlayView::sizeHint() const
{
    const QSizeF pill = naturalPillSize();
    double width = pill.width();
    double height = pill.height();
    if (m_content.dotCount > 0) {
        width = std::max(width, dotsWidth(m_content.dotCount));
        height += StackSpacing + DotSize;
    }
    return {int(std::ceil(width)) + 2 * Padding, int(std::ceil(height)) + 2 * Padding};
}

OverlayView::Geometry OverlayView::geometryFor(const QSize& size) const
{
    Geometry g;
    const QSizeF natural = naturalPillSize();
    const double available = std::max<double>(0, size.width() - 2 * Padding);
    const double pillWidth = std::min(natural.width(), std::max<double>(available, 0));
    const double dotsHeight = m_content.dotCount > 0 ? StackSpacing + DotSize : 0;
    const int n = m_content.dotCount;
    const double dotsRowWidth = dotsWidth(n);
    // The pill and dots are one block, each centred in it, as the size hint
    // laid them out; the block keeps to the panel's anchored side.
    const double blockWidth = std::max(pillWidth, dotsRowWidth);
    double blockLeft = (size.width() - blockWidth) / 2;
    switch (anchorOf(m_prefs.overlayPosition())) {
    case Anchor::left:
        blockLeft = std::min<double>(Padding, blockLeft);
        break;
    case Anchor::right:
        blockLeft = std::max<double>(size.width() - Padding - blockWidth, blockLeft);
        break;
    case Anchor::centre:
        break;
    }
    const double blockTop = (size.height() - natural.height() - dotsHeight) / 2;
    g.pill = QRectF(blockLeft + (blockWidth - pillWidth) / 2, std::max<double>(blockTop, 0),
                    pillWidth, natural.height());

    // Content centred within a pill wider than it (the minimum width).
    const QSizeF chip = m_measures.chip;
    double contentWidth = IconSize + PillSpacing + m_measures.textColumnWidth;
    if (m_content.chip)
        contentWidth += PillSpacing + ChipLeading + chip.width();
    const double inner = pillWidth - 2 * PillPaddingX;
    double x = g.pill.left() + PillPaddingX + std::max(0.0, (inner - contentWidth) / 2);
    const double midY = g.pill.center().y();

    g.icon = QRectF(x, midY - IconSize / 2.0, IconSize, IconSize);
    x += IconSize + PillSpacing;

    // A pill narrower than its content (a panel not yet laid out again)
    // squeezes the texts, which are then elided.
    const double chipSpace = m_content.chip ? PillSpacing + ChipLeading + chip.width() : 0;
    const double textWidth = std::max(0.0, g.pill.right() - PillPaddingX - chipSpace - x);
    const double columnHeight = m_measures.textColumnHeight;
    const double titleHeight = m_measures.titleHeight;
    const double top = midY - columnHeight / 2;
    g.primary = QRectF(x, top, textWidth, titleHeight);
    if (m_content.secondary)
        g.secondary = QRectF(x, top + titleHeight + TextLineGap, textWidth,
                             columnHeight - titleHeight - TextLineGap);
    x += textWidth;

    if (m_content.chip)
        g.chip = QRectF(x + PillSpacing + ChipLeading, midY - chip.height() / 2, chip.width(),
                        chip.height());

    double dotX = blockLeft + (blockWidth - dotsRowWidth) / 2;
    const double dotY = g.pill.bottom() + StackSpacing;
    for (int i = 0; i < n; ++i) {
        g.dots.append(QRectF(dotX, dotY, DotSize, DotSize));
        dotX += DotSize + DotSpacing;
    }
    return g;
}

QRectF OverlayView::pillRect() const
{
    return geometryFor(size()).pill;
}

QRectF OverlayView::chipRect() const
{
    return geometryFor(size()).chip;
}

QList<QRectF> OverlayView::dotRects() const
{
    return geometryFor(size()).dots;
}

void OverlayView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    emit pillGeometryChanged();
}

void OverlayView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);

    const Geometry g = geometryFor(size());
    if (m_composited) {
        paintShadow(painter, g.pill);
    } else {
        // The window is cut to shape(): the pixels at its edge, which the
        // capsule and the dots only partly cover, show the panel colour where
        // a see-through window would show the desktop.
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), windowColor(isLight()));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }

    painter.save();
    painter.setClipPath(capsulePath(g.pill));
    paintBackground(painter, g.pill);
    paintIcon(painter, g.icon);
    paintTexts(painter, g);
    if (m_content.chip)
        paintChip(painter, g.chip);
    painter.restore();

    // The border is stroked inside the capsule's edge.
    painter.setPen(QPen(QColor(255, 255, 255, 26), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(capsulePath(g.pill.adjusted(0.5, 0.5, -0.5, -0.5)));

    paintDots(painter, g.dots);
}

void OverlayView::paintShadow(QPainter& painter, const QRectF& pill)
{
    const QSize size = pill.size().toSize();
    if (m_shadowSize != size) {
        m_shadow =
            OverlayShadow::capsule(size, ShadowBlur, QColor(0, 0, 0, int(255 * ShadowAlpha)));
        m_shadowSize = size;
    }
    const int margin = OverlayShadow::margin(ShadowBlur);
    painter.drawImage(QPointF(pill.left() - margin, pill.top() - margin + ShadowOffsetY), m_shadow);
}

void OverlayView::paintBackground(QPainter& painter, const QRectF& pill) const
{
    const bool light = isLight();
    const double alpha = blurActive() ? BlurTintAlpha : m_composited ? SolidBackgroundAlpha : 1.0;
    // The shadow lies under the pill; clear it first so a see-through tint
    // shows the blurred desktop rather than a darkened one.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(pill, withAlpha(windowColor(light), alpha));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void OverlayView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    // The next showing is another session; apps may have come and gone.
    m_icons.showingEnded();
}

void OverlayView::paintIcon(QPainter& painter, const QRectF& frame)
{
    const qreal dpr = devicePixelRatioF();
    QPixmap pixmap = m_icons.icon(m_content.iconPath, m_content.pid, IconSize, dpr);
    if (pixmap.isNull())
        pixmap = m_icons.tile(iconTileText(m_content.appName, m_naming), accent(), IconSize, dpr);
    painter.drawPixmap(frame, pixmap, QRectF(QPointF(0, 0), pixmap.size()));
}

void OverlayView::paintTexts(QPainter& painter, const Geometry& g) const
{
    const QColor label = labelColor(isLight());
    TextWidths& title = m_faces->title;
    painter.setFont(title.font());
    painter.setPen(label);
    painter.drawText(g.primary, Qt::AlignLeft | Qt::AlignVCenter,
                     title.elided(m_content.primary, g.primary.width()));

    if (m_content.secondary && !m_content.secondary->isEmpty()) {
        TextWidths& secondary = m_faces->secondary;
        painter.setFont(secondary.font());
        painter.setPen(withAlpha(label, 0.6));
        painter.drawText(g.secondary, Qt::AlignLeft | Qt::AlignVCenter,
                         secondary.elided(*m_content.secondary, g.secondary.width()));
    }
}

void OverlayView::paintChip(QPainter& painter, const QRectF& frame) const
{
    const QColor accentColor = accent();
    painter.setPen(Qt::NoPen);
    painter.setBrush(withAlpha(accentColor, 0.2));
    painter.drawRoundedRect(frame, ChipRadius, ChipRadius);
    painter.setPen(QPen(withAlpha(accentColor, 0.5), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), ChipRadius - 0.5,
                            ChipRadius - 0.5);
    painter.setPen(accentColor);
    painter.setFont(chipFace(*m_content.chip).font());
    painter.drawText(frame, Qt::AlignCenter, m_content.chip->text);
}

void OverlayView::paintDots(QPainter& painter, const QList<QRectF>& dots) const
{
    const QColor accentColor = accent();
    const QColor other = withAlpha(labelColor(isLight()), 0.25);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < dots.size(); ++i) {
        painter.setBrush(i == m_content.selectedDot ? accentColor : other);
        painter.drawEllipse(dots[i]);
    }
}

void OverlayView::mouseMoveEvent(QMouseEvent* event)
{
    const QList<QRectF> dots = dotRects();
    for (int i = 0; i < dots.size(); ++i) {
        // A little slack: the dots are small targets.
        if (dots[i].adjusted(-3, -3, 3, 3).contains(event->position())) {
            if (i != m_model.selection() && m_model.onHover)
                m_model.onHover(i);
            return;
        }
    }
}

void OverlayView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (!capsulePath(pillRect()).contains(event->position()))
        return;
    // The callback may end the session and change the model; call a copy.
    if (auto activate = m_model.onActivate)
        activate(m_model.selection());
}

} // namespace velkor
