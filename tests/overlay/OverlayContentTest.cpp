// SPDX-License-Identifier: MIT
#include "overlay/OverlayContent.h"

#include "overlay/OverlayModel.h"
#include "overlay/Theme.h"

#include <QtTest>

using namespace velkor;

namespace {

OverlayItem item(const QString& title, std::optional<QString> subtitle = std::nullopt,
                 std::optional<QString> badge = std::nullopt)
{
    OverlayItem row;
    row.id = title;
    row.title = title;
    row.subtitle = std::move(subtitle);
    row.badge = std::move(badge);
    return row;
}

} // namespace

class OverlayContentTest : public QObject
{
    Q_OBJECT
private slots:
    void emptyModelAndUntitledWindowsHaveTheirOwnWords();
    void switchShowsTheBadgeSearchTheQueryAndSubtitle();
    void accentIsKeptOnDarkAndDarkenedOnLight();
};

void OverlayContentTest::emptyModelAndUntitledWindowsHaveTheirOwnWords()
{
    OverlayModel model;
    auto content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Press a letter"));
    QVERIFY(!content.secondary);
    QVERIFY(!content.chip);
    QVERIFY(!content.iconPath);
    QCOMPARE(content.dotCount, 0);

    model.setMode(ModeSearch);
    content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("No match"));
    QVERIFY(!content.chip); // an empty query has no chip

    model.setMode(ModeWindows);
    QCOMPARE(OverlayContent::of(model).primary, QStringLiteral("Press a letter"));

    // A selection past the end counts as no selection, even unclamped.
    model.setMode(ModeSwitch);
    model.setItems({item("Safari")});
    model.setSelection(3);
    QCOMPARE(OverlayContent::of(model).primary, QStringLiteral("Press a letter"));

    // An untitled window shows its app's name, else "Window".
    model.setMode(ModeWindows);
    model.setItems(
        {item("", QStringLiteral("Terminal")), item(""), item("Inbox", QStringLiteral("Mail"))});
    model.setSelection(0);
    content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Terminal"));
    QCOMPARE(content.secondary, QStringLiteral("Terminal"));

    model.setSelection(1);
    content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Window"));
    QVERIFY(!content.secondary);

    model.setSelection(2);
    content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Inbox"));
    QCOMPARE(content.secondary, QStringLiteral("Mail"));

    // Outside window mode an untitled row shows its (empty) title.
    model.setMode(ModeSwitch);
    model.setSelection(0);
    QCOMPARE(OverlayContent::of(model).primary, QString());
}

void OverlayContentTest::switchShowsTheBadgeSearchTheQueryAndSubtitle()
{
    OverlayModel model;
    OverlayItem safari = item("Safari", QStringLiteral("Running"), QStringLiteral("s"));
    safari.iconPath = QStringLiteral("/usr/share/applications/safari.desktop");
    model.setItems({safari});
    auto content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Safari"));
    QVERIFY(!content.secondary); // no secondary line in switch mode
    QCOMPARE(content.chip, (OverlayChip{QStringLiteral("S"), false}));
    QCOMPARE(content.iconPath, safari.iconPath);

    // A mode the view does not know draws like "Switch", even with a query.
    model.setMode(QStringLiteral("search"));
    model.setQuery(QStringLiteral("saf"));
    content = OverlayContent::of(model);
    QVERIFY(!content.secondary);
    QCOMPARE(content.chip, (OverlayChip{QStringLiteral("S"), false}));

    model.setItems({item("Terminal")});
    QVERIFY(!OverlayContent::of(model).chip);

    model.setMode(ModeSearch);
    model.setItems({item("Safari", QStringLiteral("Running"), QStringLiteral("s")),
                    item("Slack", std::nullopt, QStringLiteral("s"))});
    model.setQuery(QStringLiteral("sAf"));
    content = OverlayContent::of(model);
    QCOMPARE(content.primary, QStringLiteral("Safari"));
    QCOMPARE(content.secondary, QStringLiteral("Running"));
    // The query wins over the badge and keeps the case it was typed in.
    QCOMPARE(content.chip, (OverlayChip{QStringLiteral("sAf"), true}));

    model.setSelection(1);
    content = OverlayContent::of(model);
    QVERIFY(!content.secondary); // a not-running app has no subtitle

    model.setQuery(QString());
    QCOMPARE(OverlayContent::of(model).chip, (OverlayChip{QStringLiteral("S"), false}));
}

void OverlayContentTest::accentIsKeptOnDarkAndDarkenedOnLight()
{
    QCOMPARE(Theme::readableAccent("#0A84FF", false), QColor(10, 132, 255));
    // Not a colour: the default yellow.
    QCOMPARE(Theme::readableAccent("banana", false), QColor(254, 188, 46));

    // On light a bright accent is darkened, its hue kept.
    const QColor light = Theme::readableAccent("#FEBC2E", true);
    QVERIFY2(qAbs(light.valueF() - 0.58f) < 0.01f, qPrintable(light.name()));
    QCOMPARE(light.hsvHue(), QColor(254, 188, 46).hsvHue());

    // Already dark enough: brightness kept; a saturated colour stays capped at 1.
    const QColor navy = Theme::readableAccent("#102040", true);
    QCOMPARE(navy.value(), QColor(16, 32, 64).value());
    QVERIFY(navy.hsvSaturationF() > QColor(16, 32, 64).hsvSaturationF());
    const QColor red = Theme::readableAccent("#FF0000", true);
    QCOMPARE(red.hsvSaturationF(), 1.0f);
    QCOMPARE(red, QColor::fromHsvF(0, 1, 0.58f).toRgb());
}

QTEST_GUILESS_MAIN(OverlayContentTest)
#include "OverlayContentTest.moc"
