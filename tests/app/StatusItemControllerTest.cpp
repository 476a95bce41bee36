// SPDX-License-Identifier: MIT
#include "app/StatusItemController.h"

#include "app/MenuBarIcon.h"
#include "app/PermissionsManager.h"
#include "app/StatusMenuModel.h"
#include "fakes/FakePlatform.h"

#include <QMenu>
#include <QSystemTrayIcon>
#include <QtTest>

using namespace velkor;

namespace {

// Each line of the menu as "title|enabled", separators as "-".
QStringList lines(const QMenu& menu)
{
    QStringList result;
    for (const QAction* action : menu.actions())
        result.append(action->isSeparator()
                          ? QStringLiteral("-")
                          : action->text() + (action->isEnabled() ? "|on" : "|off"));
    return result;
}

QAction* actionNamed(const QMenu& menu, const QString& title)
{
    for (QAction* action : menu.actions())
        if (action->text() == title)
            return action;
    return nullptr;
}

} // namespace

class StatusItemControllerTest : public QObject
{
    Q_OBJECT
private slots:
    void menuFollowsTheTrustStateAtEveryOpening();
    void linuxStateLineAndToolTipSayWhatHoldsTheKey();
    void aPlainClickOpensTheMenuOnce();
    void iconIsOneColourOnTransparent();
};

void StatusItemControllerTest::menuFollowsTheTrustStateAtEveryOpening()
{
    fake::FakePlatform platform;
    PermissionsManager permissions(*platform.trust, *platform.clock);
    StatusMenuModel model(permissions, KeyNaming::apple);
    model.setVersion(QStringLiteral("2.3.1"));
    StatusItemController controller(model);
    controller.install();
    QVERIFY(controller.trayIcon());
    QCOMPARE(controller.trayIcon()->toolTip(), QStringLiteral("Velkor"));
    QCOMPARE(controller.trayIcon()->contextMenu(), &controller.menu());
    QMenu* const menu = &controller.menu();

    emit menu->aboutToShow();
    const QStringList untrusted = {"Accessibility permission needed|on",
                                   "-",
                                   "Settings…|on",
                                   "Check for Updates…|on",
                                   "-",
                                   "Quit Velkor|on",
                                   "-",
                                   "Velkor 2.3.1|off"};
    QCOMPARE(lines(*menu), untrusted);

    // Granted while the app runs: the next opening says so.
    platform.trust->trusted = true;
    emit menu->aboutToShow();
    QCOMPARE(lines(*menu).first(), QStringLiteral("Velkor is active|off"));
    QCOMPARE(lines(*menu).mid(1), untrusted.mid(1));
    QCOMPARE(&controller.menu(), menu);

    // Each entry calls its callback once, however often the menu was
    // rebuilt; without a quit callback Quit does nothing.
    QStringList calls;
    model.callbacks.openSettings = [&] { calls << "settings"; };
    model.callbacks.checkForUpdates = [&] { calls << "updates"; };
    emit menu->aboutToShow();
    for (const char* title : {"Settings…", "Check for Updates…", "Quit Velkor"})
        actionNamed(*menu, QString::fromUtf8(title))->trigger();
    model.callbacks.quit = [&] { calls << "quit"; };
    actionNamed(*menu, QStringLiteral("Quit Velkor"))->trigger();
    QCOMPARE(calls, (QStringList{"settings", "updates", "quit"}));

    // A build that cannot check for updates offers the entry disabled.
    model.setUpdatesAvailable(false);
    model.setVersion(QString());
    emit menu->aboutToShow();
    QCOMPARE(lines(*menu)[3], QStringLiteral("Check for Updates…|off"));
    QCOMPARE(lines(*menu).last(), QStringLiteral("Velkor 0.1.0|off"));
}

void StatusItemControllerTest::linuxStateLineAndToolTipSayWhatHoldsTheKey()
{
    fake::FakePlatform platform;
    PermissionsManager permissions(*platform.trust, *platform.clock);
    StatusMenuModel model(permissions, KeyNaming::pc);
    StatusItemController controller(model);
    controller.install();
    QStringList calls;
    model.callbacks.openSettings = [&] { calls << "settings"; };
    model.callbacks.openPermissions = [&] { calls << "permissions"; };
    QSystemTrayIcon& tray = *controller.trayIcon();
    QMenu& menu = controller.menu();

    emit menu.aboutToShow();
    QCOMPARE(lines(menu).first(), QStringLiteral("Keyboard access needed|on"));
    QCOMPARE(tray.toolTip(), QStringLiteral("Velkor: keyboard access needed"));
    menu.actions().first()->trigger();

    platform.trust->trusted = true;
    permissions.refresh();
    QCOMPARE(tray.toolTip(), QStringLiteral("Velkor"));
    emit menu.aboutToShow();
    QCOMPARE(lines(menu).first(), QStringLiteral("Velkor is active|off"));

    // Another program holds the activation key: the tool tip says so at
    // once, the menu's first line too, and choosing it leads to the
    // settings, where another key is chosen.
    permissions.setMonitorAccess(KeyAccess::activationKeyTaken);
    QCOMPARE(tray.toolTip(),
             QStringLiteral("Velkor: the activation key is taken by another program"));
    emit menu.aboutToShow();
    QCOMPARE(lines(menu).first(), QStringLiteral("Activation key taken by another program|on"));
    menu.actions().first()->trigger();
    QCOMPARE(calls, (QStringList{"permissions", "settings"}));

    permissions.setMonitorAccess(KeyAccess::active);
    QCOMPARE(tray.toolTip(), QStringLiteral("Velkor"));
}

void StatusItemControllerTest::aPlainClickOpensTheMenuOnce()
{
    fake::FakePlatform platform;
    PermissionsManager permissions(*platform.trust, *platform.clock);
    StatusMenuModel model(permissions, KeyNaming::pc);
    for (const bool trayOpensMenu : {false, true}) {
        StatusItemController controller(model, trayOpensMenu);
        controller.install();
        QMenu& menu = controller.menu();
        QSignalSpy opened(&menu, &QMenu::aboutToShow);
        emit controller.trayIcon()->activated(QSystemTrayIcon::Trigger);
        // Where the tray has opened the menu by itself (the macOS status
        // item), the click must not open it a second time.
        QCOMPARE(menu.isVisible(), !trayOpensMenu);
        QCOMPARE(opened.count(), trayOpensMenu ? 0 : 1);
        menu.hide();
        // The context click is the tray's own business everywhere.
        emit controller.trayIcon()->activated(QSystemTrayIcon::Context);
        QVERIFY(!menu.isVisible());
    }
}

void StatusItemControllerTest::iconIsOneColourOnTransparent()
{
    const QColor ink(30, 60, 90);
    for (const int size : {18, 36}) {
        const QImage image = MenuBarIcon::render(size, ink).convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(image.size(), QSize(size, size));
        int inked = 0;
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x) {
                const QRgb p = image.pixel(x, y);
                if (qAlpha(p) < 128)
                    continue;
                ++inked;
                QVERIFY(qAbs(qRed(p) - ink.red()) <= 2 && qAbs(qBlue(p) - ink.blue()) <= 2);
            }
        // Thin strokes: some ink, most of the square left clear.
        QVERIFY(inked > size * size / 12);
        QVERIFY(inked < size * size / 2);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        QCOMPARE(qAlpha(image.pixel(size - 1, size - 1)), 0);
    }
    QVERIFY(MenuBarIcon::icon(Qt::black).isMask());
}

QTEST_MAIN(StatusItemControllerTest)
#include "StatusItemControllerTest.moc"
