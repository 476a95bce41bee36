// SPDX-License-Identifier: MIT
#include "CoordinatorHarness.h"

#include "platform/KeyCodes.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QRegularExpression>

namespace velkor::test {

CoordinatorHarness::CoordinatorHarness()
{
    // Not in the initialiser list: the folder is a later member.
    prefs = std::make_unique<Preferences>(std::make_unique<QSettings>(
        m_dir.filePath(QStringLiteral("prefs.ini")), QSettings::IniFormat));
}

CoordinatorHarness::~CoordinatorHarness()
{
    coordinator.reset();
    registry.reset();
}

void CoordinatorHarness::boot()
{
    coordinator.reset();
    registry = std::make_unique<AppRegistry>(*fake.workspace, fake.installedApps, *prefs);
    // The installed-app scan hands its result back through the event loop.
    const QDeadlineTimer deadline(5000);
    while (registry->installedApps().size() < fake.installedApps->apps.size() &&
           !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    coordinator =
        std::make_unique<AppCoordinator>(fake.platform(), *prefs, *registry, [this](OverlayModel&) {
            auto made = std::make_unique<FakePanel>();
            panel = made.get();
            return made;
        });
    coordinator->keyMonitor().start();
}

void CoordinatorHarness::addApp(Pid pid, const QString& name, const QString& bundleId)
{
    fake.workspace->addApp(pid, name, bundleId, QStringLiteral("/apps/%1").arg(name));
    addWindows(pid, {name + QStringLiteral(" window")});
}

void CoordinatorHarness::addWindows(Pid pid, const QStringList& titles,
                                    const QList<bool>& minimized)
{
    QList<fake::FakeWindow> list;
    for (int i = 0; i < titles.size(); ++i)
        list.append({QStringLiteral("%1w%2").arg(pid).arg(i), titles[i], minimized.value(i),
                     QRectF(100 * pid, 0, 200, 100)});
    fake.windows->windows.insert(pid, list);
}

void CoordinatorHarness::addInstalled(const QString& name, const std::optional<QString>& bundleId)
{
    fake.installedApps->apps.append({QStringLiteral("/apps/%1").arg(name), name, bundleId});
}

KeyDecision CoordinatorHarness::modifier(qint64 code, quint64 bits, bool down)
{
    flags = down ? flags | bits : flags & ~bits;
    // The device-independent masks follow whichever side is still down.
    flags &= ~(keys::CommandMask | keys::OptionMask | keys::ControlMask | keys::ShiftMask);
    if (flags & (keys::LeftCommandBit | keys::RightCommandBit))
        flags |= keys::CommandMask;
    if (flags & (keys::LeftOptionBit | keys::RightOptionBit))
        flags |= keys::OptionMask;
    if (flags & (keys::LeftControlBit | keys::RightControlBit))
        flags |= keys::ControlMask;
    if (flags & (keys::LeftShiftBit | keys::RightShiftBit))
        flags |= keys::ShiftMask;
    return fake.keys->send(
        KeyEvent{KeyEventType::FlagsChanged, code, flags, QString(), fake.clock->now()});
}

KeyDecision CoordinatorHarness::activation(bool down)
{
    const ModifierKey k = prefs->modifierKey();
    return modifier(KeyMonitor::activationKeyCode(k), KeyMonitor::activationFlagBit(k), down);
}

KeyDecision CoordinatorHarness::doubleTap()
{
    pressActivation();
    advance(0.05);
    releaseActivation();
    advance(0.05);
    return pressActivation();
}

KeyDecision CoordinatorHarness::key(qint64 code, const QString& characters)
{
    const KeyDecision decision = fake.keys->send(
        KeyEvent{KeyEventType::KeyDown, code, flags, characters, fake.clock->now()});
    fake.keys->send(KeyEvent{KeyEventType::KeyUp, code, flags, characters, fake.clock->now()});
    return decision;
}

void CoordinatorHarness::type(const QString& text)
{
    for (QChar c : text)
        type(c);
}

QStringList CoordinatorHarness::titles()
{
    QStringList result;
    for (const OverlayItem& item : model().items())
        result << item.title;
    return result;
}

QStringList CoordinatorHarness::activations() const
{
    return fake.log.filter(QRegularExpression(QStringLiteral("^(activate|open):")));
}

QStringList CoordinatorHarness::logged(const QString& prefix) const
{
    QStringList result;
    for (const QString& line : fake.log) {
        if (line.startsWith(prefix))
            result << line;
    }
    return result;
}

} // namespace velkor::test
