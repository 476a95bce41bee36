// SPDX-License-Identifier: MIT
// Renders the overlay in each mode and theme, and each settings pane, to PNG
// files in the folder given as the only argument. Runs offscreen.
#include "app/OnboardingWindow.h"
#include "app/PermissionsManager.h"
#include "catalogue/AppRegistry.h"
#include "overlay/OverlayModel.h"
#include "overlay/OverlayView.h"
#include "platform/NullPlatform.h"
#include "settings/Preferences.h"
#include "settings/SettingsWindow.h"

#include <QApplication>
#include <QDir>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>
#include <QTextStream>

using namespace velkor;

namespace {

// A few running apps for the Apps pane.
class ScreenshotWorkspace final : public NullWorkspace
{
public:
    QList<RunningApp> runningApplications() const override
    {
        return {app(101, "Calculator", "org.gnome.Calculator"),
                app(102, "Files", "org.gnome.Nautilus"), app(103, "Firefox", "firefox"),
                app(104, "Terminal", "org.gnome.Terminal"), app(105, "xterm", std::nullopt)};
    }
    bool isRunning(Pid) const override { return true; }

private:
    static RunningApp app(Pid pid, const char* name, std::optional<QString> id)
    {
        RunningApp result;
        result.pid = pid;
        result.name = QString::fromUtf8(name);
        result.bundleId = std::move(id);
        return result;
    }
};

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

// A desktop-like backdrop, so the shadow and the fill show.
QImage backdrop(const QSize& size, bool light)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, size.width(), size.height());
    gradient.setColorAt(0, light ? QColor(196, 214, 236) : QColor(28, 38, 64));
    gradient.setColorAt(1, light ? QColor(236, 206, 214) : QColor(70, 36, 60));
    painter.fillRect(image.rect(), gradient);
    return image;
}

bool saveOverlay(const QString& path, OverlayView& view, bool light)
{
    view.resize(view.sizeHint());
    QImage window(view.size(), QImage::Format_ARGB32_Premultiplied);
    window.fill(Qt::transparent);
    view.render(&window, QPoint(), QRegion(), QWidget::DrawChildren);
    QImage screen = backdrop(view.size(), light);
    QPainter(&screen).drawImage(0, 0, window);
    return screen.save(path);
}

int renderOverlays(const QDir& out, Preferences& prefs)
{
    NullShellIntegration shell;
    OverlayModel model;
    OverlayView view(model, prefs, shell);
    int failures = 0;
    for (const AppTheme theme : {AppTheme::light, AppTheme::dark}) {
        prefs.setTheme(theme);
        const bool light = theme == AppTheme::light;
        const QString suffix = light ? QStringLiteral("light") : QStringLiteral("dark");

        model.setMode(ModeSwitch);
        model.setQuery(QString());
        model.setItems({item("Safari", std::nullopt, QStringLiteral("s")),
                        item("Slack", std::nullopt, QStringLiteral("s")),
                        item("Spotify", std::nullopt, QStringLiteral("s"))});
        model.setSelection(1);
        failures += !saveOverlay(out.filePath("overlay-switch-" + suffix + ".png"), view, light);

        model.setMode(ModeSearch);
        model.setQuery(QStringLiteral("calc"));
        model.setItems({item("Calculator", QStringLiteral("Running")), item("Calendar")});
        model.setSelection(0);
        failures += !saveOverlay(out.filePath("overlay-search-" + suffix + ".png"), view, light);

        model.setMode(ModeWindows);
        model.setQuery(QString());
        model.setItems({item("Quarterly report.odt", QStringLiteral("LibreOffice Writer")),
                        item("Inbox — Thunderbird", QStringLiteral("Thunderbird")),
                        item("~/src/velkor", QStringLiteral("Terminal")),
                        item("", QStringLiteral("Files"))});
        model.setSelection(0);
        failures += !saveOverlay(out.filePath("overlay-windows-" + suffix + ".png"), view, light);
    }
    return failures;
}

bool saveWindow(const QString& path, QWidget& window)
{
    window.show();
    QCoreApplication::processEvents();
    return window.grab().save(path);
}

int renderWindows(const QDir& out, Preferences& prefs)
{
    auto platform = createNullPlatform(QString());
    // Where most people meet the onboarding window: a Wayland session.
    platform->trust = std::make_unique<NullTrustCheck>(
        QStringLiteral("This is a Wayland session: Velkor runs here through Xwayland, which lets "
                       "it see keys only while one of its own windows has the focus."),
        KeyAccess::waylandSession);
    ScreenshotWorkspace workspace;
    AppRegistry registry(workspace, nullptr, prefs);
    PermissionsManager permissions(*platform->trust, *platform->clock);
    const SettingsContext context{prefs,
                                  registry,
                                  permissions,
                                  *platform->trust,
                                  *platform->loginItem,
                                  *platform->shell,
                                  PlatformTraits::forPlatform(QStringLiteral("xcb")),
                                  QStringLiteral(VELKOR_VERSION)};
    int failures = 0;
    SettingsWindow settings(context);
    const struct
    {
        SettingsPane pane;
        const char* file;
    } panes[] = {{SettingsPane::general, "settings-general.png"},
                 {SettingsPane::behaviour, "settings-behaviour.png"},
                 {SettingsPane::appearance, "settings-appearance.png"},
                 {SettingsPane::apps, "settings-apps.png"}};
    for (const auto& pane : panes) {
        settings.showPane(pane.pane);
        failures += !saveWindow(out.filePath(QString::fromLatin1(pane.file)), settings);
    }
    settings.hide();

    OnboardingWindow onboarding(permissions, context.traits, [] {});
    failures += !saveWindow(out.filePath("onboarding.png"), onboarding);
    return failures;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc != 2) {
        err << "usage: velkor-screenshots OUTPUT_FOLDER\n";
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!QDir().mkpath(out.path())) {
        err << "cannot create " << out.path() << "\n";
        return 1;
    }
    QTemporaryDir store;
    Preferences prefs(
        std::make_unique<QSettings>(store.filePath("velkor.ini"), QSettings::IniFormat));
    prefs.setBlurEnabled(false);

    prefs.setExcluded(true, QStringLiteral("org.gnome.Terminal"));
    int failures = renderOverlays(out, prefs);
    prefs.setTheme(AppTheme::system);
    failures += renderWindows(out, prefs);
    if (failures > 0)
        err << failures << " image(s) could not be written\n";
    return failures > 0 ? 1 : 0;
}
