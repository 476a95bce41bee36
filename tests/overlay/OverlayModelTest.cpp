// SPDX-License-Identifier: MIT
#include "overlay/OverlayModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace velkor;

class OverlayModelTest : public QObject
{
    Q_OBJECT

private slots:
    void clampBringsSelectionIntoRangeAndAlwaysNotifies_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("after");
        QTest::newRow("empty, was 5") << 0 << 5 << 0;
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
        model.setItems(QList<OverlayItem>(count));
        model.setSelection(before);
        // Out of range until clamped.
        QCOMPARE(model.selected().has_value(), before >= 0 && before < count);
        QSignalSpy spy(&model, &OverlayModel::selectionChanged);
        model.clamp();
        QCOMPARE(model.selection(), after);
        QCOMPARE(spy.count(), 1);
    }
};

QTEST_GUILESS_MAIN(OverlayModelTest)
#include "OverlayModelTest.moc"
