// SPDX-License-Identifier: MIT
#include "core/AppCoordinator.h"

#include "catalogue/AppRegistry.h"
#include "platform/Platform.h"
#include "settings/Preferences.h"

#include <QUrl>

namespace velkor {

namespace {

// The pointer moves a moment after the activation, once the raise has taken
// effect and the window's frame can be read.
constexpr double MouseFollowDelay = 0.12;

} // namespace

AppCoordinator::AppCoordinator(Platform& platform, Preferences& prefs, AppRegistry& registry,
                               OverlayController::PanelFactory makePanel)
    : m_platform(platform), m_prefs(prefs), m_registry(registry),
      m_keyMonitor(prefs, platform.keys.get()),
      m_overlay(prefs, *platform.clock, std::move(makePanel)),
      m_activator(*platform.workspace, *platform.windows),
      m_windowManager(*platform.workspace, *platform.windows, prefs),
      m_spacesManager(*platform.workspace, *platform.spaces),
      m_self(std::make_shared<AppCoordinator*>(this))
{
    m_keyMonitor.setHandler(this);
    // The model dies with the controller we own, so these cannot outlive us.
    m_overlay.model().onHover = [this](int i) { hover(i); };
    m_overlay.model().onActivate = [this](int i) { commitIndex(i); };
}

AppCoordinator::~AppCoordinator()
{
    m_keyMonitor.setHandler(nullptr);
    m_overlay.model().onHover = nullptr;
    m_overlay.model().onActivate = nullptr;
}

// What a session starts from and returns to. secondaryDown follows the key
// itself, and the same-app cache outlives sessions on purpose.
void AppCoordinator::resetSessionState()
{
    m_mode = Mode::hint;
    m_windowMode = false;
    m_isCommandTab = false;
    m_pendingLetterCommit = false;
    m_query.clear();
    m_cycleLetter.reset();
    m_cycleIndex = 0;
}

void AppCoordinator::beginSession()
{
    resetSessionState();
    m_registry.refreshRunning();
    refreshOverlay();
    m_overlay.scheduleShow();
}

void AppCoordinator::endSession()
{
    m_overlay.hide();
    resetSessionState();
    m_currentWindows.clear();
}

void AppCoordinator::commitAndEnd()
{
    if (m_windowMode) {
        commitWindowSelection();
    } else if (m_mode == Mode::search) {
        if (const auto item = m_overlay.model().selected())
            activateItem(*item);
    } else if (m_mode == Mode::letterCycle) {
        commitPendingLetter();
    }
    endSession();
}

void AppCoordinator::setSecondaryDown(bool down)
{
    m_secondaryDown = down;
}

bool AppCoordinator::handleCharacter(const QString& ch)
{
    if (m_windowMode) {
        m_query += ch;
        rebuildWindowItems();
        return true;
    }
    if (m_query.isEmpty()) {
        if (!m_registry.letterMap().value(ch).isEmpty()) {
            m_mode = Mode::letterCycle;
            m_cycleLetter = ch;
            m_query = ch;
            pressLetter(ch, true);
        } else {
            // A letter with no running app never launches anything by itself:
            // it starts a search, and only a committed row opens an app.
            m_mode = Mode::search;
            m_query = ch;
            updateSearchResults();
            m_overlay.showNow();
        }
        return true;
    }
    if (m_mode == Mode::letterCycle && m_cycleLetter == ch) {
        pressLetter(ch, false);
        return true;
    }
    // A different character: the letter typed first stays the query's start.
    m_pendingLetterCommit = false;
    m_mode = Mode::search;
    m_query += ch;
    updateSearchResults();
    m_overlay.showNow();
    return true;
}

void AppCoordinator::pressLetter(const QString& letter, bool firstPress)
{
    const QList<AppEntry> apps = m_registry.letterMap().value(letter);
    if (apps.isEmpty()) {
        m_pendingLetterCommit = false;
        refreshOverlay();
        return;
    }
    const int count = int(apps.size());
    if (firstPress) {
        // The letter of the app already in front goes straight to the next
        // app of that letter.
        const std::optional<Pid> front = m_platform.workspace->frontmostPid();
        m_cycleIndex = 0;
        for (int i = 0; i < count; ++i) {
            if (apps[i].pid == front) {
                m_cycleIndex = (i + 1) % count;
                break;
            }
        }
    } else {
        m_cycleIndex = ((m_cycleIndex + 1) % count + count) % count;
    }

    if (!m_prefs.switchOnRelease()) {
        const AppEntry& app = apps[m_cycleIndex];
        m_activator.activate(app);
        m_prefs.recordLetterUsage(letter, app.bundleId);
        didActivate(app.pid);
        m_pendingLetterCommit = false;
        refreshOverlay();
    } else {
        m_pendingLetterCommit = true;
        m_overlay.showNow();
        refreshOverlay();
    }
}

void AppCoordinator::commitPendingLetter()
{
    if (!m_pendingLetterCommit || !m_cycleLetter)
        return;
    // Looked up again: the letter's apps may have changed since the press.
    const QList<AppEntry> apps = m_registry.letterMap().value(*m_cycleLetter);
    if (m_cycleIndex < 0 || m_cycleIndex >= apps.size())
        return;
    const AppEntry& app = apps[m_cycleIndex];
    m_activator.activate(app);
    m_prefs.recordLetterUsage(*m_cycleLetter, app.bundleId);
    didActivate(app.pid);
}

void AppCoordinator::refreshOverlay()
{
    OverlayModel& model = m_overlay.model();
    model.setMode(ModeSwitch);
    model.setQuery(QString());
    if (m_mode == Mode::letterCycle && m_cycleLetter) {
        const QList<AppEntry> apps = m_registry.letterMap().value(*m_cycleLetter);
        QList<OverlayItem> items;
        items.reserve(apps.size());
        for (const AppEntry& app : apps) {
            OverlayItem item;
            item.id = app.id;
            item.title = app.name;
            item.badge = *m_cycleLetter;
            item.bundleId = app.bundleId;
            item.pid = app.pid;
            item.iconPath = app.path();
            items.append(item);
        }
        model.setItems(items);
        const int count = int(apps.size());
        model.setSelection(count == 0 ? 0 : ((m_cycleIndex % count) + count) % count);
    } else {
        model.setItems({});
        model.setSelection(0);
    }
    model.clamp();
    layoutIfVisible();
}

void AppCoordinator::layoutIfVisible()
{
    if (m_overlay.isPanelVisible())
        m_overlay.layout(*m_overlay.panel());
}

void AppCoordinator::hover(int i)
{
    // A hover over a row that has just vanished is ignored.
    if (i >= 0 && i < m_overlay.model().items().size())
        m_overlay.model().setSelection(i);
}

void AppCoordinator::commitIndex(int i)
{
    OverlayModel& model = m_overlay.model();
    if (i < 0 || i >= model.items().size())
        return;
    model.setSelection(i);
    if (m_windowMode)
        commitWindowSelection();
    else
        activateItem(model.items()[i]);
    endSession();
}

void AppCoordinator::activateItem(const OverlayItem& item)
{
    if (item.pid) {
        m_activator.bringToFront(*item.pid);
        didActivate(item.pid);
        return;
    }
    if (item.bundleId) {
        for (const AppEntry& entry : m_registry.installedApps()) {
            if (entry.bundleId == item.bundleId) {
                // No didActivate: the app is only starting.
                m_activator.activate(entry);
                return;
            }
        }
    }
    if (!item.iconPath)
        return;
    AppEntry entry;
    entry.id = *item.iconPath;
    entry.name = item.title;
    entry.url = QUrl::fromLocalFile(*item.iconPath);
    entry.bundleId = item.bundleId;
    m_activator.activate(entry);
}

void AppCoordinator::didActivate(std::optional<Pid> pid)
{
    if (!pid)
        return;
    if (m_prefs.spaceMode() == SpaceMode::gatherWindows)
        m_spacesManager.gatherWindows(*pid);
    if (m_prefs.mouseFollowsFocus()) {
        const std::weak_ptr<AppCoordinator*> self = m_self;
        const Pid target = *pid;
        m_platform.clock->callAfter(MouseFollowDelay, [self, target] {
            if (const auto coordinator = self.lock())
                (*coordinator)->m_windowManager.centerMouse(target);
        });
    }
}

} // namespace velkor
