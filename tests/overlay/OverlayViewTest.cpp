// SPDX-License-Identifier: MIT
#include "overlay/OverlayView.h"

#include "overlay/OverlayModel.h"
#include "overlay/Theme.h"
#include "platform/ShellIntegration.h"
#include "settings/Preferences.h"

#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

namespace {

// A shell whose icons and blur a test chooses.
class TestShell final : public ShellIntegration
{
public:
    void prepareOverlayWindow(QWindow*) override {}
    bool canBlurBehind() const override { return blur; }
    void setBlurBehind(QWindow*, const QRectF&, qreal) override {}
    void setRegularPresence(bool) override {}
    QIcon iconForFile(const QString& path) override
    {
        ++lookups;
        return icons.value(path);
    }
    QIcon iconForProcess(Pid pid) override
    {
        ++lookups;
        return processIcons.value(pid);
    }

    bool blur = false;
    QHash<QString, QIcon> icons;
    QHash<Pid, QIcon> processIcons;
    int lookups = 0;
};

OverlayItem row(const QString& title, std::optional<QString> badge = std::nullopt)
{
    OverlayItem item;
    item.id = title;
    item.title = title;
    item.badge = std::move(badge);
    return item;
}

int distance(QRgb a, const QColor& b)
{
    return std::max(
        {qAbs(qRed(a) - b.red()), qAbs(qGreen(a) - b.green()), qAbs(qBlue(a) - b.blue())});
}

// Whether any pixel of the area is within tolerance of the colour.
bool hasPixelNear(const QImage& image, const QRectF& area, const QColor& color, int tolerance)
{
    const QRect r = area.toAlignedRect().intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (distance(image.pixel(x, y), color) <= tolerance)
                return true;
    return false;
}

// A fresh view over its own settings, model and shell for each test.
struct Fixture
{
    QTemporaryDir dir;
    Preferences prefs{
        std::make_unique<QSettings>(dir.filePath("velkor.ini"), QSettings::IniFormat)};
    OverlayModel model;
    TestShell shell;
    OverlayView view{model, prefs, shell};

    // As a compositor would: the window drawn on its own, then laid over
    // what is behind it.
    QImage render(const QColor& background)
    {
        view.resize(view.sizeHint());
        QImage window(view.size(), QImage::Format_ARGB32_Premultiplied);
        window.fill(Qt::transparent);
        view.render(&window, QPoint(), QRegion(), QWidget::DrawChildren);
        QImage screen(view.size(), QImage::Format_ARGB32);
        screen.fill(background);
        QPainter(&screen).drawImage(0, 0, window);
        return screen;
    }
};

} // namespace

class OverlayViewTest : public QObject
{
    Q_OBJECT
private slots:
    void chipIsDrawnInTheReadableAccent();
    void oneDotPerRowWithTheSelectedOneInAccent();
    void solidBackgroundHidesWhatIsBehind();
    void iconComesFromTheEntryThenTheWindowsElseTheTile();
    void iconsAreLookedUpOncePerShowing();
    void sizeFollowsTheContent();
    void clickActivatesAndHoverSelects();
};

void OverlayViewTest::chipIsDrawnInTheReadableAccent()
{
    Fixture f;
    const QColor bright(254, 188, 46);
    f.model.setItems({row("Safari", QStringLiteral("s"))});

    f.prefs.setTheme(AppTheme::dark);
    QImage image = f.render(Qt::black);
    QVERIFY(!f.view.chipRect().isEmpty());
    QVERIFY(f.view.pillRect().contains(f.view.chipRect()));
    QVERIFY(hasPixelNear(image, f.view.chipRect(), bright, 6));

    // On light the accent is darkened so the letter still reads.
    f.prefs.setTheme(AppTheme::light);
    image = f.render(Qt::white);
    const QColor darkened = Theme::readableAccent(f.prefs.accentHex(), true);
    QVERIFY(distance(darkened.rgb(), bright) > 60);
    QVERIFY(hasPixelNear(image, f.view.chipRect(), darkened, 6));
    QVERIFY(!hasPixelNear(image, f.view.chipRect(), bright, 20));

    f.prefs.setAccentHex(QStringLiteral("#0A84FF"));
    f.prefs.setTheme(AppTheme::dark);
    image = f.render(Qt::black);
    QVERIFY(hasPixelNear(image, f.view.chipRect(), QColor(10, 132, 255), 6));
    QVERIFY(!hasPixelNear(image, f.view.chipRect(), bright, 20));
}

