// SPDX-License-Identifier: MIT
#include "windows/DisplaySpaces.h"

#include <QTest>

using namespace velkor;

namespace {

QVariantMap space(const QVariant& id)
{
    return {{QStringLiteral("ManagedSpaceID"), id}};
}

QVariantMap display(const QVariant& identifier, const QVariantList& spaces, const QVariant& current)
{
    QVariantMap map;
    if (identifier.isValid())
        map.insert(QStringLiteral("Display Identifier"), identifier);
    map.insert(QStringLiteral("Spaces"), spaces);
    if (current.isValid())
        map.insert(QStringLiteral("Current Space"), space(current));
    return map;
}

} // namespace

class DisplaySpacesTest : public QObject
{
    Q_OBJECT

private slots:
    void readsOnlyTheFirstDisplayInOrder()
    {
        const QVariantList displays{
            display(QStringLiteral("37D8832A"),
                    {space(qlonglong(4)), space(qlonglong(12)), space(qulonglong(7))},
                    qlonglong(12)),
            display(QStringLiteral("Second"), {space(qlonglong(99))}, qlonglong(99)),
        };
        const auto layout = readMainDisplaySpaces(displays);
        QVERIFY(layout);
        QCOMPARE(layout->displayId, QStringLiteral("37D8832A"));
        QCOMPARE(layout->spaceIds, (QList<quint64>{4, 12, 7}));
        QCOMPARE(layout->currentIndex, 1);
    }

    void fallsBackWhenFieldsAreMissingOrOfTheWrongKind()
    {
        // No identifier at all, and one that is not a string: both read as "Main".
        auto layout = readMainDisplaySpaces(QVariantList{display({}, {}, {})});
        QVERIFY(layout);
        QCOMPARE(layout->displayId, QStringLiteral("Main"));
        QVERIFY(layout->spaceIds.isEmpty());
        QCOMPARE(layout->currentIndex, 0);

        layout = readMainDisplaySpaces(QVariantList{display(42, {space(3)}, 3)});
        QCOMPARE(layout->displayId, QStringLiteral("Main"));
        QCOMPARE(layout->spaceIds, QList<quint64>{3});

        // Entries whose id is missing, text, a boolean, a fraction or negative are left out,
        // and the numbering closes up behind them.
        const QVariantList spaces{
            space(QStringLiteral("5")), QVariantMap{}, space(true), space(2.5), space(-1),
            space(qlonglong(8)),        space(9u)};
        layout = readMainDisplaySpaces(QVariantList{display(QStringLiteral("D"), spaces, 9u)});
        QCOMPARE(layout->spaceIds, (QList<quint64>{8, 9}));
        QCOMPARE(layout->currentIndex, 1);

        // A Spaces value that is not a list of maps counts as no Spaces.
        QVariantMap notMaps = display(QStringLiteral("D"), {}, {});
        notMaps.insert(QStringLiteral("Spaces"), QVariantList{space(1), QStringLiteral("x")});
        layout = readMainDisplaySpaces(QVariantList{notMaps});
        QVERIFY(layout);
        QVERIFY(layout->spaceIds.isEmpty());

        // A current Space unknown, missing, or of the wrong kind is the
        // first; a listed one is in its place.
        const QVariantList three{space(10), space(11), space(12)};
        const QList<std::pair<QVariant, int>> cases{
            {77, 0}, {{}, 0}, {QStringLiteral("12"), 0}, {12, 2}};
        for (const auto& [current, index] : cases) {
            layout =
                readMainDisplaySpaces(QVariantList{display(QStringLiteral("D"), three, current)});
            QCOMPARE(layout->currentIndex, index);
        }
    }

    void malformedListsAreAbsent()
    {
        const QVariantMap good = display(QStringLiteral("D"), {space(1)}, 1);
        QVERIFY(!readMainDisplaySpaces(QVariant()));
        QVERIFY(!readMainDisplaySpaces(QVariantList{}));
        QVERIFY(!readMainDisplaySpaces(good));
        QVERIFY(!readMainDisplaySpaces(QVariantList{good, QStringLiteral("not a display")}));
        QVERIFY(!readMainDisplaySpaces(QVariantList{QVariantList{good}}));
        QVERIFY(readMainDisplaySpaces(QVariantList{good}));
    }
};

QTEST_GUILESS_MAIN(DisplaySpacesTest)
#include "DisplaySpacesTest.moc"
