// SPDX-License-Identifier: MIT
// Key to focus on twelve windows: Velkor against the floor (the window
// manager's own cost of the same request), `wmctrl -a` and xdotool.
#include "BenchClient.h"
#include "Benches.h"
#include "KeyToFocus.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

namespace velkor::xbench {

int runKeyToFocus(const Options& options)
{
    Stage stage;
    if (!stage.start(twelveNames()))
        return 1;
    // Velkor's start-up work (the installed-app scan among it) is over.
    e2e::XDesktop::settle(2000);
    report(QStringLiteral("key_to_focus_windows"), double(stage.desktop().clients().size()));
    report(QStringLiteral("key_to_focus_rounds"), options.rounds);
    const KeyToFocus figures = measureKeyToFocus(stage.desktop(), stage.client(), stage.velkor(),
                                                 stage.apps(), options.rounds, options.seed, true);
    reportKeyToFocus(QStringLiteral("key_to_focus"), figures, true);
    return 0;
}

} // namespace velkor::xbench
