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
    void setFrame(const QRectF& f) override
    {
        frame = f;
        ++frameSets;
    }
    void orderFront() override { ++orderFronts; }
    void fadeIn(double seconds) override
    {
        fades.append(seconds);
        visible = true;
    }
    void orderOut() override
    {
        ++orderOuts;
        visible = false;
    }

    bool visible = false;
    std::optional<QSizeF> content = QSizeF(300, 80);
    std::optional<QRectF> screen = QRectF(0, 0, 1440, 875);
    QRectF frame;
    int frameSets = 0;
    int orderFronts = 0;
    int orderOuts = 0;
    QList<double> fades;
};

struct Fixture
{
    Fixture()
    {
        prefs.setOverlayDelay(0.25);
        prefs.setOverlayPosition(OverlayPosition::bottomRight);
    }

    OverlayController::PanelFactory factory()
    {
        return [this](OverlayModel&) {
            ++panelsMade;
            return std::make_unique<RecordingPanel>();
        };
    }

    RecordingPanel* panelOf(const OverlayController& c)
    {
        return static_cast<RecordingPanel*>(c.panel());
    }

    QTemporaryDir dir;
    Preferences prefs{std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")),
                                                  QSettings::IniFormat)};
    FakeClock clock;
    int panelsMade = 0;
};

} // namespace

class OverlayControllerTest : public QObject
{
    Q_OBJECT

private slots:
    void delayedShowFadesInOnceTheDelayHasPassed()
    {
        Fixture f;
        OverlayController c(f.prefs, f.clock, f.factory());
        c.scheduleShow();
        f.clock.advance(0.2);
        QCOMPARE(f.panelsMade, 0);
        f.clock.advance(0.06);
        QVERIFY(c.isPanelVisible());
        QCOMPARE(f.panelOf(c)->fades, QList<double>({0.14}));
        QVERIFY(!c.hasPendingShow());

        // Shown again right away on a visible panel: re-laid out and brought
        // forward, never faded a second time.
        f.panelOf(c)->content = QSizeF(400, 120);
        c.showNow();
        QCOMPARE(f.panelOf(c)->fades.size(), 1);
        QCOMPARE(f.panelOf(c)->orderFronts, 1);
        QCOMPARE(f.panelOf(c)->frame.size(), QSizeF(400, 120));
        QCOMPARE(f.panelsMade, 1);
    }

    void hideCancelsAPendingShow()
    {
        Fixture f;
        OverlayController c(f.prefs, f.clock, f.factory());
        c.scheduleShow();
        f.clock.advance(0.1);
        c.hide();
        f.clock.advance(1.0);
        QCOMPARE(f.panelsMade, 0);
        QCOMPARE(f.clock.pendingCount(), 0);

        c.showNow();
        c.hide();
        QVERIFY(!c.isPanelVisible());
        QCOMPARE(f.panelOf(c)->orderOuts, 1);
    }

    void secondScheduleRestartsTheDelay()
    {
        Fixture f;
        OverlayController c(f.prefs, f.clock, f.factory());
        c.scheduleShow();
        f.clock.advance(0.2);
        c.scheduleShow();
        QCOMPARE(f.clock.pendingCount(), 1);
        f.clock.advance(0.2); // past the first deadline, not the second
        QCOMPARE(f.panelsMade, 0);
        f.clock.advance(0.06);
        QVERIFY(c.isPanelVisible());
    }

    void switchedOffOverlayShowsNothingButStillHides()
    {
        Fixture f;
        OverlayController c(f.prefs, f.clock, f.factory());
        c.showNow();
        c.scheduleShow();
        f.prefs.setOverlayEnabled(false);
        c.scheduleShow(); // must not cancel the one already pending
        QCOMPARE(f.clock.pendingCount(), 1);
        c.showNow();
        QCOMPARE(f.panelOf(c)->fades.size(), 1);
        c.hide();
        QCOMPARE(f.clock.pendingCount(), 0);
        QCOMPARE(f.panelOf(c)->orderOuts, 1);

        OverlayController fresh(f.prefs, f.clock, f.factory());
        fresh.scheduleShow();
        fresh.showNow();
        f.clock.advance(1.0);
        QCOMPARE(fresh.panel(), nullptr);
    }

    void withoutAPanelShowsAreNoOps()
    {
        Fixture f;
        OverlayController none(f.prefs, f.clock, {});
        none.showNow();
        OverlayController null(f.prefs, f.clock, [](OverlayModel&) { return nullptr; });
        null.scheduleShow();
        f.clock.advance(1.0);
        null.hide();
        QCOMPARE(none.panel(), nullptr);
        QCOMPARE(null.panel(), nullptr);
    }

    void destroyingTheControllerDropsThePendingShow()
    {
        Fixture f;
        {
            OverlayController c(f.prefs, f.clock, f.factory());
            c.scheduleShow();
        }
        QCOMPARE(f.clock.pendingCount(), 0);
        f.clock.advance(1.0);
        QCOMPARE(f.panelsMade, 0);
    }

    void panelOriginByPosition_data()
    {
        QTest::addColumn<OverlayPosition>("position");
        QTest::addColumn<QRectF>("area");
        QTest::addColumn<QPointF>("origin");
        const QRectF offset(100, 50, 1440, 875); // right 1540, bottom 925
        QTest::newRow("center") << OverlayPosition::center << offset << QPointF(670, 447.5);
        QTest::newRow("bottomRight")
            << OverlayPosition::bottomRight << offset << QPointF(1216, 821);
        QTest::newRow("bottomLeft") << OverlayPosition::bottomLeft << offset << QPointF(124, 821);
        QTest::newRow("topRight") << OverlayPosition::topRight << offset << QPointF(1216, 74);
        QTest::newRow("topLeft") << OverlayPosition::topLeft << offset << QPointF(124, 74);
        QTest::newRow("topLeft at origin")
            << OverlayPosition::topLeft << QRectF(0, 0, 1440, 875) << QPointF(24, 24);
        QTest::newRow("bottomLeft at origin")
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
        OverlayController c(f.prefs, f.clock, f.factory());
        RecordingPanel panel;
        panel.content = QSizeF(100, 40);
        c.layout(panel);
        QCOMPARE(panel.frame, QRectF(24, 24, 180, 60));

        panel.content.reset();
        c.layout(panel);
        QCOMPARE(panel.frame, QRectF(24, 24, 240, 90));

        panel.screen.reset();
        c.layout(panel);
        QCOMPARE(panel.frameSets, 2);
    }
};

QTEST_GUILESS_MAIN(OverlayControllerTest)
#include "OverlayControllerTest.moc"
