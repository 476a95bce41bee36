// SPDX-License-Identifier: MIT
#include "overlay/OverlayController.h"

#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"

#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(velkor::OverlayPosition)

using namespace velkor;
using namespace velkor::fake;

namespace {

// Records what the controller asks of the floating window.
class RecordingPanel final : public OverlayPanel
{
public:
    bool isVisible() const override { return visible; }
    std::optional<QSizeF> fittingSize() override { return content; }
    std::optional<QRectF> mainScreenArea() const override { return screen; }
    void setFrame(const QRectF& f) override { frames.append(f); }
    void orderFront() override { ++orderFronts; }
    void fadeIn(double seconds) override { fades.append(seconds), visible = true; }
    void orderOut() override { ++orderOuts, visible = false; }

    bool visible = false;
    std::optional<QSizeF> content = QSizeF(300, 80);
    std::optional<QRectF> screen = QRectF(0, 0, 1440, 875);
    QList<QRectF> frames;
    QList<double> fades;
    int orderFronts = 0;
    int orderOuts = 0;
};

struct Fixture
{
    QTemporaryDir dir;
    Preferences prefs{std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")),
                                                  QSettings::IniFormat)};
    FakeClock clock;
    int panelsMade = 0;
    OverlayController controller{prefs, clock, [this](OverlayModel&) {
                                     ++panelsMade;
                                     return std::make_unique<RecordingPanel>();
                                 }};
    RecordingPanel* panel() { return static_cast<RecordingPanel*>(controller.panel()); }
};

} // namespace

class OverlayControllerTest : public QObject
{
    Q_OBJECT

private slots:
    void delayedShowFadesInOnceAndIsRescheduledFromTheLastCall()
    {
        Fixture f;
        f.prefs.setOverlayDelay(0.25);
        f.controller.scheduleShow();
        f.clock.advance(0.2);
        f.controller.scheduleShow();
        QCOMPARE(f.clock.pendingCount(), 1);
        f.clock.advance(0.2); // past the first deadline, not the second
        QCOMPARE(f.panelsMade, 0);
        f.clock.advance(0.06);
        QCOMPARE(f.panel()->fades, QList<double>({0.14}));

        // Already up: laid out again and brought forward, never faded again.
        f.panel()->content = QSizeF(400, 120);
        f.controller.showNow();
        QCOMPARE(f.panel()->fades.size(), 1);
        QCOMPARE(f.panel()->orderFronts, 1);
        QCOMPARE(f.panel()->frames.last().size(), QSizeF(400, 120));
        QCOMPARE(f.panelsMade, 1);
    }

    void hideCancelsThePendingShowAndNoPanelShowsNothing()
    {
        Fixture f;
        f.controller.scheduleShow();
        f.clock.advance(0.1);
        f.controller.hide();
        f.clock.advance(1.0);
        QCOMPARE(f.panelsMade, 0);
        f.prefs.setOverlayEnabled(false);
        f.controller.showNow();
        QCOMPARE(f.panelsMade, 0);
        f.prefs.setOverlayEnabled(true);

        f.controller.showNow();
        f.controller.scheduleShow();
        f.prefs.setOverlayEnabled(false);
        f.controller.scheduleShow(); // leaves the pending one alone
        f.controller.showNow();
        QCOMPARE(f.clock.pendingCount(), 1);
        f.controller.hide();
        QCOMPARE(f.clock.pendingCount(), 0);
        QCOMPARE(f.panel()->fades.size(), 1);
        QCOMPARE(f.panel()->orderOuts, 1);

        // No panel to be had: nothing shows, and a controller going away
        // drops its pending show.
        f.prefs.setOverlayEnabled(true);
        {
            OverlayController none(f.prefs, f.clock, {});
            none.showNow();
            OverlayController null(f.prefs, f.clock, [](OverlayModel&) { return nullptr; });
            null.scheduleShow();
            f.clock.advance(1.0);
            QVERIFY(!none.panel() && !null.panel());
            null.scheduleShow();
        }
        QCOMPARE(f.clock.pendingCount(), 0);
    }

    void panelOriginByPosition_data()
    {
        QTest::addColumn<OverlayPosition>("position");
        QTest::addColumn<QRectF>("area");
        QTest::addColumn<QPointF>("origin");
        const QRectF shifted(100, 50, 1440, 875); // right edge 1540, bottom edge 925
        QTest::newRow("center") << OverlayPosition::center << shifted << QPointF(670, 447.5);
        QTest::newRow("bottomRight")
            << OverlayPosition::bottomRight << shifted << QPointF(1216, 821);
        QTest::newRow("bottomLeft") << OverlayPosition::bottomLeft << shifted << QPointF(124, 821);
        QTest::newRow("topRight") << OverlayPosition::topRight << shifted << QPointF(1216, 74);
        QTest::newRow("topLeft") << OverlayPosition::topLeft << shifted << QPointF(124, 74);
        QTest::newRow("bottomLeft at 0,0")
            << OverlayPosition::bottomLeft << QRectF(0, 0, 1440, 875) << QPointF(24, 771);
    }

    void panelOriginByPosition()
    {
        QFETCH(OverlayPosition, position);
        QFETCH(QRectF, area);
        QFETCH(QPointF, origin);
        QCOMPARE(OverlayController::panelOrigin(position, area, QSizeF(300, 80)), origin);
    }

    void layoutKeepsAMinimumSize()
    {
        Fixture f;
        f.prefs.setOverlayPosition(OverlayPosition::topLeft);
        RecordingPanel panel;
        panel.content = QSizeF(100, 40);
        f.controller.layout(panel);
        panel.content.reset();
        f.controller.layout(panel);
        panel.screen.reset();
        f.controller.layout(panel);
        QCOMPARE(panel.frames, QList<QRectF>({{24, 24, 180, 60}, {24, 24, 240, 90}}));
    }
};

QTEST_GUILESS_MAIN(OverlayControllerTest)
#include "OverlayControllerTest.moc"
