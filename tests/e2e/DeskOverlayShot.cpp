// SPDX-License-Identifier: MIT
// velkor-desk-overlay-shot: the overlay as a user sees it on a desktop with
// no compositing manager (Xvfb + openbox), over a light window: cut to the
// pill, no black box around it. Writes the screen around the overlay to the
// PNG file given as argument.
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QCoreApplication>
#include <QImage>
#include <cstdio>
#include <xcb/xcb.h>

using namespace velkor;
using namespace velkor::e2e;

namespace {

int fail(const char* what, const QString& detail = QString())
{
    std::fprintf(stderr, "velkor-desk-overlay-shot: %s\n%s\n", what, qPrintable(detail));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2)
        return fail("usage: velkor-desk-overlay-shot OUTPUT.png");
    XDesktop desktop;
    if (!desktop.start())
        return fail("the desktop did not come up", desktop.error());
    // A light window behind the overlay, and a second app to switch to.
    const xcb_window_t notes =
        desktop.launch(QStringLiteral("xterm"),
                       {"-class", "Notes", "-title", "Notes", "-bg", "#f5f3ee", "-fg", "#2b2b2b",
                        "-geometry", "110x40+120+60"},
                       QStringLiteral("Notes"));
    const xcb_window_t files = desktop.launchTerminal(QStringLiteral("Files"));
    if (!notes || !files)
        return fail("the desktop's windows did not come up");

    VelkorInstance velkor(desktop);
    {
        auto prefs = velkor.preferences();
        prefs->setOverlayPosition(OverlayPosition::center);
        prefs->setOverlayDelay(0.0);
        prefs->setTheme(AppTheme::light);
    }
    if (!velkor.start())
        return fail("Velkor did not start", velkor.log());

    // Right Super held, N pressed: Notes comes to the front under the overlay.
    desktop.press(key::SuperR);
    desktop.tap(key::of(QLatin1Char('n')));
    xcb_window_t overlay = 0;
    const bool shown = desktop.waitFor(
        [&] {
            overlay = desktop.shownWindowsNamed(QStringLiteral("Velkor overlay")).value(0);
            return overlay != 0;
        },
        5000);
    // Its first frame painted.
    XDesktop::settle(400);
    const QRect around = desktop.frame(overlay).adjusted(-24, -24, 24, 24);
    const QImage image = shown ? desktop.grab(around) : QImage();
    desktop.release(key::SuperR);
    if (image.isNull())
        return fail("the overlay did not show", velkor.log());
    if (!image.save(QString::fromLocal8Bit(argv[1]), "PNG"))
        return fail("cannot write the image");
    velkor.stop();
    return 0;
}