void OverlayViewTest::oneDotPerRowWithTheSelectedOneInAccent()
{
    Fixture f;
    f.prefs.setTheme(AppTheme::dark);
    const QColor accent(254, 188, 46);

    // Counts the runs of lit pixels along the dots' middle line.
    auto litRuns = [](const QImage& image, int y) {
        int runs = 0;
        bool inRun = false;
        for (int x = 0; x < image.width(); ++x) {
            const bool lit = distance(image.pixel(x, y), Qt::black) > 40;
            runs += (lit && !inRun) ? 1 : 0;
            inRun = lit;
        }
        return runs;
    };

    f.model.setItems({row("Safari"), row("Slack"), row("Spotify")});
    f.model.setSelection(1);
    QImage image = f.render(Qt::black);
    const QList<QRectF> dots = f.view.dotRects();
    QCOMPARE(dots.size(), 3);
    const int y = int(dots[0].center().y());
    QVERIFY(dots[0].top() > f.view.pillRect().bottom());
    QCOMPARE(litRuns(image, y), 3);
    for (int i = 0; i < 3; ++i) {
        const QPoint centre = dots[i].center().toPoint();
        QCOMPARE(distance(image.pixel(centre), accent) <= 30, i == 1);
    }

    // One row: no dots, and nothing lit below the pill.
    f.model.setItems({row("Safari")});
    image = f.render(Qt::black);
    QVERIFY(f.view.dotRects().isEmpty());
    const int below = int(f.view.pillRect().bottom()) + OverlayView::StackSpacing + 3;
    QCOMPARE(below < image.height() ? litRuns(image, below) : 0, 0);
}

void OverlayViewTest::solidBackgroundHidesWhatIsBehind()
{
    Fixture f;
    f.model.setItems({row("Safari", QStringLiteral("s"))});
    // A point in the pill's top padding, clear of text and border.
    auto sample = [&f](const QColor& behind) {
        const QImage image = f.render(behind);
        const QRectF pill = f.view.pillRect();
        return image.pixel(QPoint(int(pill.center().x()), int(pill.top()) + 4));
    };
    const int opaqueTolerance = int(255 * (1 - OverlayView::SolidBackgroundAlpha)) + 2;

    for (const AppTheme theme : {AppTheme::light, AppTheme::dark}) {
        f.prefs.setTheme(theme);
        f.prefs.setBlurEnabled(false);
        QVERIFY(!f.view.blurActive());
        QVERIFY(distance(sample(Qt::red), QColor(sample(Qt::blue))) <= opaqueTolerance);

        // Blur wanted but not offered: the same solid fill.
        f.prefs.setBlurEnabled(true);
        QVERIFY(!f.view.blurActive());
        QVERIFY(distance(sample(Qt::red), QColor(sample(Qt::blue))) <= opaqueTolerance);

        // Blur offered: the pill lets the blurred desktop through.
        f.shell.blur = true;
        QVERIFY(f.view.blurActive());
        QVERIFY(distance(sample(Qt::red), QColor(sample(Qt::blue))) > 60);
        f.shell.blur = false;
    }

    // The themes differ: a light pill is light, a dark one dark.
    f.prefs.setBlurEnabled(false);
    f.prefs.setTheme(AppTheme::light);
    const int lightGrey = qGray(sample(Qt::black));
    f.prefs.setTheme(AppTheme::dark);
    const int darkGrey = qGray(sample(Qt::white));
    QVERIFY2(lightGrey > 180 && darkGrey < 80,
             qPrintable(QStringLiteral("%1 %2").arg(lightGrey).arg(darkGrey)));
}

