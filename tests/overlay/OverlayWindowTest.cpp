// SPDX-License-Identifier: MIT
#include "overlay/OverlayWindow.h"

#include "fakes/FakePlatform.h"
#include "overlay/OverlayController.h"
#include "overlay/OverlayPanelFactory.h"
#include "overlay/OverlayView.h"
#include "settings/Preferences.h"

#include <QApplication>
#include <QScreen>
#include <QTemporaryDir>
#include <QWindow>
#include <QtTest>

using namespace velkor;

namespace {

OverlayItem row(const QString& title)
{
    OverlayItem item;
    item.id = title;
    item.title = title;
    return item;
}

// A controller that makes real overlay windows, fresh for each test.
struct Fixture
{
    QTemporaryDir dir;
    fake::FakePlatform platform;
    Preferences prefs{
        std::make_unique<QSettings>(dir.filePath("velkor.ini"), QSettings::IniFormat)};
    OverlayController controller{prefs, *platform.clock,
                                 makeOverlayPanelFactory(*platform.shell, prefs)};
    OverlayWindow& window() { return *static_cast<OverlayWindow*>(controller.panel()); }
};

// Counts the paint events a widget receives.
struct PaintCounter : QObject
{
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
    int paints = 0;
};

} // namespace

class OverlayWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void windowIsAnUnfocusableOverlay();
    void placedInTheChosenCornerAndFollowsTheContent();
    void paintsWhatChangedAndNothingElse();
    void fadesInAndHidesAtOnce();
    void blurAreaFollowsThePill();
    void withoutACompositorItIsCutToThePillAndOpaque();
};

void OverlayWindowTest::windowIsAnUnfocusableOverlay()
{
    Fixture f;
    QVERIFY(!f.controller.panel());
    f.controller.showNow();
    QVERIFY(f.controller.panel());
    QCOMPARE(f.platform.shell->preparedWindows, 1);
    const Qt::WindowFlags flags = f.window().windowFlags();
    QVERIFY(flags & Qt::WindowDoesNotAcceptFocus);
    QVERIFY(flags & Qt::FramelessWindowHint);
    QVERIFY(flags & Qt::WindowStaysOnTopHint);
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Window); // not a tool or popup
    QVERIFY(f.window().isVisible());
    QVERIFY(!f.window().isActiveWindow());
    QVERIFY(QApplication::focusWidget() == nullptr);

    // Shown again: the same window, prepared once.
    f.controller.hide();
    f.controller.showNow();
    QCOMPARE(f.platform.shell->preparedWindows, 1);
}

void OverlayWindowTest::placedInTheChosenCornerAndFollowsTheContent()
{
    Fixture f;
    f.controller.model().setItems({row("Safari"), row("Slack")});
    f.controller.showNow();
    const QRect area = f.window().screen()->availableGeometry();
    QCOMPARE(f.window().mainScreenArea(), std::optional<QRectF>(QRectF(area)));
    const QSize size = f.window().view().sizeHint();
    QVERIFY(size.width() >= OverlayController::MinWidth);
    QVERIFY(size.height() >= OverlayController::MinHeight);

    // Where each position puts the panel is the controller's own test; here
    // the frame must reach the real window and its view, whose pill keeps to
    // the corner however much wider than it the window is.
    f.prefs.setOverlayPosition(OverlayPosition::bottomRight);
    f.controller.showNow();
    const int m = int(OverlayController::Margin);
    const QRect before = f.window().geometry();
    QCOMPARE(before.bottomRight(), area.bottomRight() - QPoint(m, m));
    QCOMPARE(before.height(), size.height());
    QVERIFY(before.width() >= size.width());
    QCOMPARE(f.window().view().geometry(), QRect(QPoint(0, 0), before.size()));
    const QRectF pill = f.window().view().pillRect();
    QCOMPARE(pill.right(), double(before.width() - OverlayView::Padding));

    // Typing widens the pill letter by letter; the window follows in steps,
    // not at every letter, and the pill stays in the corner all along.
    QString typed = QStringLiteral("Safari Technology Preview");
    f.controller.model().setItems({row(typed), row("Slack")});
    f.controller.layout(f.window());
    int resizes = 0;
    for (int letter = 0; letter < 8; ++letter) {
        const QRect frame = f.window().geometry();
        const double width = f.window().view().pillRect().width();
        typed += QLatin1Char('m');
        f.controller.model().setItems({row(typed), row("Slack")});
        f.controller.layout(f.window());
        resizes += f.window().geometry() != frame;
        QVERIFY(f.window().view().pillRect().width() > width);
        QCOMPARE(f.window().view().pillRect().right(),
                 double(f.window().width() - OverlayView::Padding));
    }
    QVERIFY2(resizes <= 4, qPrintable(QString::number(resizes)));

    // Much wider content: a wider window, pinned to the same corner.
    f.controller.model().setItems({row("A much longer title than before"), row("B")});
    f.controller.layout(f.window());
    const QRect after = f.window().geometry();
    QVERIFY(after.width() > before.width());
    QCOMPARE(after.bottomRight(), before.bottomRight());

    // Pinned by the left, the pill keeps to the left.
    f.prefs.setOverlayPosition(OverlayPosition::topLeft);
    f.controller.model().setItems({row("Safari"), row("Slack")});
    f.controller.showNow();
    QCOMPARE(f.window().geometry().topLeft(), area.topLeft() + QPoint(m, m));
    QCOMPARE(f.window().view().pillRect().left(), double(OverlayView::Padding));
}

