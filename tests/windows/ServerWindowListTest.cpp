// SPDX-License-Identifier: MIT
#include "windows/ServerWindowList.h"

#include <QTest>

using namespace velkor;

namespace {

const WindowInfoKeys keys{QStringLiteral("kNumber"), QStringLiteral("kOwner"),
                          QStringLiteral("kLayer")};

QVariantMap window(const QVariant& number, const QVariant& owner, const QVariant& layer)
{
    QVariantMap info{{QStringLiteral("kName"), QStringLiteral("ignored")}};
    if (number.isValid())
        info.insert(keys.number, number);
    if (owner.isValid())
        info.insert(keys.ownerPid, owner);
    if (layer.isValid())
        info.insert(keys.layer, layer);
    return info;
}

} // namespace

class ServerWindowListTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheListedOrderAndFields()
    {
        const QVariantList info{window(qlonglong(301), 812, 0), window(qlonglong(17), 40, 25),
                                window(qlonglong(4000000000LL), 812, -20)};
        QStringList read;
        for (const ServerWindow& w : readServerWindows(info, keys))
            read << QStringLiteral("%1/%2/%3").arg(w.number).arg(w.ownerPid).arg(w.layer);
        QCOMPARE(read, (QStringList{"301/812/0", "17/40/25", "4000000000/812/-20"}));
    }

    void leavesOutEntriesWithoutANumberOrOwner()
    {
        const QVariantList info{
            window({}, 812, 0),
            window(5, {}, 0),
            window(QStringLiteral("6"), 812, 0),
            window(7, 8.5, 0),
            window(qlonglong(-1), 812, 0),
            window(qlonglong(5000000000LL), 812, 0), // past the 32-bit window numbers
            QStringLiteral("not an entry"),
            window(9, 812, 0),
        };
        const auto windows = readServerWindows(info, keys);
        QCOMPARE(windows.size(), 1);
        QCOMPARE(windows[0].number, 9u);
    }

    void anUnreadableLayerIsNeverTheNormalOne()
    {
        const QVariantList info{window(1, 2, {}), window(3, 4, QStringLiteral("0")),
                                window(5, 6, true)};
        const auto windows = readServerWindows(info, keys);
        QCOMPARE(windows.size(), 3);
        for (const ServerWindow& server : windows)
            QCOMPARE(server.layer, UnknownWindowLayer);
    }

    void somethingOtherThanAListIsEmpty()
    {
        QVERIFY(readServerWindows(QVariant(), keys).isEmpty());
        QVERIFY(readServerWindows(window(1, 2, 0), keys).isEmpty());
        QVERIFY(readServerWindows(QVariantList{}, keys).isEmpty());
    }
};

QTEST_GUILESS_MAIN(ServerWindowListTest)
#include "ServerWindowListTest.moc"