void OverlayViewTest::iconComesFromTheEntryThenTheWindowsElseTheTile()
{
    Fixture f;
    f.prefs.setTheme(AppTheme::dark);
    const QColor green(0, 200, 0);
    const QColor blue(0, 0, 220);
    const QColor tile(254, 188, 46); // the default accent
    QPixmap entryIcon(64, 64);
    entryIcon.fill(green);
    QPixmap windowIcon(48, 48);
    windowIcon.fill(blue);
    f.shell.icons.insert(QStringLiteral("/apps/calc.desktop"), QIcon(entryIcon));
    f.shell.processIcons.insert(42, QIcon(windowIcon));

    struct Case
    {
        std::optional<QString> path;
        std::optional<Pid> pid;
        QColor expected;
    };
    const QList<Case> cases = {
        {QStringLiteral("/apps/calc.desktop"), 42, green},
        {QStringLiteral("/apps/gone.desktop"), 42, blue}, // an entry without an icon
        {std::nullopt, 42, blue},
        {QStringLiteral("/apps/gone.desktop"), 7, tile}, // windows without an icon
        {std::nullopt, std::nullopt, tile},
    };
    for (const Case& c : cases) {
        OverlayItem calc = row("Calculator");
        calc.iconPath = c.path;
        calc.pid = c.pid;
        f.model.setItems({calc});
        const QImage image = f.render(Qt::black);
        const QRectF pill = f.view.pillRect();
        const QRectF icon(pill.left() + OverlayView::PillPaddingX, pill.center().y() - 21, 42, 42);
        const QString what = c.path.value_or(QStringLiteral("no path")) + QLatin1Char(' ') +
                             QString::number(c.pid.value_or(0));
        if (c.expected == tile) {
            QVERIFY2(hasPixelNear(image, icon, tile, 12), qPrintable(what));
            QVERIFY2(!hasPixelNear(image, icon, green, 30), qPrintable(what));
            QVERIFY2(!hasPixelNear(image, icon, blue, 30), qPrintable(what));
        } else {
            QVERIFY2(distance(image.pixel(icon.center().toPoint()), c.expected) <= 4,
                     qPrintable(what));
            QVERIFY2(!hasPixelNear(image, icon, tile, 20), qPrintable(what));
        }
    }

    // Tiles tell apps without icons apart by their initial, not by one
    // symbol for all of them.
    const auto tileOf = [&f](const QString& name) {
        f.model.setItems({row(name)});
        const QImage image = f.render(Qt::black);
        const QRectF pill = f.view.pillRect();
        return image.copy(QRect(int(pill.left()) + OverlayView::PillPaddingX,
                                int(pill.center().y()) - 21, 42, 42));
    };
    QVERIFY(tileOf(QStringLiteral("Calculator")) != tileOf(QStringLiteral("Mail")));
}

void OverlayViewTest::iconsAreLookedUpOncePerShowing()
{
    Fixture f;
    QTemporaryDir dir;
    const QString entry = dir.filePath(QStringLiteral("calculator.desktop"));
    QFile file(entry);
    QVERIFY(file.open(QIODevice::WriteOnly)); // an entry without an icon
    QPixmap windowIcon(48, 48);
    windowIcon.fill(Qt::blue);
    f.shell.processIcons.insert(42, QIcon(windowIcon));
    OverlayItem calc = row("Calculator");
    calc.iconPath = entry;
    calc.pid = 42;
    f.view.show();
    f.model.setItems({calc, row("Chess")});
    for (int i = 0; i < 3; ++i) {
        f.model.setSelection(0);
        f.render(Qt::black);
        f.model.setSelection(1);
        f.render(Qt::black);
    }
    QCOMPARE(f.shell.lookups, 2); // the entry and the process, once each

    // Hidden and shown again, the window's icon is asked for anew (the app
    // may have quit and another taken its pid); the entry's is kept until
    // its file changes, which is looked at once a showing.
    f.view.hide();
    f.view.show();
    f.model.setSelection(0);
    f.render(Qt::black);
    QCOMPARE(f.shell.lookups, 3);
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(60),
                             QFileDevice::FileModificationTime));
    file.close();
    f.view.hide();
    f.view.show();
    f.render(Qt::black);
    QCOMPARE(f.shell.lookups, 5); // the changed entry, and the window's again

    // Another icon theme: everything is looked up again.
    QEvent themeChange(QEvent::ThemeChange);
    QCoreApplication::sendEvent(&f.view, &themeChange);
    f.render(Qt::black);
    QCOMPARE(f.shell.lookups, 7);
}

