// SPDX-License-Identifier: MIT
#include "overlay/OverlayWindow.h"

#include "overlay/OverlayView.h"
#include "platform/HeapRelease.h"
#include "platform/ShellIntegration.h"
#include "settings/Preferences.h"

#include <QCursor>
#include <QEasingCurve>
#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <utility>

namespace velkor {

namespace {

// Long enough that a burst of sessions pays for it once, after the last.
constexpr int ReleaseHeapAfterHiddenMs = 2000;

// The panel's width goes in steps of this many pixels, so that most typed
// letters leave the window as it is: each resize costs a round of requests
// and events with the display server and a new paint buffer.
constexpr int WidthStep = 48;

} // namespace

OverlayWindow::OverlayWindow(OverlayModel& model, Preferences& prefs, ShellIntegration& shell,
                             KeyNaming naming)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint),
      m_prefs(prefs), m_shell(shell), m_view(new OverlayView(model, prefs, shell, naming, this)),
      m_fade(new QPropertyAnimation(this, "windowOpacity", this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Velkor overlay"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    layout->setSizeConstraint(QLayout::SetNoConstraint);

    m_fade->setEasingCurve(QEasingCurve::OutCubic);
    m_fade->setStartValue(0.0);
    m_fade->setEndValue(1.0);

    // What a showing allocated (icons, text layouts, the view's caches) is
    // freed by the time the window hides, but the allocator keeps it; once
    // the window has stayed hidden a moment it is asked to give it back.
    m_releaseHeap.setSingleShot(true);
    m_releaseHeap.setInterval(ReleaseHeapAfterHiddenMs);
    m_releaseHeap.callOnTimeout(this, [] { releaseFreeHeap(); });

    // The native window must exist before the platform can make it an overlay.
    create();
    m_shell.prepareOverlayWindow(windowHandle());

    connect(m_view, &OverlayView::pillGeometryChanged, this, &OverlayWindow::pillChanged);
    connect(&m_prefs, &Preferences::blurEnabledChanged, this, &OverlayWindow::updateBlur);
    m_shell.watchCompositing(this, [this] { followCompositing(); });
    followCompositing();
}

OverlayWindow::~OverlayWindow() = default;

bool OverlayWindow::isVisible() const
{
    return QWidget::isVisible();
}

std::optional<QSizeF> OverlayWindow::fittingSize()
{
    ensurePolished();
    // The view keeps its pill to the side the panel is pinned by.
    const QSize natural = m_view->sizeHint();
    const int width = (natural.width() + WidthStep - 1) / WidthStep * WidthStep;
    return QSizeF(width, natural.height());
}

std::optional<QRectF> OverlayWindow::mainScreenArea() const
{
    // The pointer is the best portable hint of where the user works; the
    // focused window is usually under or near it. With one screen there is
    // nothing to choose, and asking for the pointer is a round trip to the
    // display server on every key.
    const QList<QScreen*> screens = QGuiApplication::screens();
    QScreen* screen =
        screens.size() == 1 ? screens.first() : QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return std::nullopt;
    return QRectF(screen->availableGeometry());
}

void OverlayWindow::setFrame(const QRectF& frame)
{
    // Whole pixels: the origin rounded, the size kept.
    const QRect geometry(frame.topLeft().toPoint(), frame.size().toSize());
    // Every key lays the panel out again, most often to the same place: new
    // content there is repainted by the view itself.
    if (geometry == this->geometry())
        return;
    setGeometry(geometry);
    pillChanged();
    // Moved or resized, it is painted before the server shows it, rather
    // than showing the old pixels at the new size first.
    if (isVisible())
        repaint();
}

void OverlayWindow::orderFront()
{
    m_releaseHeap.stop();
    if (!isVisible()) {
        followPill();
        show();
    }
    m_shell.orderOverlayFront(windowHandle());
}

void OverlayWindow::fadeIn(double seconds)
{
    m_fade->stop();
    // Without a compositor the window's opacity means nothing: it appears at once.
    if (!m_view->isComposited()) {
        setWindowOpacity(1.0);
        orderFront();
        return;
    }
    setWindowOpacity(0.0);
    m_releaseHeap.stop();
    followPill();
    show();
    m_shell.orderOverlayFront(windowHandle());
    m_fade->setDuration(int(seconds * 1000));
    m_fade->start();
}

void OverlayWindow::orderOut()
{
    m_fade->stop();
    if (isVisible())
        m_releaseHeap.start();
    hide();
}

bool OverlayWindow::isFading() const
{
    return m_fade->state() == QAbstractAnimation::Running;
}

void OverlayWindow::followCompositing()
{
    const bool composited = m_shell.isCompositing();
    if (!composited && isFading()) {
        m_fade->stop();
        setWindowOpacity(1.0);
    }
    m_view->setComposited(composited);
    pillChanged();
}

void OverlayWindow::pillChanged()
{
    // Hidden, the shape and the blur wait for the next showing: most sessions
    // end before the overlay's delay, and every key of them changes the pill.
    m_pillChanged = true;
    if (isVisible())
        followPill();
}

void OverlayWindow::followPill()
{
    if (std::exchange(m_pillChanged, false)) {
        updateBlur();
        updateShape();
    }
}

void OverlayWindow::updateShape()
{
    // The shape goes on the native window only: a widget mask would also clip
    // every paint to the capsule's many rectangles and flush each of them to
    // the server on its own.
    QWindow* window = windowHandle();
    const QRegion shape =
        m_view->isComposited() ? QRegion() : m_view->shape().translated(m_view->pos());
    if (window && window->mask() != shape)
        window->setMask(shape);
}

void OverlayWindow::updateBlur()
{
    if (!windowHandle())
        return;
    if (m_view->blurActive())
        m_shell.setBlurBehind(windowHandle(), m_view->pillRect(), m_view->pillRect().height() / 2);
    else
        m_shell.setBlurBehind(windowHandle(), {}, 0);
}

} // namespace velkor
