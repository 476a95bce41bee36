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

    // Entries without a usable number or owner are left out; a layer that
    // cannot be read is never the normal one; anything but a list is empty.
    void unreadableFieldsAndLists()
    {
        const QVariantList info{
            window({}, 812, 0),
            window(5, {}, 0),
            window(QStringLiteral("6"), 812, 0),
            window(7, 8.5, 0),
            window(qlonglong(-1), 812, 0),
            window(qlonglong(5000000000LL), 812, 0), // past the 32-bit window numbers
            QStringLiteral("not an entry"),
            window(9, 812, {}),
            window(10, 4, QStringLiteral("0")),
            window(11, 6, true),
        };
        QStringList read;
        for (const ServerWindow& w : readServerWindows(info, keys))
            read << QStringLiteral("%1/%2").arg(w.number).arg(w.layer == UnknownWindowLayer);
        QCOMPARE(read, (QStringList{"9/1", "10/1", "11/1"}));

        QVERIFY(readServerWindows(QVariant(), keys).isEmpty());
        QVERIFY(readServerWindows(window(1, 2, 0), keys).isEmpty());
    }
};

QTEST_GUILESS_MAIN(ServerWindowListTest)
#include "ServerWindowListTest.moc"