void OverlayViewTest::sizeFollowsTheContent()
{
    Fixture f;
    const QSize empty = f.view.sizeHint();
    f.model.setItems({row("Ab")});
    QCOMPARE(f.view.sizeHint(), empty); // a short title fits the minimum pill

    f.model.setItems({row("A rather long window title that needs room")});
    const QSize wide = f.view.sizeHint();
    QVERIFY(wide.width() > empty.width() + 100);
    QCOMPARE(wide.height(), empty.height());

    f.model.setItems({row("A rather long window title that needs room"), row("B")});
    QVERIFY(f.view.sizeHint().height() > empty.height()); // the dots row below

    // Many rows: the dots row is wider than the pill and sets the width.
    QList<OverlayItem> many;
    for (int i = 0; i < 40; ++i)
        many.append(row(QString::number(i)));
    f.model.setItems(many);
    QVERIFY(f.view.sizeHint().width() > empty.width());
    f.view.resize(f.view.sizeHint());
    QVERIFY(QRectF(f.view.rect()).contains(f.view.dotRects().first()));
    QVERIFY(QRectF(f.view.rect()).contains(f.view.dotRects().last()));

    // A session's refresh writes the model several times over; only a write
    // that changes what is shown lays the view out and paints it again.
    QSignalSpy laidOut(&f.view, &OverlayView::pillGeometryChanged);
    f.model.setMode(f.model.mode());
    f.model.setQuery(f.model.query());
    f.model.setItems(many);
    f.model.setSelection(f.model.selection());
    QCOMPARE(laidOut.count(), 0);
    f.model.setSelection(f.model.selection() + 1);
    QCOMPARE(laidOut.count(), 1);
}

void OverlayViewTest::clickActivatesAndHoverSelects()
{
    Fixture f;
    QList<int> activated;
    QList<int> hovered;
    f.model.onActivate = [&](int index) { activated.append(index); };
    f.model.onHover = [&](int index) { hovered.append(index); };
    f.model.setItems({row("Safari"), row("Slack"), row("Spotify")});
    f.model.setSelection(2);
    f.view.resize(f.view.sizeHint());
    f.view.show();

    QTest::mouseClick(&f.view, Qt::LeftButton, {}, QPoint(4, 4)); // the transparent margin
    QVERIFY(activated.isEmpty());
    QTest::mouseClick(&f.view, Qt::RightButton, {}, f.view.pillRect().center().toPoint());
    QVERIFY(activated.isEmpty());
    QTest::mouseClick(&f.view, Qt::LeftButton, {}, f.view.pillRect().center().toPoint());
    QCOMPARE(activated, QList<int>{2});

    QTest::mouseMove(&f.view, f.view.dotRects()[0].center().toPoint());
    QCOMPARE(hovered, QList<int>{0});
    // Over the dot already selected: nothing to report.
    QTest::mouseMove(&f.view, f.view.dotRects()[2].center().toPoint());
    QCOMPARE(hovered, QList<int>{0});
}

QTEST_MAIN(OverlayViewTest)
#include "OverlayViewTest.moc"
