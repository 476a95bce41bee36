// SPDX-License-Identifier: MIT
// Search, the window switcher, same-app window cycling, digits and the other
// action keys of the switching session.
#include "catalogue/AppRegistry.h"
#include "catalogue/FuzzyMatcher.h"
#include "core/AppCoordinator.h"
#include "platform/Platform.h"
#include "settings/Preferences.h"

#include <QHash>
#include <QSet>

namespace velkor {

namespace {

// One row per digit key, so every row shown can be picked by its number.
constexpr qsizetype MaxRows = 9;

// Command-grave-accent presses closer together than this are one burst that
// keeps walking the window order of the burst's first listing.
constexpr double SameAppBurstSeconds = 1.2;

const QString RunningSubtitle = QStringLiteral("Running");

// Windows are found by their title and by their app's name together, so
// typing an app's name lists all of its windows even when no title says it.
QString windowSearchText(const WindowEntry& window)
{
    return window.title + QLatin1Char(' ') + window.appName;
}

} // namespace

void AppCoordinator::updateSearchResults()
{
    OverlayModel& model = m_overlay.model();
    model.setMode(ModeSearch);
    model.setQuery(m_query);

    QList<AppEntry> candidates = m_registry.runningApps();
    if (m_prefs.searchIncludesApps()) {
        QSet<QString> leftOut;
        for (const AppEntry& app : candidates) {
            if (app.bundleId)
                leftOut.insert(*app.bundleId);
        }
        for (const QString& excluded : m_prefs.excludedBundleIds())
            leftOut.insert(excluded);
        for (const AppEntry& app : m_registry.installedApps()) {
            if (!app.bundleId || !leftOut.contains(*app.bundleId))
                candidates.append(app);
        }
    }

    const QList<AppEntry> ranked =
        FuzzyMatcher::rank(candidates, m_query, [](const AppEntry& app) { return app.name; });
    QList<OverlayItem> rows;
    const qsizetype count = std::min(ranked.size(), MaxRows);
    rows.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        const AppEntry& app = ranked[i];
        OverlayItem item;
        item.id = app.id;
        item.title = app.name;
        if (app.pid)
            item.subtitle = RunningSubtitle;
        item.number = i + 1;
        item.bundleId = app.bundleId;
        item.pid = app.pid;
        item.iconPath = app.path();
        rows.append(item);
    }
    model.setItems(rows);
    model.setSelection(0);
    model.clamp();
    layoutIfVisible();
}

void AppCoordinator::enterWindowMode()
{
    m_windowMode = true;
    m_isCommandTab = false;
    m_query.clear();
    rebuildWindowItems();
    m_overlay.showNow();
}

void AppCoordinator::rebuildWindowItems()
{
    QList<WindowEntry> windows = m_windowManager.allWindows();
    windows.removeIf([](const WindowEntry& w) { return w.isMinimized; });
    if (!m_query.isEmpty())
        windows = FuzzyMatcher::rank(windows, m_query, windowSearchText);
    m_currentWindows = windows;

    OverlayModel& model = m_overlay.model();
    model.setMode(ModeWindows);
    model.setQuery(m_query);

    QHash<Pid, QString> bundlePaths;
    for (const RunningApp& app : m_platform.workspace->runningApplications()) {
        if (app.bundlePath && !bundlePaths.contains(app.pid))
            bundlePaths.insert(app.pid, *app.bundlePath);
    }

    QList<OverlayItem> rows;
    const qsizetype count = std::min(windows.size(), MaxRows);
    rows.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        const WindowEntry& w = windows[i];
        OverlayItem item;
        item.id = w.id;
        item.title = w.title.isEmpty() ? w.appName : w.title;
        item.subtitle = w.appName;
        item.number = i + 1;
        item.bundleId = w.bundleId;
        item.pid = w.pid;
        const auto path = bundlePaths.constFind(w.pid);
        if (path != bundlePaths.constEnd())
            item.iconPath = *path;
        rows.append(item);
    }
    model.setItems(rows);
    model.setSelection(0);
    model.clamp();
    layoutIfVisible();
}

bool AppCoordinator::commandTabPressed(bool backwards)
{
    if (!m_windowMode) {
        m_windowMode = true;
        m_isCommandTab = true;
        m_query.clear();
        rebuildWindowItems();
        m_overlay.showNow();
        // The first window is normally the one already in front, so a single
        // Command-Tab goes to the second, and with Shift to the last.
        const int count = int(m_overlay.model().items().size());
        if (count >= 2)
            m_overlay.model().setSelection(backwards ? count - 1 : 1);
    } else {
        moveSelection(backwards ? -1 : +1);
    }
    return true;
}