// Every key lays the panel out again. One that moves or resizes it is
// painted before the server shows it; one that changes nothing paints
// nothing; new content of the same size is painted all the same.
void OverlayWindowTest::paintsWhatChangedAndNothingElse()
{
    Fixture f;
    f.platform.shell->compositing = false; // no fade: shown at once
    f.controller.model().setItems({row("Safari"), row("Slack")});
    f.controller.showNow();
    QVERIFY(QTest::qWaitForWindowExposed(&f.window()));
    PaintCounter counter(f.window().view());
    QCoreApplication::processEvents();

    const QString title = QStringLiteral("A much longer title than before");
    f.controller.model().setItems({row(title), row(title)});
    counter.paints = 0;
    f.controller.layout(f.window());
    QCOMPARE(counter.paints, 1);

    const QRect frame = f.window().geometry();
    QCoreApplication::processEvents();
    counter.paints = 0;
    f.controller.layout(f.window());
    f.controller.showNow();
    QCoreApplication::processEvents();
    QCOMPARE(counter.paints, 0);

    f.controller.model().setSelection(1);
    f.controller.layout(f.window());
    QTRY_COMPARE(counter.paints, 1);
    QCOMPARE(f.window().geometry(), frame);
}

void OverlayWindowTest::fadesInAndHidesAtOnce()
{
    Fixture f;
    const QList<QWindow*>& orderedFront = f.platform.shell->orderedFront;
    f.controller.showNow();
    QVERIFY(f.window().isFading());
    QVERIFY(f.window().windowOpacity() < 0.5);
    // Brought forward by the platform, which knows how to do it without
    // activating Velkor (a plain raise activates the whole app on macOS).
    QCOMPARE(orderedFront, QList<QWindow*>{f.window().windowHandle()});
    QTRY_VERIFY_WITH_TIMEOUT(!f.window().isFading(), 2000);
    QCOMPARE(f.window().windowOpacity(), 1.0);

    // Already up: brought forward, no second fade.
    f.controller.showNow();
    QVERIFY(!f.window().isFading());
    QCOMPARE(f.window().windowOpacity(), 1.0);
    QCOMPARE(orderedFront.size(), 2);

    // Hidden in the middle of a fade: gone at once, and the fade stops.
    f.controller.hide();
    f.controller.showNow();
    QVERIFY(f.window().isFading());
    f.controller.hide();
    QVERIFY(!f.window().isVisible());
    QVERIFY(!f.window().isFading());
}

