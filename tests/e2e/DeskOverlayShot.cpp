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

// The shown top-level window of Velkor's overlay (override-redirect, so not
// among the window manager's clients); 0 while there is none.
xcb_window_t shownOverlay(XDesktop& desktop)
{
    xcb_connection_t* c = desktop.connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    xcb_query_tree_reply_t* tree = xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr);
    if (!tree)
        return 0;
    xcb_window_t found = 0;
    const xcb_window_t* children = xcb_query_tree_children(tree);
    for (int i = 0; i < xcb_query_tree_children_length(tree) && !found; ++i) {
        xcb_get_window_attributes_reply_t* attributes =
            xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, children[i]), nullptr);
        if (attributes && attributes->override_redirect &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            desktop.wmClass(children[i]) == QLatin1String("Velkor"))
            found = children[i];
        free(attributes);
    }
    free(tree);
    return found;
}

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
    const bool shown =
        desktop.waitFor([&] { return (overlay = shownOverlay(desktop)) != 0; }, 5000);
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
