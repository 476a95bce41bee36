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

} // namespace

class OverlayWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void windowIsAnUnfocusableOverlay();
    void placedInTheChosenCorner();
    void followsTheContentWhenLaidOutAgain();
    void fadesInAndHidesAtOnce();
    void blurAreaFollowsThePill();

private:
    OverlayWindow& window() { return *static_cast<OverlayWindow*>(m_controller->panel()); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<fake::FakePlatform> m_platform;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<OverlayController> m_controller;
};

void OverlayWindowTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_platform = std::make_unique<fake::FakePlatform>();
    m_prefs = std::make_unique<Preferences>(
        std::make_unique<QSettings>(m_dir->filePath("velkor.ini"), QSettings::IniFormat));
    m_controller = std::make_unique<OverlayController>(
        *m_prefs, *m_platform->clock, makeOverlayPanelFactory(*m_platform->shell, *m_prefs));
}

void OverlayWindowTest::cleanup()
{
    m_controller.reset();
    m_prefs.reset();
    m_platform.reset();
    m_dir.reset();
}

void OverlayWindowTest::windowIsAnUnfocusableOverlay()
{
    QVERIFY(!m_controller->panel());
    m_controller->showNow();
    QVERIFY(m_controller->panel());
    QCOMPARE(m_platform->shell->preparedWindows, 1);
    const Qt::WindowFlags flags = window().windowFlags();
    QVERIFY(flags & Qt::WindowDoesNotAcceptFocus);
    QVERIFY(flags & Qt::FramelessWindowHint);
    QVERIFY(flags & Qt::WindowStaysOnTopHint);
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Window); // not a tool or popup
    QVERIFY(window().isVisible());
    QVERIFY(!window().isActiveWindow());
    QVERIFY(QApplication::focusWidget() == nullptr);

    // Shown again: the same window, prepared once.
    m_controller->hide();
    m_controller->showNow();
    QCOMPARE(m_platform->shell->preparedWindows, 1);
}

void OverlayWindowTest::placedInTheChosenCorner()
{
    m_controller->model().setItems({row("Safari"), row("Slack")});
    m_controller->showNow();
    const QRect area = window().screen()->availableGeometry();
    QCOMPARE(window().mainScreenArea(), std::optional<QRectF>(QRectF(area)));
    const QSize size = window().view().sizeHint();
    QVERIFY(size.width() >= OverlayController::MinWidth);
    QVERIFY(size.height() >= OverlayController::MinHeight);

    // Where each position puts the panel is the controller's own test; here
    // the frame must reach the real window and its view.
    m_prefs->setOverlayPosition(OverlayPosition::bottomRight);
    m_controller->showNow();
    const int m = int(OverlayController::Margin);
    const QPoint corner = area.bottomRight() - QPoint(m, m);
    QCOMPARE(window().geometry(),
             QRect(corner - QPoint(size.width() - 1, size.height() - 1), size));
    QCOMPARE(window().view().geometry(), QRect(QPoint(0, 0), size));
}

void OverlayWindowTest::followsTheContentWhenLaidOutAgain()
{
    m_prefs->setOverlayPosition(OverlayPosition::bottomRight);
    m_controller->model().setItems({row("A")});
    m_controller->showNow();
    const QRect before = window().geometry();

    m_controller->model().setItems({row("A much longer title than before"), row("B")});
    m_controller->model().clamp();
    m_controller->layout(window());
    const QRect after = window().geometry();
    QVERIFY(after.width() > before.width());
    QVERIFY(after.height() > before.height());
    // Pinned to the same corner.
    QCOMPARE(after.bottomRight(), before.bottomRight());
}

void OverlayWindowTest::fadesInAndHidesAtOnce()
{
    m_controller->showNow();
    QVERIFY(window().isFading());
    QVERIFY(window().windowOpacity() < 0.5);
    QTRY_VERIFY_WITH_TIMEOUT(!window().isFading(), 2000);
    QCOMPARE(window().windowOpacity(), 1.0);

    // Already up: brought forward, no second fade.
    m_controller->showNow();
    QVERIFY(!window().isFading());
    QCOMPARE(window().windowOpacity(), 1.0);

    // Hidden in the middle of a fade: gone at once, and the fade stops.
    m_controller->hide();
    m_controller->showNow();
    QVERIFY(window().isFading());
    m_controller->hide();
    QVERIFY(!window().isVisible());
    QVERIFY(!window().isFading());
}

void OverlayWindowTest::blurAreaFollowsThePill()
{
    fake::FakeShellIntegration& shell = *m_platform->shell;
    shell.blur = true;
    m_controller->model().setItems({row("Safari")});
    m_controller->showNow();
    QCOMPARE(shell.blurArea, window().view().pillRect());
    QVERIFY(!shell.blurArea.isEmpty());

    m_prefs->setBlurEnabled(false);
    QVERIFY(shell.blurArea.isEmpty());
    m_prefs->setBlurEnabled(true);
    m_controller->model().setItems({row("A much longer title than before")});
    m_controller->layout(window());
    QCOMPARE(shell.blurArea, window().view().pillRect());
    QVERIFY(shell.blurArea.width() > 200);
}

QTEST_MAIN(OverlayWindowTest)
#include "OverlayWindowTest.moc"
