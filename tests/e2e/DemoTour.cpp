// SPDX-License-Identifier: MIT
// velkor-demo-tour: a demo desktop (Xvfb, openbox, a few X clients) with
// Velkor running on it, taken through the main gestures by XTEST key
// presses. Prints what each gesture did, as read back from the X server,
// and writes a screenshot after each into the folder given as argument.
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QCoreApplication>
#include <QDir>
#include <cstdio>
#include <functional>

using namespace velkor::e2e;

namespace {

class Tour
{
public:
    Tour(XDesktop& desktop, QString folder) : m_desktop(desktop), m_folder(std::move(folder)) {}

    // Runs one gesture, checks its outcome, prints and photographs it.
    void step(const QString& what, const std::function<void()>& gesture,
              const std::function<bool()>& outcome, const std::function<QString()>& describe)
    {
        gesture();
        const bool ok = m_desktop.waitFor(outcome, 4000);
        ++m_count;
        m_failed += ok ? 0 : 1;
        const QString shot =
            QStringLiteral("%1/%2.png").arg(m_folder).arg(m_count, 2, 10, QLatin1Char('0'));
        m_desktop.screenshot(shot);
        std::printf("%2d. %-58s %s %s\n", m_count, qPrintable(what), ok ? "ok  " : "FAIL",
                    qPrintable(describe()));
        std::fflush(stdout);
    }

    int failed() const { return m_failed; }

private:
    XDesktop& m_desktop;
    QString m_folder;
    int m_count = 0;
    int m_failed = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                    : QDir::currentPath() + QLatin1String("/velkor-demo");
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "velkor-demo-tour: cannot create %s\n", qPrintable(folder));
        return 1;
    }

    XDesktop desktop;
    if (!desktop.start()) {
        std::fprintf(stderr, "velkor-demo-tour: %s\n", qPrintable(desktop.error()));
        return 1;
    }
    std::printf("Demo desktop on display %s (Xvfb + openbox)\n", qPrintable(desktop.display()));
    const xcb_window_t mail = desktop.launchTerminal(QStringLiteral("Mail"));
    const xcb_window_t notes = desktop.launchTerminal(QStringLiteral("Notes"));
    const xcb_window_t music = desktop.launchTerminal(QStringLiteral("Music"));
    desktop.launch(QStringLiteral("xeyes"), {}, QStringLiteral("XEyes"));
    desktop.launch(QStringLiteral("xlogo"), {}, QStringLiteral("XLogo"));

    VelkorInstance velkor(desktop);
    velkor.writeDesktopEntry(QStringLiteral("org.example.Calculator"), QStringLiteral("Calculator"),
                             QStringLiteral("xcalc"), QStringLiteral("XCalc"));
    if (!mail || !notes || !music || !velkor.start()) {
        std::fprintf(stderr, "velkor-demo-tour: the demo desktop did not come up\n%s\n",
                     qPrintable(velkor.log()));
        return 1;
    }
    std::printf("Velkor is running (pid %lld); the activation key is Right Super.\n\n",
                velkor.pid());
    XDesktop::settle(500); // the installed-app scan

    const auto active = [&] { return QStringLiteral("(active: %1)").arg(desktop.activeClass()); };
    const auto onDesktop = [&] {
        return QStringLiteral("(desktop %1 of 4, active: %2)")
            .arg(desktop.currentDesktop().value_or(0) + 1)
            .arg(desktop.activeClass());
    };
    const auto isActive = [&](const char* wmClass) {
        return [&desktop, wmClass] { return desktop.activeClass() == QLatin1String(wmClass); };
    };
    const auto isOnDesktop = [&](quint32 n) {
        return [&desktop, n] { return desktop.currentDesktop() == n; };
    };

    Tour tour(desktop, folder);
    tour.step(
        QStringLiteral("Right Super + N: Notes comes to the front"),
        [&] { desktop.underActivationKey(QStringLiteral("n")); }, isActive("Notes"), active);
    tour.step(
        QStringLiteral("Right Super + M: Mail (first of the M apps)"),
        [&] { desktop.underActivationKey(QStringLiteral("m")); }, isActive("Mail"), active);
    tour.step(
        QStringLiteral("Right Super + M, M: the next M app, Music"),
        [&] { desktop.underActivationKey(QStringLiteral("mm")); }, isActive("Music"), active);
    // xeyes takes no keyboard focus: it is raised, never made active.
    const auto onTop = [&] {
        const auto stack = desktop.stackingFrontFirst();
        return QStringLiteral("(on top: %1)")
            .arg(stack.isEmpty() ? QString() : desktop.wmClass(stack.first()));
    };
    tour.step(
        QStringLiteral("Right Super + X: XEyes raised (named by its WM_CLASS)"),
        [&] { desktop.underActivationKey(QStringLiteral("x")); },
        [&] { return onTop() == QLatin1String("(on top: XEyes)"); }, onTop);
    tour.step(
        QStringLiteral("Right Super + type \"calc\": launches Calculator"),
        [&] { desktop.underActivationKey(QStringLiteral("calc")); }, isActive("XCalc"), active);
    tour.step(
        QStringLiteral("Right Super + 3: jump to desktop 3"),
        [&] { desktop.underActivationKey(QStringLiteral("3")); }, isOnDesktop(2), onDesktop);
    tour.step(
        QStringLiteral("Right Super + ]: next desktop"),
        [&] { desktop.holding(key::SuperR, [&] { desktop.tap(key::RightBracket); }); },
        isOnDesktop(3), onDesktop);
    tour.step(
        QStringLiteral("Right Super + 1: back to desktop 1"),
        [&] { desktop.underActivationKey(QStringLiteral("1")); }, isOnDesktop(0), onDesktop);
    tour.step(
        QStringLiteral("Right Super + N, then Right Alt + 2: send Notes to desktop 2"),
        [&] {
            desktop.underActivationKey(QStringLiteral("n"));
            desktop.waitFor(isActive("Notes"));
            desktop.holding(key::SuperR, [&] {
                desktop.holding(key::AltR, [&] { desktop.tap(key::of(QLatin1Char('2'))); });
            });
        },
        [&] { return desktop.desktopOf(notes) == 1u && desktop.currentDesktop() == 1u; },
        onDesktop);
    tour.step(
        QStringLiteral("Right Super + M: Music (chosen last, so first now)"),
        [&] { desktop.underActivationKey(QStringLiteral("m")); },
        [&] {
            return desktop.activeClass() == QLatin1String("Music") &&
                   desktop.currentDesktop() == 0u;
        },
        onDesktop);
    tour.step(
        QStringLiteral("Right Super + M, Left Super + H: hide Mail"),
        [&] {
            desktop.holding(key::SuperR, [&] {
                desktop.tap(key::of(QLatin1Char('m')));
                desktop.holding(key::SuperL, [&] { desktop.tap(key::of(QLatin1Char('h'))); });
            });
        },
        [&] { return desktop.isHidden(mail); },
        [&] {
            return QStringLiteral("(Mail hidden: %1)")
                .arg(desktop.isHidden(mail) ? QStringLiteral("yes") : QStringLiteral("no"));
        });

    velkor.stop();
    std::printf("\nScreenshots: %s\n", qPrintable(QDir(folder).absolutePath()));
    return tour.failed() == 0 ? 0 : 1;
}