void OverlayWindowTest::blurAreaFollowsThePill()
{
    Fixture f;
    fake::FakeShellIntegration& shell = *f.platform.shell;
    shell.blur = true;
    f.controller.model().setItems({row("Safari")});
    f.controller.showNow();
    QCOMPARE(shell.blurArea, f.window().view().pillRect());
    QVERIFY(!shell.blurArea.isEmpty());

    f.prefs.setBlurEnabled(false);
    QVERIFY(shell.blurArea.isEmpty());
    f.prefs.setBlurEnabled(true);
    f.controller.model().setItems({row("A much longer title than before")});
    f.controller.layout(f.window());
    QCOMPARE(shell.blurArea, f.window().view().pillRect());
    QVERIFY(shell.blurArea.width() > 200);
}

// Without a compositor the X server shows a window's pixels as they are,
// alpha dropped: anything see-through shows black. So the window is cut to
// the pill and the dots, everything inside is opaque, the edge pixels are
// the panel colour, and it appears at once. A compositor starting or
// stopping switches the window over while it lives.
void OverlayWindowTest::withoutACompositorItIsCutToThePillAndOpaque()
{
    Fixture f;
    fake::FakeShellIntegration& shell = *f.platform.shell;
    shell.compositing = false;
    shell.blur = true; // a blur cannot be had without a compositor
    f.prefs.setTheme(AppTheme::light);
    f.controller.model().setItems({row("Safari"), row("Slack")});
    f.controller.showNow();
    OverlayWindow& window = f.window();
    OverlayView& view = window.view();
    QVERIFY(window.isVisible());
    QVERIFY(!window.isFading());
    QCOMPARE(window.windowOpacity(), 1.0);
    QVERIFY(!view.blurActive());

    const QRegion mask = window.windowHandle()->mask();
    const QRectF pill = view.pillRect();
    const QList<QRectF> dots = view.dotRects();
    QCOMPARE(dots.size(), 2);
    QVERIFY(mask.contains(pill.center().toPoint()));
    for (const QRectF& dot : dots)
        QVERIFY(mask.contains(dot.center().toPoint()));
    const QPoint leftEdge(int(pill.left()), int(pill.center().y()));
    QVERIFY(mask.contains(leftEdge));
    QVERIFY(!mask.contains(leftEdge - QPoint(2, 0)));
    QVERIFY(!mask.contains(pill.topLeft().toPoint())); // the capsule's rounded corner
    QVERIFY(!mask.contains(QPoint(1, 1)));             // the margin
    QVERIFY(!mask.contains(QPoint(int(pill.center().x()), int(pill.bottom()) + 4)));

    // Everything inside is opaque; the pill's edge is the light panel, not a
    // dark fringe.
    QCOMPARE(view.geometry(), window.rect());
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    view.render(&image);
    for (const QRect& r : mask) {
        for (int y = r.top(); y <= r.bottom(); ++y) {
            for (int x = r.left(); x <= r.right(); ++x)
                QCOMPARE(qAlpha(image.pixel(x, y)), 255);
            if (y < pill.bottom()) {
                QVERIFY(qGray(image.pixel(r.left(), y)) > 225);
                QVERIFY(qGray(image.pixel(r.right(), y)) > 225);
            }
        }
    }

    // A compositor starts: see-through again, with its shadow and fade.
    shell.setCompositing(true);
    QVERIFY(window.windowHandle()->mask().isEmpty());
    QVERIFY(view.blurActive());
    image.fill(Qt::transparent);
    view.render(&image);
    QCOMPARE(qAlpha(image.pixel(1, 1)), 0);
    const QPoint shadow(int(pill.center().x()), int(pill.bottom()) + 3);
    QVERIFY(qAlpha(image.pixel(shadow)) > 0 && qAlpha(image.pixel(shadow)) < 255);
    f.controller.hide();
    f.controller.showNow();
    QVERIFY(window.isFading());

    // And stops in the middle of a fade: cut again, shown fully at once.
    shell.setCompositing(false);
    QVERIFY(!window.isFading());
    QCOMPARE(window.windowOpacity(), 1.0);
    QCOMPARE(window.windowHandle()->mask(), view.shape());
}

QTEST_MAIN(OverlayWindowTest)
#include "OverlayWindowTest.moc"
