// SPDX-License-Identifier: MIT
#include "overlay/OverlayModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace velkor;

namespace {
QList<OverlayItem> rows(int n)
{
    QList<OverlayItem> items;
    for (int i = 0; i < n; ++i)
        items.append(OverlayItem{QString::number(i), QStringLiteral("App %1").arg(i)});
    return items;
}
} // namespace

class OverlayModelTest : public QObject
{
    Q_OBJECT

private slots:
    void startsEmptyInSwitchMode()
    {
        OverlayModel model;
        QCOMPARE(model.mode(), QStringLiteral("Switch"));
        QVERIFY(model.query().isEmpty());
        QVERIFY(model.items().isEmpty());
        QCOMPARE(model.selection(), 0);
        QVERIFY(!model.selected());
    }

    void clampBringsSelectionIntoRangeAndAlwaysNotifies_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("after");
        QTest::newRow("empty, was 5") << 0 << 5 << 0;
        QTest::newRow("empty, was -3") << 0 << -3 << 0;
        QTest::newRow("past the end") << 3 << 7 << 2;
        QTest::newRow("negative") << 3 << -1 << 0;
        QTest::newRow("in range") << 3 << 1 << 1;
    }

    void clampBringsSelectionIntoRangeAndAlwaysNotifies()
    {
        QFETCH(int, count);
        QFETCH(int, before);
        QFETCH(int, after);
        OverlayModel model;
        model.setItems(rows(count));
        model.setSelection(before);
        QSignalSpy selectionSpy(&model, &OverlayModel::selectionChanged);
        QSignalSpy changedSpy(&model, &OverlayModel::changed);
        model.clamp();
        QCOMPARE(model.selection(), after);
        QCOMPARE(selectionSpy.count(), 1);
        QCOMPARE(changedSpy.count(), 1);
    }

    void selectedFollowsSelectionWithoutClamp()
    {
        OverlayModel model;
        model.setItems(rows(2));
        model.setSelection(1);
        QCOMPARE(model.selected()->title, QStringLiteral("App 1"));
        model.setSelection(2);
        QVERIFY(!model.selected());
        model.setSelection(-1);
        QVERIFY(!model.selected());
    }
};

QTEST_GUILESS_MAIN(OverlayModelTest)
#include "OverlayModelTest.moc"
