// SPDX-License-Identifier: MIT
#include "app/LaunchAtLogin.h"

#include "fakes/FakePlatform.h"

#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {
QStringList messages;
void collect(QtMsgType, const QMessageLogContext&, const QString& text)
{
    messages << text;
}
} // namespace

class LaunchAtLoginTest : public QObject
{
    Q_OBJECT

private slots:
    void changesRegistrationOnlyWhenItDiffers()
    {
        using Status = LoginItem::Status;
        for (Status s : {Status::NotRegistered, Status::RequiresApproval, Status::NotFound}) {
            FakeLoginItem item;
            item.state = s;
            LaunchAtLogin::set(item, false);
            QCOMPARE(item.unregisterCalls, 0);
        }

        FakeLoginItem item;
        LaunchAtLogin::set(item, true);
        LaunchAtLogin::set(item, true);
        QCOMPARE(item.registerCalls, 1);
        LaunchAtLogin::set(item, false);
        LaunchAtLogin::set(item, false);
        QCOMPARE(item.unregisterCalls, 1);

        FakeLoginItem pending;
        pending.state = Status::RequiresApproval;
        LaunchAtLogin::set(pending, true);
        QCOMPARE(pending.registerCalls, 1);
    }

    void failureIsLoggedOnce()
    {
        FakeLoginItem item;
        item.failWith = QStringLiteral("Operation not permitted");
        messages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(collect);
        LaunchAtLogin::set(item, true);
        qInstallMessageHandler(previous);
        QCOMPARE(messages, QStringList({"[Velkor] LaunchAtLogin error: Operation not permitted"}));
        QCOMPARE(item.state, LoginItem::Status::NotRegistered);
    }
};

QTEST_GUILESS_MAIN(LaunchAtLoginTest)
#include "LaunchAtLoginTest.moc"
