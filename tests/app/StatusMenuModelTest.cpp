// SPDX-License-Identifier: MIT
#include "app/StatusMenuModel.h"

#include "app/PermissionsManager.h"
#include "fakes/FakePlatform.h"

#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {
// "title|enabled" per entry, "-" for a separator.
QStringList describe(const QList<StatusMenuEntry>& entries)
{
    QStringList out;
    for (const StatusMenuEntry& e : entries)
        out << (e.separator
                    ? QStringLiteral("-")
                    : e.title + (e.enabled ? QStringLiteral("|on") : QStringLiteral("|off")));
    return out;
}
} // namespace

class StatusMenuModelTest : public QObject
{
    Q_OBJECT

private slots:
    void firstLineFollowsTheTrustStateOnEveryOpening()
    {
        FakePlatform p;
        PermissionsManager perms(*p.trust, *p.clock);
        StatusMenuModel menu(perms);
        menu.setVersion(QStringLiteral("2.3.4"));
        const QList<StatusMenuEntry> before = menu.rebuild();
        QCOMPARE(describe(before), QStringList({"Accessibility permission needed|on", "-",
                                                "Settings…|on", "Check for Updates…|on", "-",
                                                "Quit Velkor|on", "-", "Velkor 2.3.4|off"}));
        QCOMPARE(before[0].action, StatusMenuAction::openPermissions);
        QCOMPARE(before[2].action, StatusMenuAction::openSettings);
        QCOMPARE(before[3].action, StatusMenuAction::checkForUpdates);
        QCOMPARE(before[5].action, StatusMenuAction::quit);
        QCOMPARE(before[7].action, StatusMenuAction::none);

        p.trust->trusted = true; // granted while the menu was closed
        const QList<StatusMenuEntry> after = menu.rebuild();
        QCOMPARE(describe(after).first(), QStringLiteral("Velkor is active|off"));
        QCOMPARE(after[0].action, StatusMenuAction::none);
        QCOMPARE(after.mid(1), before.mid(1));
    }

    void versionFallsBackWhenMissing()
    {
        QCOMPARE(StatusMenuModel::versionTitle(QString()), QStringLiteral("Velkor 0.1.0"));
        QCOMPARE(StatusMenuModel::versionTitle(QStringLiteral("1.0")),
                 QStringLiteral("Velkor 1.0"));
    }

    void choicesReachTheirCallbacksAndUnsetOnesDoNothing()
    {
        FakePlatform p;
        PermissionsManager perms(*p.trust, *p.clock);
        StatusMenuModel menu(perms);
        QStringList called;
        const QList<StatusMenuAction> all = {
            StatusMenuAction::none, StatusMenuAction::openPermissions,
            StatusMenuAction::openSettings, StatusMenuAction::checkForUpdates,
            StatusMenuAction::quit};
        for (StatusMenuAction a : all)
            menu.trigger(a); // nothing set yet

        menu.callbacks.openSettings = [&] { called << "settings"; };
        menu.callbacks.openPermissions = [&] { called << "permissions"; };
        menu.callbacks.checkForUpdates = [&] { called << "updates"; };
        menu.callbacks.quit = [&] { called << "quit"; };
        for (StatusMenuAction a : all)
            menu.trigger(a);
        QCOMPARE(called, QStringList({"permissions", "settings", "updates", "quit"}));
    }
};

QTEST_GUILESS_MAIN(StatusMenuModelTest)
#include "StatusMenuModelTest.moc"
