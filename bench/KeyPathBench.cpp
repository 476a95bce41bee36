// SPDX-License-Identifier: MIT
// Key-event decisions of monitor plus coordinator on the fake platform with
// about fifty running apps: how long the event-tap callback holds the main
// thread per event.
#include "Bench.h"
#include "CoordinatorHarness.h"
#include "platform/KeyCodes.h"

#include <QStringList>

namespace {

using velkor::test::CoordinatorHarness;

constexpr int Apps = 50;

void populate(CoordinatorHarness& h)
{
    const QStringList stems = {"Safari", "Slack",   "Spotify", "Mail",   "Messages", "Music",
                               "Notes",  "Numbers", "Xcode",   "Arc",    "Atom",     "Terminal",
                               "Zed",    "Finder",  "Figma",   "Photos", "Preview",  "Calendar"};
    for (int i = 0; i < Apps; ++i) {
        const QString name =
            stems[i % stems.size()] + (i < stems.size() ? QString() : QString::number(i));
        h.addApp(1000 + i, name, QStringLiteral("org.bench.app%1").arg(i));
        h.addWindows(1000 + i, {name + " — main", name + " — second"});
    }
    h.fake.workspace->frontmost = 1000;
}

// One realistic round: a letter switch cycled by the letter and by Tab, a
// search committed at release, and a Space jump. Letters, digits and Tab
// are a key down and a key up each.
constexpr int EventsPerRound = 8 + 6 + 4;

void round(CoordinatorHarness& h)
{
    h.pressActivation();
    h.type('s');
    h.type('s');
    h.key(velkor::keys::Tab, QStringLiteral("\t"));
    h.releaseActivation();
    h.advance(0.5);

    h.pressActivation();
    h.type('n');
    h.type('u');
    h.releaseActivation();
    h.advance(0.5);

    h.pressActivation();
    h.type('2');
    h.releaseActivation();
    h.advance(0.5);
}

} // namespace

VELKOR_BENCH(keyPath)
{
    using namespace velkor;
    CoordinatorHarness h;
    populate(h);
    h.fake.spaces->setSpaces(4, 0);
    h.boot();

    const int rounds = 2000;
    const int events = rounds * EventsPerRound;
    round(h); // warm-up
    const double mixed = bench::bestOf(3, [&] {
        for (int i = 0; i < rounds; ++i)
            round(h);
        h.clearLog();
    });
    bench::report("keypath_apps", Apps);
    bench::report("keypath_mixed_events", events);
    bench::report("keypath_mixed_events_per_second", events / mixed);
    bench::report("keypath_mixed_ns_per_event", mixed * 1e9 / events);

    // Keys while the activation key is held, without the session's start:
    // the cost of one letter press that cycles to the next app.
    h.pressActivation();
    h.type('s');
    const int presses = 20000;
    const double held = bench::bestOf(3, [&] {
        for (int i = 0; i < presses; ++i)
            h.type('s');
        h.clearLog();
    });
    h.releaseActivation();
    bench::report("keypath_held_letter_ns_per_event", held * 1e9 / (2 * presses));

    // Keys the switcher does not handle, outside a session: pure pass-through.
    const double passing = bench::bestOf(3, [&] {
        for (int i = 0; i < presses; ++i)
            h.type('s');
    });
    bench::report("keypath_passthrough_ns_per_event", passing * 1e9 / (2 * presses));
}