void AppCoordinator::commandTabReleased()
{
    if (m_windowMode && m_isCommandTab) {
        commitWindowSelection();
        endSession();
    }
}

void AppCoordinator::commitWindowSelection()
{
    const int i = m_overlay.model().selection();
    if (i < 0 || i >= m_currentWindows.size())
        return;
    const WindowEntry window = m_currentWindows[i];
    m_windowManager.focus(window);
    didActivate(window.pid);
}

void AppCoordinator::moveSelection(int delta)
{
    OverlayModel& model = m_overlay.model();
    const int count = int(model.items().size());
    if (count == 0)
        return;
    model.setSelection(((model.selection() + delta) % count + count) % count);
}

bool AppCoordinator::cycleSameAppWindows(bool backwards)
{
    const double now = m_platform.clock->now();
    const std::optional<Pid> front = m_platform.workspace->frontmostPid();
    const std::optional<Pid> cachedPid =
        m_sameAppWindows.isEmpty() ? std::nullopt : std::optional(m_sameAppWindows.first().pid);
    if (now - m_sameAppAt > SameAppBurstSeconds || cachedPid != front) {
        m_sameAppWindows = m_windowManager.frontmostAppWindows();
        m_sameAppIdx = 0;
    }
    m_sameAppAt = now;
    const int count = int(m_sameAppWindows.size());
    if (count < 2) {
        m_sameAppWindows.clear();
        return false;
    }
    m_sameAppIdx = ((m_sameAppIdx + (backwards ? -1 : 1)) % count + count) % count;
    m_windowManager.focus(m_sameAppWindows[m_sameAppIdx]);
    return true;
}

bool AppCoordinator::handleDigit(int n)
{
    const int row = n - 1;
    OverlayModel& model = m_overlay.model();
    if (m_windowMode && row >= 0 && row < m_currentWindows.size()) {
        model.setSelection(row);
        commitWindowSelection();
    } else if (m_mode == Mode::search && row >= 0 && row < model.items().size()) {
        model.setSelection(row);
        activateItem(model.items()[row]);
    } else if (m_secondaryDown) {
        // A digit beyond the rows is never lost: it means a Space.
        m_spacesManager.moveActiveWindow(n);
    } else {
        m_spacesManager.switchToSpace(n);
    }
    endSession();
    return true;
}

bool AppCoordinator::handleAction(KeyAction action)
{
    switch (action) {
    case KeyAction::cancel:
        endSession();
        break;
    case KeyAction::commit:
        commitAndEnd();
        break;
    case KeyAction::next:
        // Tab steps through the letter's apps like pressing the letter again.
        if (m_mode == Mode::letterCycle && m_cycleLetter)
            pressLetter(*m_cycleLetter, false);
        else
            moveSelection(+1);
        break;
    case KeyAction::previous:
        moveSelection(-1);
        break;
    case KeyAction::closeWindow:
        performWindowAction(WindowAction::closeWindow);
        break;
    case KeyAction::quitApp:
        performWindowAction(WindowAction::quitApp);
        break;
    case KeyAction::hideApp:
        performWindowAction(WindowAction::hideApp);
        break;
    case KeyAction::previousSpace:
        switchToAdjacentSpace(-1);
        break;
    case KeyAction::nextSpace:
        switchToAdjacentSpace(+1);
        break;
    }
    return true;
}

// No wrap-around at either end: stepping past the last Space does nothing.
void AppCoordinator::switchToAdjacentSpace(int delta)
{
    if (const auto spaces = m_spacesManager.mainDisplaySpaces()) {
        const int target = spaces->currentIndex + delta;
        if (target >= 0 && target < spaces->spaceIds.size())
            m_spacesManager.switchToSpace(target + 1);
    }
    endSession();
}

void AppCoordinator::performWindowAction(WindowAction action)
{
    std::optional<Pid> target;
    if (const auto row = m_overlay.model().selected()) {
        // A row of an app that is not running has nothing to act on.
        if (!row->pid)
            return;
        target = row->pid;
    } else {
        target = m_platform.workspace->frontmostPid();
        if (!target)
            return;
    }

    switch (action) {
    case WindowAction::quitApp:
        m_platform.workspace->terminate(*target);
        break;
    case WindowAction::hideApp:
        m_platform.workspace->hide(*target);
        break;
    case WindowAction::closeWindow:
        for (const WindowEntry& w : m_windowManager.windows(*target, QString(), std::nullopt)) {
            if (!w.isMinimized) {
                m_windowManager.close(w);
                break;
            }
        }
        break;
    }

    // The session stays open, so the rows must show what is left.
    m_registry.refreshRunning();
    if (m_windowMode)
        rebuildWindowItems();
    else if (m_mode == Mode::search)
        updateSearchResults();
    else
        refreshOverlay();
}

} // namespace velkor
